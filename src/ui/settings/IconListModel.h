// The rows of the icon list, changed row by row, so that the list on screen keeps its place, its focus
// and an open choice. Owned by ViewBinding; main thread only.
#pragma once

#include "ui/OrvoView.h"

#include <QAbstractListModel>

#include <string_view>
#include <unordered_set>

namespace orvo {

class IconListModel : public QAbstractListModel {
  Q_OBJECT

 public:
  using QAbstractListModel::QAbstractListModel;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  const std::vector<OrvoView::AppRow>& rows() const { return rows_; }
  // Bundle identifiers are unique in `rows`. Announces the removals, moves, insertions and updates
  // that lead there.
  void setRows(std::vector<OrvoView::AppRow> rows);

 private:
  using Identifiers = std::unordered_set<std::string_view>;

  void removeMissing(const std::vector<OrvoView::AppRow>& target);
  std::size_t insertNew(std::size_t place, const std::vector<OrvoView::AppRow>& target, const Identifiers& known);
  void placeKnown(std::size_t place, const OrvoView::AppRow& wanted);
  void moveTo(std::size_t place, std::size_t from);

  std::vector<OrvoView::AppRow> rows_;
};

}  // namespace orvo
