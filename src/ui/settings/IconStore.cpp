#include "ui/settings/IconStore.h"

#include <QPointer>

#include <optional>

namespace orvo {

namespace {

QImage image(const std::optional<Picture>& picture) {
  const bool whole =
      picture && picture->width > 0 && picture->height > 0 &&
      picture->pixels.size() == static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height);
  if (!whole) return {};
  return QImage(reinterpret_cast<const uchar*>(picture->pixels.data()), picture->width, picture->height,
                QImage::Format_ARGB32_Premultiplied)
      .copy();
}

}  // namespace

QImage IconStore::icon(std::int32_t pid, int pixels) {
  const Key key{pid, pixels};
  if (const QImage* const found = kept_.object(key)) return *found;
  if (asked_.insert(key).second) {
    waiting_.push_back(key);
    askNext();
  }
  return {};
}

// The latest first: they are the rows that have just come into sight.
void IconStore::askNext() {
  while (asked_.size() - waiting_.size() < mostAsked && !waiting_.empty()) {
    const Key key = waiting_.back();
    waiting_.pop_back();
    ask(key);
  }
}

void IconStore::ask(const Key& key) {
  view_.applicationIcon(key.first, key.second, [self = QPointer(this), key](const std::optional<Picture>& picture) {
    if (!self) return;
    self->asked_.erase(key);
    const QImage icon = image(picture);
    if (!icon.isNull()) self->kept_.insert(key, new QImage(icon));
    self->askNext();
    emit self->answered(key.first, key.second, icon);
  });
}

}  // namespace orvo
