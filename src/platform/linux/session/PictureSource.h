// Turns what the desktop offers as an icon into a picture of bounded size: names in the icon theme,
// files, and the pixels that a tray item sends. Plain functions; main thread. Absent for whatever is
// missing, unreadable or absurd.
#pragma once

#include "platform/ApplicationIcons.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace orvo {

// In pixels, of either edge.
inline constexpr int largestPicture = 512;

// A theme icon, an icon file by its absolute path, or a file of that name in the pixmaps folders.
std::optional<Picture> pictureOfIcon(const QString& nameOrPath, int size);

// From the properties of a StatusNotifierItem: its pixels, else its icon name, looked up in the item's own
// theme folder first.
std::optional<Picture> pictureOfTrayItem(const QVariantMap& properties, int size);

}  // namespace orvo
