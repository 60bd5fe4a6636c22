// Feeds arbitrary bytes to the reader of stored preferences. Whatever it makes of them must be
// writable, and must come back equal from what was written.
#include "core/OrvoPreferences.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto read = orvo::OrvoPreferences::decode(std::string(data, data + size));
  const auto written = read.encode();
  if (!written || orvo::OrvoPreferences::decode(written) != read) std::abort();

  // As a key, the bytes either cannot be written at all or come back whole.
  orvo::OrvoPreferences named;
  named.rules[std::string(data, data + size)] = orvo::IconRule::hidden;
  const auto bytes = named.encode();
  if (bytes && orvo::OrvoPreferences::decode(bytes) != named) std::abort();
  return 0;
}
