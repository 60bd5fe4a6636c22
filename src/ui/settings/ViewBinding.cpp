#include "ui/settings/ViewBinding.h"

#include "platform/MainQueue.h"

#include <nlohmann/json.hpp>

#include <QPointer>

#include <utility>

namespace orvo {

namespace {

QVariant toVariant(const OrvoView::Value& value) {
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_number()) return value.get<int>();
  if (value.is_string()) return QString::fromStdString(value.get_ref<const std::string&>());
  if (value.is_array()) {
    QVariantList list;
    for (const auto& element : value) list << toVariant(element);
    return list;
  }
  QVariantMap record;
  for (const auto& [name, element] : value.items()) record.insert(QString::fromStdString(name), toVariant(element));
  return record;
}

OrvoView::Value toValue(const QVariant& variant) {
  switch (variant.typeId()) {
    case QMetaType::Bool:
      return variant.toBool();
    case QMetaType::Int:
    case QMetaType::Double:
      return variant.toInt();
    case QMetaType::QString:
      return variant.toString().toStdString();
    default:
      return nullptr;
  }
}

}  // namespace

ViewBinding::ViewBinding(OrvoView& view, MainQueue& mainQueue)
    : QQmlPropertyMap(this, nullptr),
      view_(view),
      mainQueue_(mainQueue),
      token_(view.willChange.observe([this] { announced(); })) {
  reread();
}

ViewBinding::~ViewBinding() { view_.willChange.remove(token_); }

// The announcement comes before the change, so that nothing may be read inside it.
void ViewBinding::announced() {
  if (std::exchange(stale_, true)) return;
  mainQueue_.post([self = QPointer(this)] {
    if (self && self->stale_) self->reread();
  });
}

// The map tells of a value only where it differs from the one before.
void ViewBinding::reread() {
  stale_ = false;
  rows_.setRows(view_.rows());
  const OrvoView::Value values = view_.values();
  QVariantHash all;
  for (const auto& [name, value] : values.items()) all.insert(QString::fromStdString(name), toVariant(value));
  insert(all);
  emit changed();
}

// The next key or press, which may already wait, finds what this one led to.
void ViewBinding::perform(const QString& action, const QVariant& argument) {
  view_.perform(action.toStdString(), toValue(argument));
  if (stale_) reread();
}

}  // namespace orvo
