#include "platform/linux/desktop/ExportedMenu.h"

#include <QDBusMetaType>

#include <utility>

namespace orvo {

namespace {

// Row n of the menu has the number n + 1.
constexpr int rootId = 0;

// Underscores mark access keys in this protocol.
QString escapedLabel(const std::string& title) { return QString::fromStdString(title).replace('_', "__"); }

QVariantMap rowProperties(const Menu& menu, const MenuItem& item) {
  if (item.separator) return {{"type", "separator"}, {"visible", true}};
  return {{"label", escapedLabel(item.title)}, {"enabled", isChoosable(menu, item)}, {"visible", true}};
}

bool looksAlike(const Menu& left, const Menu& right) {
  return std::equal(left.items.begin(), left.items.end(), right.items.begin(), right.items.end(),
                    [&](const MenuItem& first, const MenuItem& second) {
                      return rowProperties(left, first) == rowProperties(right, second);
                    });
}

}  // namespace

ExportedMenu::ExportedMenu(QDBusConnection bus, QString path, MainQueue& queue, std::function<void()> aboutToShow)
    : bus_(std::move(bus)), path_(std::move(path)), queue_(queue), aboutToShow_(std::move(aboutToShow)) {
  qDBusRegisterMetaType<MenuLayout>();
  qDBusRegisterMetaType<MenuProperties>();
  qDBusRegisterMetaType<QList<MenuProperties>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  bus_.registerObject(
      path_, this,
      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals | QDBusConnection::ExportAllProperties);
}

ExportedMenu::~ExportedMenu() {
  queue_.cancel(refresh_);
  bus_.unregisterObject(path_);
}

// The actions are always the new ones; hosts hear of a change only when rows look different.
void ExportedMenu::setMenu(const Menu& menu) {
  const bool changed = revision_ == 0 || !looksAlike(menu_, menu);
  menu_ = menu;
  if (changed) emit LayoutUpdated(++revision_, rootId);
}

// Later than now: the change that makes the menu read differently may be half done.
void ExportedMenu::invalidate() {
  if (revision_ == 0) return;
  queue_.cancel(refresh_);
  refresh_ = queue_.runAfter(MainQueue::Duration::zero(), [this] { aboutToShow_(); });
}

// A host fetches the rows when the item registers, before it ever announces to show them; an empty
// menu would make it show one of its own.
uint ExportedMenu::GetLayout(int parentId, int recursionDepth, const QStringList& /*propertyNames*/,
                             MenuLayout& layout) {
  if (revision_ == 0) announce();
  layout.id = parentId;
  layout.properties = properties(parentId);
  if (parentId != rootId || recursionDepth == 0) return revision_;
  for (int id = 1; knows(id); ++id) layout.children.append(QVariant::fromValue(MenuLayout{id, properties(id), {}}));
  return revision_;
}

QList<MenuProperties> ExportedMenu::GetGroupProperties(const QList<int>& ids, const QStringList& /*propertyNames*/) {
  QList<MenuProperties> rows;
  for (const int id : ids) {
    if (knows(id)) rows.append({id, properties(id)});
  }
  if (!ids.isEmpty()) return rows;
  for (int id = rootId; knows(id); ++id) rows.append({id, properties(id)});
  return rows;
}

QDBusVariant ExportedMenu::GetProperty(int id, const QString& name) {
  return QDBusVariant(properties(id).value(name, QString()));
}

QVariantMap ExportedMenu::properties(int id) const {
  if (id == rootId) return {{"children-display", "submenu"}};
  if (!knows(id)) return {};
  return rowProperties(menu_, menu_.items[static_cast<std::size_t>(id) - 1]);
}

void ExportedMenu::Event(int id, const QString& eventId, const QDBusVariant& /*data*/, uint /*timestamp*/) {
  handle(id, eventId);
}

QList<int> ExportedMenu::EventGroup(const QList<MenuEvent>& events) {
  QList<int> unknown;
  for (const MenuEvent& event : events) {
    if (!handle(event.id, event.name)) unknown.append(event.id);
  }
  return unknown;
}

bool ExportedMenu::handle(int id, const QString& eventId) {
  if (!knows(id)) return false;
  if (id == rootId || eventId != "clicked") return true;
  const MenuItem& item = menu_.items[static_cast<std::size_t>(id) - 1];
  if (isChoosable(menu_, item)) queue_.post(std::get<std::function<void()>>(item.action));
  return true;
}

bool ExportedMenu::AboutToShow(int id) { return id == rootId && announce(); }

QList<int> ExportedMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
  QList<int> changed;
  for (const int id : ids) {
    if (!knows(id)) idErrors.append(id);
    if (AboutToShow(id)) changed.append(id);
  }
  return changed;
}

bool ExportedMenu::announce() {
  const uint before = revision_;
  aboutToShow_();
  return revision_ != before;
}

}  // namespace orvo
