#include "platform/macos/quartz/CarbonHotKeys.h"

#include <Carbon/Carbon.h>

#include <bit>
#include <utility>

namespace orvo {

struct CarbonHotKeys::Receiver {
  EventHandlerFunction function;
  void* userData;
};

namespace {

OSStatus pressed(EventHandlerCallRef /*next*/, ::EventRef /*event*/, void* userData) {
  const auto& receiver = *static_cast<const CarbonHotKeys::Receiver*>(userData);
  return receiver.function(receiver.userData);
}

// Ours are the system's references, kept as numbers.
template <typename Ours, typename Theirs>
Ours number(Theirs reference) {
  return static_cast<Ours>(std::bit_cast<std::uintptr_t>(reference));
}

template <typename Theirs, typename Ours>
Theirs reference(Ours number) {
  return std::bit_cast<Theirs>(static_cast<std::uintptr_t>(number));
}

}  // namespace

CarbonHotKeys::CarbonHotKeys() = default;
CarbonHotKeys::~CarbonHotKeys() = default;

HotKeyStatus CarbonHotKeys::installEventHandler(EventHandlerFunction function, EventTypeSpec filter, void* userData,
                                                EventHandlerRef& handler) {
  auto receiver = std::make_unique<Receiver>(Receiver{function, userData});
  const ::EventTypeSpec type{filter.eventClass, filter.eventKind};
  ::EventHandlerRef installed = nullptr;
  const OSStatus status =
      InstallEventHandler(GetApplicationEventTarget(), pressed, 1, &type, receiver.get(), &installed);
  if (status != hotKeyNoError) return status;
  handler = number<EventHandlerRef>(installed);
  receivers_[handler] = std::move(receiver);
  return status;
}

HotKeyStatus CarbonHotKeys::registerEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                                std::uint32_t options, HotKeyRef& hotKey) {
  EventHotKeyRef registered = nullptr;
  const EventHotKeyID identifier{id.signature, id.id};
  const OSStatus status =
      RegisterEventHotKey(keyCode, modifiers, identifier, GetApplicationEventTarget(), options, &registered);
  if (status == hotKeyNoError) hotKey = number<HotKeyRef>(registered);
  return status;
}

void CarbonHotKeys::unregisterEventHotKey(HotKeyRef hotKey) {
  UnregisterEventHotKey(reference<EventHotKeyRef>(hotKey));
}

void CarbonHotKeys::removeEventHandler(EventHandlerRef handler) {
  RemoveEventHandler(reference<::EventHandlerRef>(handler));
  receivers_.erase(handler);
}

}  // namespace orvo
