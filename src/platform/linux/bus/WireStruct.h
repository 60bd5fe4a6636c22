// How QtDBus writes and reads a struct of D-Bus: as the tuple of references that its membersOf() makes of it.
#pragma once

#include <QDBusArgument>

#include <tuple>

namespace orvo {

template <typename Type>
concept WireStruct = requires(Type& value) {
  Type::membersOf(value);
};

template <WireStruct Type>
QDBusArgument& operator<<(QDBusArgument& argument, const Type& value) {
  argument.beginStructure();
  std::apply([&](const auto&... members) { (argument << ... << members); }, Type::membersOf(value));
  argument.endStructure();
  return argument;
}

template <WireStruct Type>
const QDBusArgument& operator>>(const QDBusArgument& argument, Type& value) {
  argument.beginStructure();
  std::apply([&](auto&... members) { (argument >> ... >> members); }, Type::membersOf(value));
  argument.endStructure();
  return argument;
}

}  // namespace orvo
