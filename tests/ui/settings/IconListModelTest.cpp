#include "ui/settings/IconListModel.h"

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include <algorithm>
#include <random>

namespace orvo {

namespace {

using Rows = std::vector<OrvoView::AppRow>;

OrvoView::AppRow row(const std::string& name, IconRule rule = IconRule::visible) {
  return {.bundleID = name, .name = name, .pid = 1, .rule = rule, .detail = "", .pickerLabel = ""};
}

// What a list on screen does with the announcements.
struct Screen {
  explicit Screen(const IconListModel& model) {
    using M = IconListModel;
    const auto name = [&model](int at) { return model.index(at).data(M::nameRole).toString().toStdString(); };
    QObject::connect(&model, &M::rowsInserted, [this, name](auto&, int first, int last) {
      for (int at = first; at <= last; ++at) names.insert(names.begin() + at, name(at));
      ++announcements;
    });
    QObject::connect(&model, &M::rowsRemoved, [this](auto&, int first, int last) {
      names.erase(names.begin() + first, names.begin() + last + 1);
      ++announcements;
    });
    QObject::connect(&model, &M::rowsMoved, [this](auto&, int from, int, auto&, int to) {
      const std::string moved = names[static_cast<std::size_t>(from)];
      names.erase(names.begin() + from);
      names.insert(names.begin() + (to > from ? to - 1 : to), moved);
      ++announcements;
    });
    QObject::connect(&model, &M::modelReset, [] { ADD_FAILURE() << "a reset"; });
    QObject::connect(&model, &M::dataChanged, [this] { ++updates; });
  }

  std::vector<std::string> names;
  int announcements = 0;
  int updates = 0;
};

TEST(IconListModelTest, AnyListBecomesAnyOtherRowByRow) {
  IconListModel model;
  const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  const Screen screen(model);
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    Rows target;
    for (char letter = 'a'; letter <= 'l'; ++letter) {
      if (random() % 2 == 0)
        target.push_back(row(std::string(1, letter), random() % 2 == 0 ? IconRule::hidden : IconRule::visible));
    }
    if (round % 3 == 0) std::ranges::shuffle(target, random);
    model.setRows(target);
    std::vector<std::string> wanted;
    for (const auto& one : target) wanted.push_back(one.name);
    ASSERT_EQ(screen.names, wanted) << "round " << round;
    ASSERT_EQ(model.rows(), target);
  }
}

TEST(IconListModelTest, OnlyWhatChangedIsAnnounced) {
  IconListModel model;
  model.setRows({row("a"), row("b"), row("c"), row("d")});
  Screen screen(model);
  screen.names = {"a", "b", "c", "d"};
  model.setRows({row("a"), row("b"), row("c"), row("d")});
  EXPECT_EQ(screen.announcements + screen.updates, 0);
  model.setRows({row("a"), row("b", IconRule::hidden), row("c"), row("d")});
  EXPECT_EQ(screen.updates, 1);
  EXPECT_EQ(screen.announcements, 0);
  // One run out, one run in.
  model.setRows({row("a"), row("x"), row("y"), row("z"), row("d")});
  EXPECT_EQ(screen.announcements, 2);
}

}  // namespace

}  // namespace orvo
