// The symbols of the status item: by name for panels that draw symbolic icons in their own text
// colour, and as pictures for all others. Any thread.
#pragma once

#include "platform/linux/bus/WireStruct.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <string>

namespace orvo {

// One picture as StatusNotifierItem sends it: ARGB, 8 bits each, row by row, big-endian.
struct NotifierPixmap {
  int width = 0;
  int height = 0;
  QByteArray bytes;

  static auto membersOf(auto& pixmap) { return std::tie(pixmap.width, pixmap.height, pixmap.bytes); }
};
using NotifierPixmaps = QList<NotifierPixmap>;

// Both are empty for a name that Orvo does not draw.
QString symbolIconName(const std::string& symbol);
NotifierPixmaps symbolPixmaps(const std::string& symbol);

}  // namespace orvo
