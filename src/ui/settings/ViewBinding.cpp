#include "ui/settings/ViewBinding.h"

#include "platform/MainQueue.h"

#include <nlohmann/json.hpp>

#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>

#include <utility>

namespace orvo {

namespace {

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
  // Names of programs may be any bytes.
  const std::string values = view_.values().dump(-1, ' ', false, OrvoView::Value::error_handler_t::replace);
  insert(QJsonDocument::fromJson(QByteArray::fromStdString(values)).object().toVariantHash());
  emit changed();
}

// The next key or press, which may already wait, finds what this one led to.
void ViewBinding::perform(const QString& action, const QVariant& argument) {
  view_.perform(action.toStdString(), toValue(argument));
  if (stale_) reread();
}

}  // namespace orvo
