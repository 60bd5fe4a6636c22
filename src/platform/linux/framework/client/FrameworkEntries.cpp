#include "platform/linux/framework/FrameworkEntries.h"

#include "platform/linux/framework/client/AgentClient.h"

#include <QByteArray>
#include <QStringDecoder>

#include <array>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace orvo {

namespace {

constexpr const char* errorDomain = "MenuBarClientCore";

struct Class {
  std::string_view name;
  std::array<std::string_view, 2> messages;

  bool has(std::string_view message) const {
    return !message.empty() && (message == messages[0] || message == messages[1]);
  }
};

constexpr Class configurationClass{"MBAssessmentModeConfiguration",
                                   {"initWithAllowedSystemItems:allowedBundleIdentifiers:", ""}};
constexpr Class assertionClass{"MBAssessmentModeAssertion",
                               {"activateWithConfiguration:completionHandler:", "invalidate"}};

struct Object {
  explicit Object(const Class& itsClass) : type(itsClass) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  const Class& type;
};

// Lives until exit. Qt's own bus state is made before it and so outlives it.
AgentClient& client() {
  static AgentClient instance(
      QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("MenuBarClientCore")));
  return instance;
}

struct Configuration : Object {
  explicit Configuration(ConcealmentConfiguration made) : Object(configurationClass), content(std::move(made)) {}

  ConcealmentConfiguration content;
};

struct Assertion : Object {
  Assertion() : Object(assertionClass) {}
  Assertion(const Assertion&) = delete;
  Assertion& operator=(const Assertion&) = delete;
  ~Assertion() override { invalidate(); }

  void activate(const ConcealmentConfiguration& configuration, Concealment::Completion completion) {
    if (concealment) throw std::logic_error("The assertion has been activated before.");
    concealment = std::make_shared<Concealment>();
    concealment->completion = std::move(completion);
    client().activate(concealment, configuration);
  }

  void invalidate() const {
    if (concealment) client().invalidate(concealment);
  }

  std::shared_ptr<Concealment> concealment;
};

// Runs what may throw and tells the caller in plain C what was thrown.
template <typename Action>
void guarded(OrvoFrameworkRaised& raised, const Action& action) {
  try {
    action();
  } catch (const std::exception& exception) {
    raised.raised = raised.hasReason = true;
    std::strncpy(raised.reason, exception.what(), sizeof raised.reason - 1);
  } catch (...) {
    raised.raised = true;
  }
}

// The bus carries nothing but UTF-8, and a replaced character would name another application.
QString identifierText(const char* bytes) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  QString text = decoder(QByteArrayView(bytes));
  if (decoder.hasError()) throw std::invalid_argument("A bundle identifier is not valid UTF-8.");
  return text;
}

// Keeps the caller's callback and frees it once nobody can call it any more.
Concealment::Completion adopt(OrvoFrameworkCompletion completion) {
  std::shared_ptr<void> context(completion.context, completion.release);
  return [invoke = completion.invoke, context](const std::optional<ConcealmentError>& error) {
    if (!error) return invoke(context.get(), nullptr);
    const QByteArray text = error->text.toUtf8();
    const OrvoFrameworkError plain{errorDomain, static_cast<int>(error->code), text.constData()};
    invoke(context.get(), &plain);
  };
}

const void* classNamed(const char* name) {
  for (const Class* type : {&configurationClass, &assertionClass}) {
    if (type->name == name) return type;
  }
  return nullptr;
}

bool instancesRespondTo(const void* type, const char* message) {
  return static_cast<const Class*>(type)->has(message) && client().watcherHeld();
}

// What has been granted can be ended whatever became of the agent.
bool respondsTo(const void* object, const char* message) {
  return static_cast<const Object*>(object)->type.has(message);
}

void* makeConfiguration(const void* type, const int* allowedSystemItems, std::size_t itemCount,
                        const char* const* allowedBundleIdentifiers, std::size_t identifierCount,
                        OrvoFrameworkRaised* raised) {
  if (type != &configurationClass) return nullptr;
  Object* made = nullptr;
  guarded(*raised, [&] {
    ConcealmentConfiguration content;
    content.allowedSystemItems = {allowedSystemItems, allowedSystemItems + itemCount};
    for (std::size_t index = 0; index < identifierCount; ++index)
      content.allowedBundleIdentifiers << identifierText(allowedBundleIdentifiers[index]);
    made = new Configuration(std::move(content));
  });
  return made;
}

void* makeAssertion(const void* type, OrvoFrameworkRaised* raised) {
  if (type != &assertionClass) return nullptr;
  Object* made = nullptr;
  guarded(*raised, [&] { made = new Assertion; });
  return made;
}

void activate(void* assertion, void* configuration, OrvoFrameworkCompletion completion, OrvoFrameworkRaised* raised) {
  guarded(*raised, [&] {
    auto adopted = adopt(completion);
    const auto* content = static_cast<Configuration*>(static_cast<Object*>(configuration));
    static_cast<Assertion*>(static_cast<Object*>(assertion))->activate(content->content, std::move(adopted));
  });
}

void invalidate(void* assertion, OrvoFrameworkRaised* raised) {
  guarded(*raised, [&] { static_cast<Assertion*>(static_cast<Object*>(assertion))->invalidate(); });
}

void release(void* object) { delete static_cast<Object*>(object); }

constexpr OrvoFrameworkEntries entries{
    frameworkEntriesVersion, classNamed, instancesRespondTo, respondsTo, makeConfiguration,
    makeAssertion,           activate,   invalidate,         release};

}  // namespace

}  // namespace orvo

extern "C" __attribute__((visibility("default"))) const OrvoFrameworkEntries* orvoFrameworkEntries();

const OrvoFrameworkEntries* orvoFrameworkEntries() { return &orvo::entries; }
