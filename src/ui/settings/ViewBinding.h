// Carries OrvoView into QML, by its own names. Hands the person's actions over, and tells QML of the values that differ
// after each of them and once for all other announcements of a turn of the main queue. One for each engine, owned by
// the settings window.
#pragma once

#include "ui/OrvoView.h"
#include "ui/settings/EngineSingleton.h"
#include "ui/settings/IconListModel.h"

#include <QQmlPropertyMap>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class ViewBinding : public QQmlPropertyMap, public EngineSingleton<ViewBinding> {
  Q_OBJECT
  QML_NAMED_ELEMENT(View)
  QML_SINGLETON

  Q_PROPERTY(QAbstractItemModel* rows READ rows CONSTANT)
  Q_PROPERTY(bool hasRows READ hasRows NOTIFY changed)

 public:
  // Both outlive it.
  ViewBinding(OrvoView& view, MainQueue& mainQueue);
  ~ViewBinding() override;

  QAbstractItemModel* rows() { return &rows_; }
  bool hasRows() const { return rows_.rowCount() > 0; }

  // The argument is a flag, a number or a text.
  Q_INVOKABLE void perform(const QString& action, const QVariant& argument = {});

 signals:
  // After every reading, whatever it brought.
  void changed();

 private:
  void announced();
  void reread();

  OrvoView& view_;
  MainQueue& mainQueue_;
  ObjectWillChange::Token token_;
  bool stale_ = false;
  IconListModel rows_;
};

}  // namespace orvo
