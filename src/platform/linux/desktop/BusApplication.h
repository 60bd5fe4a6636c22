// The program's own name on the session bus, with org.freedesktop.Application behind it: what makes
// it one running copy that others can ask to reopen. Owned by main.cpp; main thread only.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <string>

namespace orvo {

class BusApplication final : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  // `identifier` is the bus name; `reopen` is called for each request to open the program again.
  BusApplication(QDBusConnection bus, const std::string& identifier, std::function<void()> reopen);
  ~BusApplication() override;
  BusApplication(const BusApplication&) = delete;
  BusApplication& operator=(const BusApplication&) = delete;

  enum class Outcome { acquired, handedOver, refused, noBus };

  // Takes the name. Where a copy has it, that one is asked to reopen; of two that start at once the bus picks one.
  // Refused when another program has it, or the copy does not do what it should.
  Outcome acquireOrHandOver();

  // The connection is gone for good.
  Q_SIGNAL void busLost();

  Q_SLOT void Activate(const QVariantMap& platformData);
  Q_SLOT void Open(const QStringList& uris, const QVariantMap& platformData);
  Q_SLOT void ActivateAction(const QString& name, const QVariantList& parameter, const QVariantMap& platformData);

 private:
  bool isOwnedByOther() const;

  QDBusConnection bus_;
  const QString name_;
  const QString path_;
  const std::function<void()> reopen_;
  bool acquired_ = false;
};

}  // namespace orvo
