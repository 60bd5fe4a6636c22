// Names of what orvo-agent offers on the session bus, shared by the agent and by those who call it.
//
// Interface local.orvo.MenuBarAgent1:
//   property  WatcherHeld  b              the agent owns the watcher name; changes are announced
//   Activate(ai allowedSystemItems, as allowedBundleIdentifiers) -> u assertion
//       conceals every item whose owner is not allowed; answers once the panel has been told, but for
//       items that it was told of a moment ago: these follow when it has made its views. Fails with
//       WatcherNotHeld, or with LimitsExceeded where it asks for too much. The concealment ends with
//       Invalidate or with the caller's connection.
//   Invalidate(u assertion)               only from the connection that activated it; AccessDenied
//       otherwise
//   Tree() -> a(iisb(dddd))               the host's accessibility tree in pre-order, the root first:
//       index of the parent (-1 for the root), process identifier, identifier (empty for none),
//       whether there is a frame, and the frame in global screen coordinates. Answers within 0.2 s
//       whatever the panel does: where it did not answer, with what it said before, and the root then
//       has the identifier outOfDate. Below the root, first the windows of the panel, in its own order;
//       below each its controls, told apart by their identifiers for as long as the panel has them,
//       and below a tall control its pieces, with the same identifier. Then the items, concealed or not
//   Items() -> a(sus)                     every registered item, concealed or not: its address, its
//       process identifier (0 where unknown) and the bundle identifier by which the agent allows or
//       conceals it (empty where unknown: never concealed). The address of an icon of the older kind is none
//       of a bus, but "x11:" and its window
//   Requesters() -> au                    the processes that have something concealed, each once
//   EndOthers()                           ends every concealment but those of the calling process, and refuses those
//       whose it was for a minute; for the application whose arrow it is, which the agent never conceals; AccessDenied
//       to others
//   TakeOver()                            has the panel start its tray plug-in anew, behind the agent in the queue
//       for the watcher's name; answers once the agent holds it, within six seconds. Fails with a reason that
//       can be shown, where somebody else has the name, or does not let go of it
//   signal RequestersChanged(au)          with what Requesters has; before the panel is told, but no sooner than
//       50 ms after the last
//   signal ItemAdded(s, u, s)             of an item, concealed or not, with what Items has; again once its
//       application is known, where that took long
//   signal TreeChanged()                  while anything is concealed: windows or controls are not as the
//       last answer to Tree had them
#pragma once

namespace orvo::agent_protocol {

inline constexpr const char* service = "local.orvo.MenuBarAgent";
inline constexpr const char* path = "/local/orvo/MenuBarAgent";
inline constexpr const char* interface = "local.orvo.MenuBarAgent1";
inline constexpr const char* heldProperty = "WatcherHeld";
inline constexpr const char* watcherNotHeldError = "local.orvo.MenuBarAgent1.Error.WatcherNotHeld";

// On the wire, what Tree and Items answer.
inline constexpr const char* treeForm = "a(iisb(dddd))";
inline constexpr const char* itemsForm = "a(sus)";
inline constexpr const char* requestersForm = "au";

inline constexpr const char* controlPrefix = "com.apple.menuextra.";
inline constexpr const char* outOfDate = "local.orvo.OutOfDate";

// The identifier under which the agent stands among the running applications.
inline constexpr const char* hostBundleIdentifier = "com.apple.MenuBarAgent";

}  // namespace orvo::agent_protocol
