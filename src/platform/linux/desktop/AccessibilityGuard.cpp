#include "platform/linux/desktop/AccessibilityGuard.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <QtGui/private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace orvo {

namespace {

// As Qt names them.
constexpr const char* connectionName = "a11y";
constexpr const char* objectsPath = "/org/a11y/atspi/accessible";

constexpr std::string_view interfacePrefix = "org.a11y.atspi.";
constexpr std::string_view propertiesInterface = "org.freedesktop.DBus.Properties";

// Characters. What an assistive program asks about in one call, or writes; Qt would go through two thousand
// million places one by one, or make room for as many.
constexpr int mostCharacters = 10000;

enum class Check {
  kinds,   // nothing but the arguments' kinds
  place,   // the first argument is a place in a text
  range,   // the first two are the ends of a range, the second -1 for the end of the text
  insert,  // a place, a text and its length
};

struct Call {
  std::string_view interface;
  std::string_view member;
  std::string_view signature;
  Check check = Check::kinds;
};

// Every call that Qt implements for what the settings window consists of.
constexpr std::array calls{
    Call{"Accessible", "GetApplication", ""},
    Call{"Accessible", "GetAttributes", ""},
    Call{"Accessible", "GetChildAtIndex", "i"},
    Call{"Accessible", "GetChildren", ""},
    Call{"Accessible", "GetIndexInParent", ""},
    Call{"Accessible", "GetInterfaces", ""},
    Call{"Accessible", "GetLocalizedRoleName", ""},
    Call{"Accessible", "GetRelationSet", ""},
    Call{"Accessible", "GetRole", ""},
    Call{"Accessible", "GetRoleName", ""},
    Call{"Accessible", "GetState", ""},
    Call{"Action", "DoAction", "i"},
    Call{"Action", "GetActions", ""},
    Call{"Action", "GetDescription", "i"},
    Call{"Action", "GetKeyBinding", "i"},
    Call{"Action", "GetName", "i"},
    Call{"Application", "GetLocale", "u"},
    Call{"Component", "Contains", "iiu"},
    Call{"Component", "GetAccessibleAtPoint", "iiu"},
    Call{"Component", "GetAlpha", ""},
    Call{"Component", "GetExtents", "u"},
    Call{"Component", "GetLayer", ""},
    Call{"Component", "GetMDIZOrder", ""},
    Call{"Component", "GetPosition", "u"},
    Call{"Component", "GetSize", ""},
    Call{"Component", "GrabFocus", ""},
    Call{"EditableText", "CopyText", "ii", Check::range},
    Call{"EditableText", "CutText", "ii", Check::range},
    Call{"EditableText", "DeleteText", "ii", Check::range},
    Call{"EditableText", "InsertText", "isi", Check::insert},
    Call{"EditableText", "PasteText", "i", Check::place},
    Call{"EditableText", "SetTextContents", "s"},
    Call{"Text", "AddSelection", "ii", Check::range},
    Call{"Text", "GetAttributeRun", "ib", Check::place},
    Call{"Text", "GetAttributeValue", "is", Check::place},
    Call{"Text", "GetAttributes", "i", Check::place},
    Call{"Text", "GetCharacterAtOffset", "i", Check::place},
    Call{"Text", "GetCharacterExtents", "iu", Check::place},
    Call{"Text", "GetDefaultAttributeSet", ""},
    Call{"Text", "GetDefaultAttributes", ""},
    Call{"Text", "GetNSelections", ""},
    Call{"Text", "GetOffsetAtPoint", "iiu"},
    Call{"Text", "GetRangeExtents", "iiu", Check::range},
    Call{"Text", "GetSelection", "i"},
    Call{"Text", "GetText", "ii"},
    Call{"Text", "GetTextAfterOffset", "iu", Check::place},
    Call{"Text", "GetTextAtOffset", "iu", Check::place},
    Call{"Text", "GetTextBeforeOffset", "iu", Check::place},
    Call{"Text", "RemoveSelection", "i"},
    Call{"Text", "SetCaretOffset", "i", Check::place},
    Call{"Text", "SetSelection", "iii"},
};

struct Property {
  std::string_view interface;
  std::string_view name;
};

constexpr std::array properties{
    Property{"Accessible", "ChildCount"},   Property{"Accessible", "Description"}, Property{"Accessible", "Name"},
    Property{"Accessible", "Parent"},       Property{"Action", "NActions"},        Property{"Application", "Id"},
    Property{"Application", "ToolkitName"}, Property{"Application", "Version"},    Property{"Text", "CaretOffset"},
    Property{"Text", "CharacterCount"},     Property{"Value", "CurrentValue"},     Property{"Value", "MaximumValue"},
    Property{"Value", "MinimumValue"},      Property{"Value", "MinimumIncrement"},
};

bool isPlace(int value) { return value >= 0 && value <= mostCharacters; }

bool passes(Check check, const QVariantList& arguments) {
  const auto number = [&](int index) { return arguments.value(index).toInt(); };
  switch (check) {
    case Check::kinds:
      return true;
    case Check::place:
      return isPlace(number(0));
    case Check::range:
      return isPlace(number(0)) && (number(1) == -1 || (number(1) >= number(0) && isPlace(number(1))));
    case Check::insert:
      return isPlace(number(0)) && isPlace(number(2));
  }
  return false;
}

// Without the common prefix; empty where it is missing.
std::string_view shortName(const std::string& interface) {
  std::string_view name = interface;
  if (!name.starts_with(interfacePrefix)) return {};
  name.remove_prefix(interfacePrefix.size());
  return name;
}

bool isKnownProperty(const QDBusMessage& message) {
  const std::string member = message.member().toStdString();
  const std::string signature = message.signature().toStdString();
  if (!(member == "Get" && signature == "ss") && !(member == "Set" && signature == "ssv")) return false;
  const std::string interface = message.arguments().value(0).toString().toStdString();
  const std::string name = message.arguments().value(1).toString().toStdString();
  return std::any_of(properties.begin(), properties.end(), [&](const Property& property) {
    return property.interface == shortName(interface) && property.name == name;
  });
}

bool isKnownCall(const QDBusMessage& message, const std::string& interface) {
  const std::string member = message.member().toStdString();
  const std::string signature = message.signature().toStdString();
  return std::any_of(calls.begin(), calls.end(), [&](const Call& call) {
    return call.interface == shortName(interface) && call.member == member && call.signature == signature &&
           passes(call.check, message.arguments());
  });
}

// Qt's own object, which has no other name; null while there is none.
QDBusVirtualObject* guarded() {
  const QPlatformIntegration* const platform = QGuiApplicationPrivate::platformIntegration();
  auto* const bridge = platform != nullptr ? dynamic_cast<QObject*>(platform->accessibility()) : nullptr;
  return bridge != nullptr ? bridge->findChild<QDBusVirtualObject*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

}  // namespace

bool isHarmlessAccessibilityCall(const QDBusMessage& message) {
  const std::string interface = message.interface().toStdString();
  return interface == propertiesInterface ? isKnownProperty(message) : isKnownCall(message, interface);
}

AccessibilityGuard::~AccessibilityGuard() {
  QAccessible::removeActivationObserver(this);
  QDBusConnection(connectionName).unregisterObject(objectsPath);
}

QString AccessibilityGuard::introspect(const QString& path) const {
  const QDBusVirtualObject* const object = guarded();
  return object != nullptr ? object->introspect(path) : QString();
}

bool AccessibilityGuard::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  QDBusVirtualObject* const object = isHarmlessAccessibilityCall(message) ? guarded() : nullptr;
  return object != nullptr && object->handleMessage(message, connection);
}

// Qt connects to the bus, announces this and then registers its own object, which comes too late where one is.
void AccessibilityGuard::accessibilityActiveChanged(bool active) {
  if (active) QDBusConnection(connectionName).registerVirtualObject(objectsPath, this, QDBusConnection::SubPath);
}

}  // namespace orvo
