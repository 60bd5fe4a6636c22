// Method calls that never wait: the answer, or the error in its place, comes later on the main thread.
// Free functions over connections owned by the caller.
#pragma once

#include <chrono>
#include <functional>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>

class QObject;

namespace orvo {

struct BusCall {
  QString service;
  QString path;
  QString interface;
  QString method;
  QVariantList arguments;
};

// Never starts a service. Dropped without an answer when the context goes first.
void send(const QDBusConnection& bus, const BusCall& call, std::chrono::milliseconds limit, QObject* context,
          std::function<void(const QDBusMessage&)> answer);

BusCall propertyOf(const QString& service, const QString& path, const QString& interface, const QString& name);

// A method of the bus itself about a name, such as GetNameOwner.
BusCall aboutName(const QString& method, const QString& name);

}  // namespace orvo
