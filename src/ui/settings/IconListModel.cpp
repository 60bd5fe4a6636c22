#include "ui/settings/IconListModel.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_set>

namespace orvo {

namespace {

using Rows = std::vector<OrvoView::AppRow>;

std::unordered_set<std::string_view> identifiers(const Rows& rows) {
  std::unordered_set<std::string_view> all;
  for (const auto& row : rows) all.insert(row.bundleID);
  return all;
}

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

}  // namespace

int IconListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant IconListModel::data(const QModelIndex& index, int role) const {
  if (role != Qt::UserRole || !checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const OrvoView::AppRow& row = rows_[static_cast<std::size_t>(index.row())];
  return QVariantMap{
      {"bundleID", text(row.bundleID)},         {"name", text(row.name)},     {"pid", row.pid},
      {"hidden", row.rule == IconRule::hidden}, {"detail", text(row.detail)}, {"pickerLabel", text(row.pickerLabel)}};
}

QHash<int, QByteArray> IconListModel::roleNames() const { return {{Qt::UserRole, "app"}}; }

void IconListModel::setRows(Rows target) {
  removeMissing(target);
  const auto had = identifiers(rows_);
  Identifiers known;
  for (const auto& row : target) {
    if (had.contains(row.bundleID)) known.insert(row.bundleID);
  }
  for (std::size_t place = 0; place < target.size(); ++place) {
    if (!known.contains(target[place].bundleID)) place += insertNew(place, target, known);
    if (place < target.size()) placeKnown(place, target[place]);
  }
}

// From the end, one announcement for each run of neighbours.
void IconListModel::removeMissing(const Rows& target) {
  const auto kept = identifiers(target);
  const auto isKept = [&](const OrvoView::AppRow& row) { return kept.contains(row.bundleID); };
  auto end = rows_.end();
  while (true) {
    const auto last = std::find_if_not(std::make_reverse_iterator(end), rows_.rend(), isKept);
    if (last == rows_.rend()) return;
    const auto first = std::find_if(last, rows_.rend(), isKept).base();
    beginRemoveRows({}, static_cast<int>(first - rows_.begin()), static_cast<int>(last.base() - rows_.begin()) - 1);
    end = rows_.erase(first, last.base());
    endRemoveRows();
  }
}

// One announcement for the whole run of new rows that starts at `place`; answers its length.
std::size_t IconListModel::insertNew(std::size_t place, const Rows& target, const Identifiers& known) {
  const auto first = target.begin() + static_cast<std::ptrdiff_t>(place);
  const auto last = std::find_if(first, target.end(), [&](const auto& row) { return known.contains(row.bundleID); });
  beginInsertRows({}, static_cast<int>(place), static_cast<int>(last - target.begin()) - 1);
  rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(place), first, last);
  endInsertRows();
  return static_cast<std::size_t>(last - first);
}

// Everything before `place` is already as it should be.
void IconListModel::placeKnown(std::size_t place, const OrvoView::AppRow& wanted) {
  const auto here = rows_.begin() + static_cast<std::ptrdiff_t>(place);
  const auto found = std::find_if(here, rows_.end(), [&](const auto& row) { return row.bundleID == wanted.bundleID; });
  if (found != here) moveTo(place, static_cast<std::size_t>(found - rows_.begin()));
  if (rows_[place] == wanted) return;
  rows_[place] = wanted;
  emit dataChanged(index(static_cast<int>(place)), index(static_cast<int>(place)));
}

void IconListModel::moveTo(std::size_t place, std::size_t from) {
  beginMoveRows({}, static_cast<int>(from), static_cast<int>(from), {}, static_cast<int>(place));
  const auto begin = rows_.begin();
  std::rotate(begin + static_cast<std::ptrdiff_t>(place), begin + static_cast<std::ptrdiff_t>(from),
              begin + static_cast<std::ptrdiff_t>(from) + 1);
  endMoveRows();
}

}  // namespace orvo
