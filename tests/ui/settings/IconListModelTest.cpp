#include "ui/settings/IconListModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <algorithm>
#include <random>

namespace orvo {

namespace {

using Rows = std::vector<OrvoView::AppRow>;

Rows someRows(std::mt19937& random, bool shuffled) {
  Rows rows;
  for (char letter = 'a'; letter <= 'l'; ++letter) {
    const IconRule rule = random() % 2 == 0 ? IconRule::hidden : IconRule::visible;
    const std::string name(1, letter);
    if (random() % 2 == 0) rows.push_back({name, name, 1, rule, "", ""});
  }
  if (shuffled) std::ranges::shuffle(rows, random);
  return rows;
}

// Persistent indexes follow the announcements, and no reset; a row that stays as it was is not announced.
TEST(IconListModelTest, AnyListBecomesAnyOtherRowByRow) {
  IconListModel model;
  const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    const Rows former = model.rows();
    std::vector<QPersistentModelIndex> places;
    for (int place = 0; place < model.rowCount(); ++place) places.emplace_back(model.index(place));
    const Rows target = someRows(random, round % 3 == 0);
    const QSignalSpy updated(&model, &IconListModel::dataChanged);
    model.setRows(target);
    ASSERT_EQ(model.rows(), target) << "round " << round;
    qsizetype changed = 0;
    for (std::size_t place = 0; place < former.size(); ++place) {
      const auto kept = std::ranges::find(target, former[place].name, &OrvoView::AppRow::name);
      ASSERT_EQ(places[place].row(), kept == target.end() ? -1 : kept - target.begin()) << "round " << round;
      changed += kept == target.end() || *kept == former[place] ? 0 : 1;
    }
    ASSERT_EQ(updated.size(), changed) << "round " << round;
  }
}

}  // namespace

}  // namespace orvo
