#include "ui/settings/IconListModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <algorithm>
#include <random>

namespace orvo {

namespace {

using Rows = std::vector<OrvoView::AppRow>;

OrvoView::AppRow row(const std::string& name, IconRule rule = IconRule::visible) {
  return {.bundleID = name, .name = name, .pid = 1, .rule = rule, .detail = "", .pickerLabel = ""};
}

Rows someRows(std::mt19937& random, bool shuffled) {
  Rows rows;
  for (char letter = 'a'; letter <= 'l'; ++letter) {
    const IconRule rule = random() % 2 == 0 ? IconRule::hidden : IconRule::visible;
    if (random() % 2 == 0) rows.push_back(row(std::string(1, letter), rule));
  }
  if (shuffled) std::ranges::shuffle(rows, random);
  return rows;
}

// Persistent indexes follow the announcements, and no reset.
TEST(IconListModelTest, AnyListBecomesAnyOtherRowByRow) {
  IconListModel model;
  const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    const Rows former = model.rows();
    std::vector<QPersistentModelIndex> places;
    for (int place = 0; place < model.rowCount(); ++place) places.emplace_back(model.index(place));
    const Rows target = someRows(random, round % 3 == 0);
    model.setRows(target);
    ASSERT_EQ(model.rows(), target) << "round " << round;
    for (std::size_t place = 0; place < former.size(); ++place) {
      const auto kept = std::ranges::find(target, former[place].name, &OrvoView::AppRow::name);
      ASSERT_EQ(places[place].row(), kept == target.end() ? -1 : kept - target.begin()) << "round " << round;
    }
  }
}

TEST(IconListModelTest, OnlyWhatChangedIsAnnounced) {
  IconListModel model;
  model.setRows({row("a"), row("b"), row("c"), row("d")});
  const QSignalSpy in(&model, &IconListModel::rowsInserted);
  const QSignalSpy out(&model, &IconListModel::rowsRemoved);
  const QSignalSpy moved(&model, &IconListModel::rowsMoved);
  const QSignalSpy updated(&model, &IconListModel::dataChanged);
  const auto counts = [&] { return std::vector{in.size(), out.size(), moved.size(), updated.size()}; };
  model.setRows(Rows(model.rows()));
  EXPECT_EQ(counts(), (std::vector<qsizetype>{0, 0, 0, 0}));
  model.setRows({row("a"), row("b", IconRule::hidden), row("c"), row("d")});
  EXPECT_EQ(counts(), (std::vector<qsizetype>{0, 0, 0, 1}));
  // One run out, one run in.
  model.setRows({row("a"), row("x"), row("y"), row("z"), row("d")});
  EXPECT_EQ(counts(), (std::vector<qsizetype>{1, 1, 0, 1}));
}

}  // namespace

}  // namespace orvo
