#include "ui/settings/ViewBinding.h"

#include "platform/MainQueue.h"

#include <QPointer>

namespace orvo {

namespace {

QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

QVariantMap map(const OrvoView::InformationCard& card) {
  return {{"title", text(card.title)},
          {"detail", text(card.detail)},
          {"symbol", text(card.symbol)},
          {"attention", card.attention}};
}

QVariantMap map(const OrvoView::Label& label) { return {{"symbol", text(label.symbol)}, {"text", text(label.text)}}; }

QVariantMap map(const OrvoView::SetupStep& step) {
  return {{"title", text(step.title)},
          {"number", text(step.number)},
          {"complete", step.complete},
          {"accessibilityLabel", text(step.accessibilityLabel)}};
}

QVariantMap map(const OrvoView::DiagnosticRow& row) {
  return {{"title", text(row.title)},
          {"value", text(row.value)},
          {"marked", row.ready.has_value()},
          {"ready", row.ready.value_or(false)}};
}

QVariantMap map(const std::map<std::string, std::string>& texts) {
  QVariantMap all;
  for (const auto& [name, value] : texts) all.insert(text(name), text(value));
  return all;
}

template <typename Values>
QVariantList list(const Values& values) {
  QVariantList all;
  for (const auto& value : values) all << map(value);
  return all;
}

}  // namespace

ViewBinding::ViewBinding(OrvoView& view, MainQueue& mainQueue)
    : view_(view),
      mainQueue_(mainQueue),
      token_(view.willChange.observe([this] { announced(); })),
      texts_(map(view.texts())) {
  rows_.setRows(view_.rows());
}

ViewBinding::~ViewBinding() { view_.willChange.remove(token_); }

// The announcement comes before the change, so that nothing may be read inside it.
void ViewBinding::announced() {
  if (rereadPosted_) return;
  rereadPosted_ = true;
  mainQueue_.post([self = QPointer(this)] {
    if (self) self->reread();
  });
}

void ViewBinding::reread() {
  rereadPosted_ = false;
  rows_.setRows(view_.rows());
  emit changed();
}

QVariantList ViewBinding::pages() const { return list(view_.pages()); }

void ViewBinding::setPage(int page) { view_.page = OrvoView::allPages.at(static_cast<std::size_t>(page)); }

QVariantMap ViewBinding::statusLine() const { return map(view_.statusLine()); }

QVariantMap ViewBinding::stateBadge() const {
  const OrvoView::StateBadge badge = view_.stateBadge();
  return {{"inProgress", badge.inProgress}, {"accentDot", badge.accentDot}, {"text", text(badge.text)}};
}

QString ViewBinding::message() const { return text(view_.message().value_or("")); }

QVariantMap ViewBinding::unsupportedCard() const { return map(view_.unsupportedCard()); }

QVariantList ViewBinding::setupSteps() const { return list(view_.setupSteps()); }

QVariantMap ViewBinding::setupAdvice() const {
  const OrvoView::SetupAdvice advice = view_.setupAdvice();
  return {{"title", text(advice.title)}, {"detail", text(advice.detail)}, {"button", text(advice.button)}};
}

QString ViewBinding::searchText() const { return text(view_.searchText()); }

void ViewBinding::setSearchText(const QString& query) {
  if (query != searchText()) view_.setSearchText(query.toStdString());
}

QVariantMap ViewBinding::emptyState() const {
  const OrvoView::EmptyState state = view_.emptyState();
  return {{"symbol", text(state.symbol)},
          {"title", text(view_.emptyTitle())},
          {"detail", text(view_.emptyDetail())},
          {"offersClearSearch", state.offersClearSearch}};
}

QString ViewBinding::listCount() const { return text(view_.listCount()); }

QString ViewBinding::actionTitle() const { return text(view_.actionTitle()); }

QString ViewBinding::actionHint() const { return text(view_.actionHint()); }

QVariantMap ViewBinding::primaryButton() const {
  const OrvoView::PrimaryButton button = view_.primaryButton();
  return {{"label", text(button.label)},
          {"symbol", text(button.symbol)},
          {"accessibilityLabel", text(button.accessibilityLabel)},
          {"toolTip", text(button.toolTip)},
          {"enabled", button.enabled}};
}

QString ViewBinding::shortcutDetail() const { return text(view_.shortcutDetail()); }

QStringList ViewBinding::rehideOptions() const {
  QStringList texts;
  for (const auto& option : view_.rehideOptions()) texts << text(option.text);
  return texts;
}

int ViewBinding::rehideOption() const {
  const auto option = view_.rehideOption();
  return option ? static_cast<int>(*option) : -1;
}

QString ViewBinding::rehideText() const { return text(view_.rehideText()); }

QVariantMap ViewBinding::systemControlsCard() const { return map(view_.systemControlsCard()); }

QVariantList ViewBinding::diagnostics() const { return list(view_.diagnostics()); }

QVariantMap ViewBinding::copyButton() const { return map(view_.copyButton()); }

QVariantMap ViewBinding::privacyCard() const { return map(view_.privacyCard()); }

QStringList ViewBinding::linkLabels() const {
  QStringList labels;
  for (const auto& link : view_.links()) labels << text(link.label);
  return labels;
}

void ViewBinding::choose(const QString& bundleID, bool hide) {
  view_.choose(hide ? IconRule::hidden : IconRule::visible, bundleID.toStdString());
}

// A menu that is left with nothing highlighted reports -1.
void ViewBinding::chooseRehideOption(int option) {
  if (option >= 0) view_.chooseRehideOption(static_cast<std::size_t>(option));
}

void ViewBinding::openLink(int link) { view_.openLink(static_cast<std::size_t>(link)); }

}  // namespace orvo
