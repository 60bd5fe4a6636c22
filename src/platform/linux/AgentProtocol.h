// Names of what orvo-agent offers on the session bus, shared by the agent and by those who call it.
//
// Interface local.orvo.MenuBarAgent1:
//   property  WatcherHeld  b              the agent owns the watcher name; changes are announced
//   Activate(ai allowedSystemItems, as allowedBundleIdentifiers) -> u assertion
//       conceals every item whose owner is not allowed; answers once the panel has been told. Fails
//       with WatcherNotHeld. The concealment ends with Invalidate or with the caller's connection.
//   Invalidate(u assertion)               only from the connection that activated it; AccessDenied
//       otherwise
//   Tree() -> a(iisb(dddd))               the host's accessibility tree in pre-order, the root first:
//       index of the parent (-1 for the root), process identifier, identifier (empty for none),
//       whether there is a frame, and the frame in global screen coordinates. Answers within 0.2 s
//       whatever the panel does
//   Items() -> a(sus)                     every registered item, concealed or not: its address, its
//       process identifier (0 where unknown) and the bundle identifier by which the agent allows or
//       conceals it (empty where unknown: never concealed)
//   signal ItemAdded(s, u, s)             of an item, concealed or not, with what Items has
#pragma once

namespace orvo::agent_protocol {

inline constexpr const char* service = "local.orvo.MenuBarAgent";
inline constexpr const char* path = "/local/orvo/MenuBarAgent";
inline constexpr const char* interface = "local.orvo.MenuBarAgent1";
inline constexpr const char* watcherNotHeldError = "local.orvo.MenuBarAgent1.Error.WatcherNotHeld";

// The identifier under which the agent stands among the running applications.
inline constexpr const char* hostBundleIdentifier = "com.apple.MenuBarAgent";

}  // namespace orvo::agent_protocol
