// The application icons that rows show: asks for a few at a time, keeps a bounded number. One for each
// engine, owned by the settings window; main thread only.
#pragma once

#include "ui/OrvoView.h"
#include "ui/settings/EngineSingleton.h"

#include <QCache>
#include <QImage>
#include <QObject>

#include <cstdint>
#include <deque>
#include <set>
#include <utility>

namespace orvo {

class IconStore : public QObject, public EngineSingleton<IconStore> {
  Q_OBJECT

 public:
  static constexpr int mostKept = 512;
  static constexpr std::size_t mostAsked = 6;

  // The view outlives it.
  explicit IconStore(const OrvoView& view) : view_(view) {}

  // Null until it has come, which `answered` tells. One that is kept or asked for is not asked for again; one
  // that the application did not have is.
  QImage icon(std::int32_t pid, int pixels);

 signals:
  // Null where the application has none, or gave none in time.
  void answered(std::int32_t pid, int pixels, const QImage& icon);

 private:
  using Key = std::pair<std::int32_t, int>;

  void askNext();
  void ask(const Key& key);

  const OrvoView& view_;
  QCache<Key, QImage> kept_{mostKept};
  std::deque<Key> waiting_;
  std::set<Key> asked_;  // waiting or under way
};

}  // namespace orvo
