// Feeds arbitrary bytes to the reader of the settings file. Whatever it makes of them, a choice stored
// afterwards must be there for the next start.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Scratch.h"
#include "platform/linux/desktop/FileUserDefaults.h"

// It tells of each file that it moves aside; the fuzzer keeps its own way to standard error.
extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  stderr = std::fopen("/dev/null", "w");
  return stderr == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::filesystem::remove_all(orvo::scratch());
  const auto file = orvo::scratch() / "orvo/settings.json";
  orvo::write(file, {reinterpret_cast<const char*>(data), size});
  {
    orvo::FileUserDefaults defaults(file.string());
    const auto before = defaults.data("Quillet.Preferences.v1");
    defaults.setBoolean("flag", true);
    if (defaults.data("Quillet.Preferences.v1") != before) std::abort();
    defaults.setData("bytes", std::string(reinterpret_cast<const char*>(data), size));
  }
  const orvo::FileUserDefaults again(file.string());
  if (!again.boolean("flag") || again.data("bytes") != std::string(reinterpret_cast<const char*>(data), size))
    std::abort();
  return 0;
}
