// One reading of the panel's status controls, from the first question to the last answer. Owned by
// PanelReader; main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantList>

#include "agent/BusCall.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

class PanelReading : public QObject {
  Q_OBJECT

 public:
  explicit PanelReading(QDBusConnection session) : session_(std::move(session)) {}

  void start();

 Q_SIGNALS:
  // Exactly one of them, once, when no question is open any more.
  void read(const std::vector<orvo::StatusControl>& controls);
  void failed();  // someone did not answer, or answered something unusable

 private:
  struct Accessible {
    QString service;
    QString path;
  };
  using Handler = std::function<void(const QVariantList&)>;
  enum class Need { answer, nothing };  // whether an error spoils the reading

  void ask(const QDBusConnection& bus, const BusCall& call, Need need, Handler handler);
  void askAccessible(const Accessible& accessible, const char* interface, const char* method,
                     const QVariantList& arguments, Handler handler);

  void askAboutPanel(std::uint32_t process);
  void readSettings(const QVariantList& answer);
  void openAccessibilityBus(const QVariantList& answer);
  void findPanel(const std::vector<Accessible>& applications);
  void readFrames(const Accessible& panel);
  void readDock(const Accessible& frame, std::size_t index);
  void readPlaces(const Accessible& container, std::size_t index);
  void finish();

  static std::vector<Accessible> accessibles(const QVariantList& answer);
  static Rect extents(const QVariantList& answer);

  QDBusConnection session_;
  QDBusConnection accessibility_{QString()};
  std::uint32_t panelProcess_ = 0;
  int scale_ = 1;  // the desktop's; GTK tells extents divided by its scale
  std::vector<PanelLayout> layouts_;
  std::map<std::size_t, Dock> docks_;  // by their place among the panel's windows
  int open_ = 0;
  bool isFailed_ = false;
};

}  // namespace orvo
