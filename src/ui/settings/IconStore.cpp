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
  if (const auto found = kept_.find(key); found != kept_.end()) return found->second;
  if (asked_.insert(key).second) {
    waiting_.push_back(key);
    askNext();
  }
  return {};
}

// The latest first: they are the rows that have just come into sight.
void IconStore::askNext() {
  while (underWay_ < mostAsked && !waiting_.empty()) {
    const Key key = waiting_.back();
    waiting_.pop_back();
    ask(key);
  }
}

void IconStore::ask(const Key& key) {
  ++underWay_;
  view_.applicationIcon(key.first, key.second, [self = QPointer(this), key](const std::optional<Picture>& picture) {
    if (!self) return;
    --self->underWay_;
    self->asked_.erase(key);
    const QImage icon = image(picture);
    if (!icon.isNull()) self->keep(key, icon);
    self->askNext();
    emit self->answered(key.first, key.second, icon);
  });
}

void IconStore::keep(const Key& key, const QImage& picture) {
  kept_[key] = picture;
  age_.push_back(key);
  if (age_.size() <= mostKept) return;
  kept_.erase(age_.front());
  age_.pop_front();
}

}  // namespace orvo
