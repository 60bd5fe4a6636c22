// What the session bus says of the panel: its process, its plug-ins as its settings list them, and where to
// ask for their places. Asked once and kept until the bus tells of a change, which no plug-in's doings are.
// Owned by PanelReader; main thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "agent/BusCall.h"
#include "agent/rules/StatusControls.h"

namespace orvo {

struct PanelFacts {
  std::int32_t process = 0;  // 0 for no panel
  int scale = 1;             // the desktop's; GTK tells extents divided by its scale
  std::vector<PanelLayout> layouts{};
  std::string accessibilityAddress{};  // empty without an accessibility bus
};

// Where the session's accessibility bus is: a text.
void askAccessibilityAddress(sd_bus* session, std::chrono::milliseconds limit, BusHandler answer);

class PanelSettings {
 public:
  // Null when somebody did not answer.
  using Answer = std::function<void(const PanelFacts*)>;

  // `changed` is called when the bus told of something that may have changed the facts.
  PanelSettings(sd_bus* session, std::function<void()> changed);

  // At once where the facts are known. Not to be called again before the answer.
  void read(Answer answer);

  void forget();

 private:
  void heard();
  BusHandler counted(BusHandler read);
  void askAboutPanel(std::int32_t process);
  void finish();

  sd_bus* session_;
  std::function<void()> changed_;
  std::vector<BusSlot> news_;
  PanelFacts facts_;
  bool isKnown_ = false;
  bool isOutdated_ = false;  // since this reading began
  bool isFailed_ = false;    // somebody is late, or the layouts are missing, which have to come
  bool lacksLayouts_ = false;
  int open_ = 0;
  Answer answer_;
};

}  // namespace orvo
