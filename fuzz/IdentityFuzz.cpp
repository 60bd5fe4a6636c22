// Feeds arbitrary bytes to everything that says which application a process is: its desktop entry, the
// information of its bundle and of its sandbox, its command line. The answer must be text for the bus.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <glib.h>

#include "Scratch.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/DesktopEntries.h"

namespace {

void mustBeText(const std::string& text) {
  if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto& folder = orvo::scratch();
  const auto process = folder / "proc/7";
  orvo::write(folder / "applications/entry.desktop", bytes);
  orvo::write(folder / "bundle/Info.json", bytes);
  orvo::write(process / "cmdline", bytes);
  orvo::write(process / "environ", bytes);
  orvo::write(process / "root/.flatpak-info", bytes);
  for (const auto& program : {folder / "bundle/bin/program", std::filesystem::path("/usr/bin/python3")}) {
    std::filesystem::remove(process / "exe");
    std::filesystem::create_symlink(program, process / "exe");
    orvo::DesktopEntries entries({folder / "applications"});
    entries.refresh();
    const auto identity = orvo::identifyProcess(7, folder / "proc", entries);
    if (!identity || identity->bundleIdentifier.empty()) std::abort();
    mustBeText(identity->bundleIdentifier);
    mustBeText(identity->localizedName.value_or(""));
  }
  return 0;
}
