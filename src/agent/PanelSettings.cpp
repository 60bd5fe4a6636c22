#include "agent/PanelSettings.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

#include "platform/linux/RegularFile.h"

namespace orvo {

namespace {

constexpr std::chrono::seconds callLimit{2};

// Any program can write the settings. Far more than panels have.
constexpr std::size_t mostPanels = 16;
constexpr std::size_t mostPlugins = 200;  // of one
constexpr std::size_t longestType = 100;

// No screen is finer.
constexpr int greatestScale = 16;

constexpr const char* panelName = "org.xfce.Panel";
constexpr const char* panelChannel = "xfce4-panel";
constexpr const char* desktopChannel = "xsettings";
constexpr const char* settingsName = "org.xfce.Xfconf";  // of the interface too
constexpr const char* settingsPath = "/org/xfce/Xfconf";
constexpr const char* accessibilityName = "org.a11y.Bus";  // of the interface too

using Words = std::vector<std::string>;

// The texts and numbers of what comes next, however deep they are.
Words wordsIn(sd_bus_message* answer) {
  Words words;
  char type = 0;
  const char* contents = nullptr;
  while (sd_bus_message_peek_type(answer, &type, &contents) > 0) {
    if (contents != nullptr) {
      if (sd_bus_message_enter_container(answer, type, contents) <= 0) break;
      const Words inner = wordsIn(answer);
      words.insert(words.end(), inner.begin(), inner.end());
      sd_bus_message_exit_container(answer);
    } else if (type == SD_BUS_TYPE_STRING) {
      words.push_back(readText(answer));
    } else if (type == SD_BUS_TYPE_INT32 || type == SD_BUS_TYPE_UINT32) {
      words.push_back(std::to_string(readNumber(answer)));
    } else if (sd_bus_message_skip(answer, std::string(1, type).c_str()) < 0) {
      break;
    }
  }
  return words;
}

Words first(Words words, std::size_t most) {
  words.resize(std::min(words.size(), most));
  return words;
}

std::vector<PanelLayout> layoutsIn(sd_bus_message* answer) {
  std::map<std::string, Words> settings;
  sd_bus_message_enter_container(answer, 'a', "{sv}");
  while (sd_bus_message_enter_container(answer, 'e', "sv") > 0) {
    const std::string name = readText(answer);
    settings[name] = wordsIn(answer);
    sd_bus_message_exit_container(answer);
  }
  std::vector<PanelLayout> layouts;
  for (const std::string& panel : first(settings["/panels"], mostPanels)) {
    PanelLayout& layout = layouts.emplace_back();
    for (const std::string& plugin : first(settings["/panels/panel-" + panel + "/plugin-ids"], mostPlugins)) {
      const Words& type = settings["/plugins/plugin-" + plugin];
      layout.push_back({type.empty() ? "" : type.front().substr(0, longestType), std::atoi(plugin.c_str())});
    }
  }
  return layouts;
}

// GTK lets its variable overrule the desktop's setting.
int scaleOf(std::int32_t process, int setting) {
  constexpr std::size_t longestEnvironment = std::size_t{2} * 1024 * 1024;
  const std::string environment =
      '\0' + contentOf("/proc/" + std::to_string(process) + "/environ", longestEnvironment) + '\0';
  constexpr std::string_view variable("\0GDK_SCALE=", 11);
  const auto found = environment.find(variable);
  if (found != std::string::npos) {
    setting = 0;
    std::from_chars(&environment[found + variable.size()], environment.data() + environment.size(), setting);
  }
  return std::clamp(setting, 1, greatestScale);
}

}  // namespace

void askAccessibilityAddress(sd_bus* session, std::chrono::milliseconds limit, BusHandler answer) {
  call(session, {accessibilityName, "/org/a11y/bus"}, accessibilityName, "GetAddress", limit, std::move(answer), "");
}

PanelSettings::PanelSettings(sd_bus* session, std::function<void()> changed)
    : session_(session), changed_(std::move(changed)) {
  for (const char* name : {panelName, settingsName, accessibilityName})
    news_.push_back(watchName(session_, name, [this](const std::string&, const std::string&) { heard(); }));
  const std::string signals = std::string("type='signal',path='") + settingsPath + "',interface='" + settingsName;
  for (const char* channel : {panelChannel, desktopChannel})
    news_.push_back(match(session_, signals + "',arg0='" + channel + '\'', [this](sd_bus_message*) { heard(); }));
}

void PanelSettings::forget() {
  isKnown_ = false;
  isOutdated_ = true;
}

void PanelSettings::heard() {
  forget();
  changed_();
}

void PanelSettings::read(Answer answer) {
  if (isKnown_) return answer(&facts_);
  answer_ = std::move(answer);
  facts_ = {};
  isOutdated_ = isFailed_ = lacksLayouts_ = false;
  // An error means that there is no panel: it must not come from our own lateness.
  askAboutName(session_, "GetConnectionUnixProcessID", panelName, unlimited,
               counted([this](sd_bus_message* reply) { askAboutPanel(readNumber(reply)); }));
}

void PanelSettings::askAboutPanel(std::int32_t process) {
  const BusObject settings{settingsName, settingsPath};
  facts_.process = process;
  facts_.scale = scaleOf(process, 1);
  lacksLayouts_ = true;
  call(session_, settings, settingsName, "GetProperty", callLimit,
       counted([this](sd_bus_message* reply) { facts_.scale = scaleOf(facts_.process, readNumber(reply)); }), "ss",
       desktopChannel, "/Gdk/WindowScalingFactor");
  call(session_, settings, settingsName, "GetAllProperties", callLimit, counted([this](sd_bus_message* reply) {
         facts_.layouts = layoutsIn(reply);
         lacksLayouts_ = false;
       }),
       "ss", panelChannel, "/");
  askAccessibilityAddress(session_, callLimit,
                          counted([this](sd_bus_message* reply) { facts_.accessibilityAddress = readText(reply); }));
}

// The last answer ends the reading.
BusHandler PanelSettings::counted(BusHandler read) {
  ++open_;
  return [this, read = std::move(read)](sd_bus_message* answer) {
    if (!isError(answer)) read(answer);
    isFailed_ = isFailed_ || sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY) > 0;
    if (--open_ == 0) finish();
  };
}

// Without an address the accessibility bus may still be starting.
void PanelSettings::finish() {
  isFailed_ = isFailed_ || lacksLayouts_;
  const bool isWhole = facts_.process == 0 || !facts_.accessibilityAddress.empty();
  isKnown_ = isWhole && !isFailed_ && !isOutdated_;
  std::exchange(answer_, nullptr)(isFailed_ ? nullptr : &facts_);
}

}  // namespace orvo
