#include "platform/linux/appearance/XSettings.h"

#include <cstdlib>
#include <optional>
#include <utility>

namespace orvo {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> owned(Reply* reply) {
  return {reply, &std::free};
}

// Setting kinds of the XSETTINGS protocol.
constexpr std::uint8_t integerKind = 0;
constexpr std::uint8_t textKind = 1;
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

XSettings::XSettings(std::function<void()> changed) : changed_(std::move(changed)) {
  int screenNumber = 0;
  connection_.reset(xcb_connect(nullptr, &screenNumber));
  if (xcb_connection_has_error(connection_.get()) != 0) return;
  selection_ = atom("_XSETTINGS_S" + std::to_string(screenNumber));
  property_ = atom("_XSETTINGS_SETTINGS");
  managerMessage_ = atom("MANAGER");
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_.get()));
  while (screenNumber-- > 0 && screens.rem > 1) xcb_screen_next(&screens);
  // A manager that starts later says so with a message to the root window.
  const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_.get(), screens.data->root, XCB_CW_EVENT_MASK, &mask);
  notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { drain(); });
  findManager();
}

xcb_atom_t XSettings::atom(const std::string& name) {
  const auto cookie = xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const auto reply = owned(xcb_intern_atom_reply(connection_.get(), cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void XSettings::findManager() {
  const auto cookie = xcb_get_selection_owner(connection_.get(), selection_);
  const auto reply = owned(xcb_get_selection_owner_reply(connection_.get(), cookie, nullptr));
  manager_ = reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
  const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  if (manager_ != XCB_WINDOW_NONE) {
    xcb_change_window_attributes(connection_.get(), manager_, XCB_CW_EVENT_MASK, &mask);
  }
  read();
}

void XSettings::read() {
  values_.clear();
  constexpr std::uint32_t longestWords = 1U << 16U;
  if (manager_ != XCB_WINDOW_NONE) {
    const auto cookie = xcb_get_property(connection_.get(), 0, manager_, property_, property_, 0, longestWords);
    const auto reply = owned(xcb_get_property_reply(connection_.get(), cookie, nullptr));
    if (reply) {
      values_ = parseXSettings({static_cast<const char*>(xcb_get_property_value(reply.get())),
                                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))});
    }
  }
  // The answers above may have brought events along, which the socket no longer announces.
  QMetaObject::invokeMethod(
      notifier_.get(), [this] { drain(); }, Qt::QueuedConnection);
}

void XSettings::drain() {
  bool search = false;
  bool reread = false;
  while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
    const int type = event->response_type & 0x7F;
    reread |= type == XCB_PROPERTY_NOTIFY;
    search |= type == XCB_CLIENT_MESSAGE &&
              reinterpret_cast<const xcb_client_message_event_t*>(event.get())->type == managerMessage_;
    search |= type == XCB_DESTROY_NOTIFY &&
              reinterpret_cast<const xcb_destroy_notify_event_t*>(event.get())->window == manager_;
  }
  if (xcb_connection_has_error(connection_.get()) != 0) notifier_->setEnabled(false);
  if (!search && !reread) return;
  search ? findManager() : read();
  changed_();
}

}  // namespace orvo
