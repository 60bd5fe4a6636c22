#include "platform/linux/display/XSettings.h"

#include <optional>
#include <utility>

namespace orvo {

namespace {

// Setting kinds of the XSETTINGS protocol.
constexpr std::uint8_t integerKind = 0;
constexpr std::uint8_t colorKind = 2;
constexpr std::size_t colorBytes = 8;

class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {
    const auto order = number(1);
    bigEndian_ = order && *order == 1;
    skip(3);
  }

  std::optional<std::uint32_t> number(std::size_t width) {
    const auto text = take(width);
    if (!text) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < width; ++index) {
      const std::size_t place = bigEndian_ ? index : width - 1 - index;
      value = (value << 8U) | static_cast<std::uint8_t>((*text)[place]);
    }
    return value;
  }

  std::optional<std::string_view> take(std::size_t count) {
    if (count > bytes_.size()) return std::nullopt;
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  // Texts are padded to whole groups of four bytes.
  std::optional<std::string> paddedText(std::size_t length) {
    const auto text = take(length);
    if (!text || !skip((4 - length % 4) % 4)) return std::nullopt;
    return std::string(*text);
  }

  bool skip(std::size_t count) { return take(count).has_value(); }

 private:
  std::string_view bytes_;
  bool bigEndian_ = false;
};

bool readValue(Reader& reader, std::uint32_t kind, std::string name, XSettingsValues& values) {
  if (kind == colorKind) return reader.skip(colorBytes);
  const auto number = reader.number(4);
  if (!number) return false;
  if (kind == integerKind) {
    values.insert_or_assign(std::move(name), static_cast<std::int32_t>(*number));
    return true;
  }
  auto text = reader.paddedText(*number);
  if (!text) return false;
  values.insert_or_assign(std::move(name), std::move(*text));
  return true;
}

bool readSetting(Reader& reader, XSettingsValues& values) {
  const auto kind = reader.number(1);
  if (!kind || *kind > colorKind || !reader.skip(1)) return false;
  const auto length = reader.number(2);
  auto name = length ? reader.paddedText(*length) : std::nullopt;
  return name && reader.skip(4) && readValue(reader, *kind, std::move(*name), values);
}

}  // namespace

XSettingsValues parseXSettings(std::string_view bytes) {
  XSettingsValues values;
  Reader reader(bytes);
  if (!reader.skip(4)) return values;
  const auto count = reader.number(4);
  for (std::uint32_t index = 0; count && index < *count; ++index) {
    if (!readSetting(reader, values)) break;
  }
  return values;
}

XSettings::XSettings(std::function<void()> changed)
    : changed_(std::move(changed)), events_([this](const xcb_generic_event_t& event) {
        handle(event);
        return false;
      }) {
  const XConnection* const x = events_.connection();
  if (x == nullptr) return;
  selection_ = x->atom("_XSETTINGS_S" + std::to_string(x->screen()));
  property_ = x->atom("_XSETTINGS_SETTINGS");
  managerMessage_ = x->atom("MANAGER");
  // A manager that starts later says so with a message to the root window.
  events_.select(x->root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  findManager();
}

void XSettings::findManager() {
  auto* x = events_.connection()->get();
  const auto reply = owned(xcb_get_selection_owner_reply(x, xcb_get_selection_owner(x, selection_), nullptr));
  manager_ = reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
  if (manager_ != XCB_WINDOW_NONE)
    events_.select(manager_, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
  read();
}

void XSettings::read() {
  values_.clear();
  constexpr std::uint32_t longestWords = 1U << 16U;
  if (manager_ == XCB_WINDOW_NONE) return;
  auto* x = events_.connection()->get();
  const auto cookie = xcb_get_property(x, 0, manager_, property_, property_, 0, longestWords);
  if (const auto reply = owned(xcb_get_property_reply(x, cookie, nullptr))) {
    values_ = parseXSettings({static_cast<const char*>(xcb_get_property_value(reply.get())),
                              static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))});
  }
}

void XSettings::handle(const xcb_generic_event_t& event) {
  switch (eventCode(event)) {
    case XCB_PROPERTY_NOTIFY:
      if (reinterpret_cast<const xcb_property_notify_event_t&>(event).atom != property_) return;
      read();
      break;
    case XCB_CLIENT_MESSAGE:
      if (reinterpret_cast<const xcb_client_message_event_t&>(event).type != managerMessage_) return;
      findManager();
      break;
    case XCB_DESTROY_NOTIFY:
      if (reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window != manager_) return;
      findManager();
      break;
    default:
      return;
  }
  changed_();
}

}  // namespace orvo
