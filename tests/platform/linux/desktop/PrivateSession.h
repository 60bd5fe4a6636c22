// A session bus of the tests' own and the one application object. Made before the first test and
// taken down after the last.
#pragma once

#include <QDBusConnection>

#include <memory>

namespace orvo::test {

// A connection of its own, as another process would have; closed with the last reference to it.
std::shared_ptr<QDBusConnection> otherConnection();

}  // namespace orvo::test
