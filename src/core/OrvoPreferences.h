// Every choice of the person: a plain value, and its stored form, one JSON object with the members
// "rules" and "autoRehideSeconds". Any thread.
#pragma once

#include "core/IconRule.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace orvo {

struct OrvoPreferences {
  // By bundle identifier; entries of applications that are not running stay.
  std::map<std::string, IconRule> rules;
  // Seconds from a reveal to the automatic re-hide; below 1 means never.
  std::int64_t autoRehideSeconds = 0;

  bool operator==(const OrvoPreferences&) const = default;

  // Never fails: absent bytes and every document that is not exactly right yield the defaults.
  static OrvoPreferences decode(const std::optional<std::string>& bytes);
  // Absent when the record cannot be written as JSON, such as for a key that is not UTF-8.
  std::optional<std::string> encode() const;
};

}  // namespace orvo
