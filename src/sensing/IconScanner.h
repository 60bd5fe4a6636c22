// Finds out who owns the items in the menu bar and where the system's own controls sit. Owned by the
// model; used from the main thread, while the walk itself runs on the executor it is given.
#pragma once

#include "sensing/MenuBarSnapshot.h"

#include <functional>

namespace orvo {

class Accessibility;
class LocalizedText;
class MainQueue;
class SerialExecutor;
class Workspace;

class IconScanner {
 public:
  // The services outlive every scan; the scanner itself need not.
  IconScanner(Accessibility& accessibility, const Workspace& workspace, const LocalizedText& text,
              SerialExecutor& executor, MainQueue& queue);

  // Scans on the executor and then calls `done` once on the main thread, never inside the call and
  // also when the scanner is gone by then. What cannot be read is left out of the snapshot.
  void scan(std::function<void(MenuBarSnapshot)> done) const;

 private:
  Accessibility& accessibility_;
  const Workspace& workspace_;
  const LocalizedText& text_;
  SerialExecutor& executor_;
  MainQueue& queue_;
};

}  // namespace orvo
