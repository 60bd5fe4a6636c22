#include "platform/linux/busSupport/TreeElement.h"

#include <QDBusMetaType>

namespace orvo {

QDBusArgument& operator<<(QDBusArgument& argument, const TreeElement& element) {
  argument.beginStructure();
  argument << element.parent << element.processIdentifier << element.identifier << element.hasFrame;
  argument.beginStructure();
  argument << element.frame.x << element.frame.y << element.frame.width << element.frame.height;
  argument.endStructure();
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TreeElement& element) {
  argument.beginStructure();
  argument >> element.parent >> element.processIdentifier >> element.identifier >> element.hasFrame;
  argument.beginStructure();
  argument >> element.frame.x >> element.frame.y >> element.frame.width >> element.frame.height;
  argument.endStructure();
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ItemRecord& item) {
  argument.beginStructure();
  argument << item.address << item.processIdentifier << item.bundleIdentifier;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ItemRecord& item) {
  argument.beginStructure();
  argument >> item.address >> item.processIdentifier >> item.bundleIdentifier;
  argument.endStructure();
  return argument;
}

void registerAgentTypes() {
  qDBusRegisterMetaType<TreeElement>();
  qDBusRegisterMetaType<QList<TreeElement>>();
  qDBusRegisterMetaType<ItemRecord>();
  qDBusRegisterMetaType<QList<ItemRecord>>();
  qDBusRegisterMetaType<QList<int>>();
}

}  // namespace orvo
