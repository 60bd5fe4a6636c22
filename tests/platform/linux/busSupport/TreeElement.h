// What travels over the bus in lists, with its form on the wire. Plain values; any thread.
#pragma once

#include <cstdint>

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

#include "core/Rect.h"

namespace orvo {

// (iisb(dddd))
struct TreeElement {
  std::int32_t parent = -1;  // index into the list
  std::int32_t processIdentifier = 0;
  QString identifier;
  bool hasFrame = false;
  Rect frame = {};
};

// (sus)
struct ItemRecord {
  QString address;
  std::uint32_t processIdentifier = 0;
  QString bundleIdentifier;
};

QDBusArgument& operator<<(QDBusArgument& argument, const TreeElement& element);
const QDBusArgument& operator>>(const QDBusArgument& argument, TreeElement& element);
QDBusArgument& operator<<(QDBusArgument& argument, const ItemRecord& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, ItemRecord& item);

// Before the first of them is sent or received.
void registerAgentTypes();

}  // namespace orvo

Q_DECLARE_METATYPE(orvo::TreeElement)
Q_DECLARE_METATYPE(orvo::ItemRecord)
