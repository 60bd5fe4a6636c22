// The framework library: its classes and objects by name, over the agent. Nothing of the caller's happens inside a
// call of it, whose event loop it never runs.
#include "platform/ConcealmentFramework.h"
#include "platform/linux/framework/client/AgentClient.h"

#include <QStringDecoder>

#include <array>
#include <memory>
#include <string_view>
#include <utility>

namespace orvo {

class FrameworkClass {
 public:
  std::string_view name;
  std::array<std::string_view, 2> messages;

  bool has(std::string_view message) const {
    return !message.empty() && (message == messages[0] || message == messages[1]);
  }
};

namespace {

constexpr FrameworkClass configurationClass{"MBAssessmentModeConfiguration",
                                            {"initWithAllowedSystemItems:allowedBundleIdentifiers:", ""}};
constexpr FrameworkClass assertionClass{"MBAssessmentModeAssertion",
                                        {"activateWithConfiguration:completionHandler:", "invalidate"}};

struct Object : FrameworkObject {
  explicit Object(const FrameworkClass& itsClass) : type(itsClass) {}

  const FrameworkClass& type;
};

struct Configuration final : Object {
  Configuration() : Object(configurationClass) {}

  ConcealmentConfiguration content;
};

struct Assertion final : Object {
  explicit Assertion(AgentClient& itsClient) : Object(assertionClass), client(itsClient) {}
  Assertion(const Assertion&) = delete;
  Assertion& operator=(const Assertion&) = delete;
  ~Assertion() override { invalidate(); }

  void invalidate() const {
    if (state) client.invalidate(state);
  }

  AgentClient& client;
  std::shared_ptr<AssertionState> state;  // absent until it is activated
};

// The bus carries nothing but UTF-8, and a replaced character would name another application.
QString identifierText(const std::string& bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  QString text = decoder(QByteArrayView(bytes));
  if (decoder.hasError()) throw FrameworkException{"A bundle identifier is not valid UTF-8."};
  return text;
}

class AgentFramework final : public FrameworkClasses {
 public:
  FrameworkClassRef classNamed(const char* name) override {
    for (const FrameworkClass* type : {&configurationClass, &assertionClass}) {
      if (type->name == name) return type;
    }
    return nullptr;
  }

  bool instancesRespondTo(FrameworkClassRef type, const char* message) override {
    // One of the messages, which come in a row, asks for all.
    return type->has(message) && (type != &configurationClass || client_.watcherHeld());
  }

  // What has been granted can be ended whatever became of the agent.
  bool respondsTo(const FrameworkObject& object, const char* message) override {
    return static_cast<const Object&>(object).type.has(message);
  }

  FrameworkObjectRef makeConfiguration(FrameworkClassRef type, std::span<const int> allowedSystemItems,
                                       const std::vector<std::string>& allowedBundleIdentifiers) override {
    if (type != &configurationClass) return nullptr;
    auto made = std::make_shared<Configuration>();
    made->content.allowedSystemItems = {allowedSystemItems.begin(), allowedSystemItems.end()};
    for (const auto& identifier : allowedBundleIdentifiers)
      made->content.allowedBundleIdentifiers << identifierText(identifier);
    return made;
  }

  FrameworkObjectRef makeAssertion(FrameworkClassRef type) override {
    return type == &assertionClass ? std::make_shared<Assertion>(client_) : nullptr;
  }

  void activate(FrameworkObject& assertion, const FrameworkObjectRef& configuration,
                CompletionHandler completion) override {
    auto& state = static_cast<Assertion&>(assertion).state;
    if (state) throw FrameworkException{"The assertion has been activated before."};
    state = std::make_shared<AssertionState>();
    state->completion = std::move(completion);
    client_.activate(state, static_cast<const Configuration&>(*configuration).content);
  }

  void invalidate(FrameworkObject& assertion) override { static_cast<const Assertion&>(assertion).invalidate(); }

 private:
  AgentClient client_{QDBusConnection::connectToBus(
      QDBusConnection::SessionBus, QStringLiteral("MenuBarClientCore-%1").arg(reinterpret_cast<quintptr>(this)))};
};

}  // namespace

}  // namespace orvo

extern "C" __attribute__((visibility("default"))) orvo::FrameworkClasses* orvoMakeFramework();

orvo::FrameworkClasses* orvoMakeFramework() { return new orvo::AgentFramework; }
