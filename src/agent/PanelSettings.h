// What the session bus says of the panel: its process, its plug-ins as its settings list them, and where to
// ask for their places. Asked once and kept until the bus tells of a change, which no plug-in's doings are.
// Owned by PanelReader; main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantList>

#include "agent/BusCall.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

struct PanelFacts {
  std::uint32_t process = 0;  // 0 for no panel
  int scale = 1;              // the desktop's; GTK tells extents divided by its scale
  std::vector<PanelLayout> layouts{};
  std::string accessibilityAddress{};  // empty without an accessibility bus
};

class PanelSettings : public QObject {
  Q_OBJECT

 public:
  // Null when somebody did not answer.
  using Answer = std::function<void(const PanelFacts*)>;

  explicit PanelSettings(QDBusConnection session);

  // At once where the facts are known. Not to be called again before the answer.
  void read(Answer answer);

  void forget();

 Q_SIGNALS:
  // The bus told of something that may have changed the facts.
  void changed();

 private:
  using Handler = std::function<void(const QVariantList&)>;
  enum class Need { answer, nothing };  // whether an error spoils the reading

  Q_SLOT void heard();
  void listen();
  void ask(const BusCall& call, Need need, Handler handler);
  void askAboutPanel(std::uint32_t process);
  void readLayouts(const QVariantList& answer);
  void finish();

  QDBusConnection session_;
  QDBusServiceWatcher names_;
  PanelFacts facts_;
  bool isKnown_ = false;
  bool isOutdated_ = false;  // since this reading began
  bool isFailed_ = false;
  int open_ = 0;
  Answer answer_;
};

}  // namespace orvo
