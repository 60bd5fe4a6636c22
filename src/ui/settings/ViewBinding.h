// Carries OrvoView into QML: reads it afresh once for all announcements of a turn of the main queue,
// and hands the person's actions back. One for each engine, owned by the settings window.
#pragma once

#include "ui/OrvoView.h"
#include "ui/settings/EngineSingleton.h"
#include "ui/settings/IconListModel.h"

#include <QObject>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

namespace orvo {

class ViewBinding : public QObject, public EngineSingleton<ViewBinding> {
  Q_OBJECT
  QML_NAMED_ELEMENT(View)
  QML_SINGLETON

  Q_PROPERTY(QVariantList pages READ pages CONSTANT)
  Q_PROPERTY(int page READ page WRITE setPage NOTIFY changed)
  Q_PROPERTY(QVariantMap texts READ texts CONSTANT)
  Q_PROPERTY(QVariantMap statusLine READ statusLine NOTIFY changed)
  Q_PROPERTY(QVariantMap stateBadge READ stateBadge NOTIFY changed)
  Q_PROPERTY(QString message READ message NOTIFY changed)

  // By the number of OrvoView::Guidance.
  Q_PROPERTY(int guidance READ guidance NOTIFY changed)
  Q_PROPERTY(QVariantMap unsupportedCard READ unsupportedCard CONSTANT)
  Q_PROPERTY(QVariantList setupSteps READ setupSteps NOTIFY changed)
  Q_PROPERTY(QVariantMap setupAdvice READ setupAdvice CONSTANT)
  Q_PROPERTY(bool shortcutAvailable READ shortcutAvailable NOTIFY changed)
  Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY changed)
  Q_PROPERTY(bool searchEnabled READ searchEnabled NOTIFY changed)
  Q_PROPERTY(bool offersClearSearch READ offersClearSearch NOTIFY changed)
  Q_PROPERTY(bool isScanning READ isScanning NOTIFY changed)
  Q_PROPERTY(bool refreshEnabled READ refreshEnabled NOTIFY changed)
  Q_PROPERTY(QAbstractItemModel* rows READ rows CONSTANT)
  Q_PROPERTY(bool hasRows READ hasRows NOTIFY changed)
  Q_PROPERTY(bool pickersEnabled READ pickersEnabled NOTIFY changed)
  Q_PROPERTY(QVariantMap emptyState READ emptyState NOTIFY changed)
  Q_PROPERTY(bool showsListFooter READ showsListFooter NOTIFY changed)
  Q_PROPERTY(QString listCount READ listCount NOTIFY changed)
  Q_PROPERTY(QString actionTitle READ actionTitle NOTIFY changed)
  Q_PROPERTY(QString actionHint READ actionHint NOTIFY changed)
  Q_PROPERTY(QVariantMap primaryButton READ primaryButton NOTIFY changed)

  Q_PROPERTY(bool launchAtLogin READ launchAtLogin NOTIFY changed)
  Q_PROPERTY(QString shortcutDetail READ shortcutDetail NOTIFY changed)
  Q_PROPERTY(QStringList rehideOptions READ rehideOptions CONSTANT)
  Q_PROPERTY(int rehideOption READ rehideOption NOTIFY changed)
  Q_PROPERTY(QString rehideText READ rehideText NOTIFY changed)
  Q_PROPERTY(QVariantMap systemControlsCard READ systemControlsCard CONSTANT)

  Q_PROPERTY(QVariantList diagnostics READ diagnostics NOTIFY changed)
  Q_PROPERTY(QVariantMap copyButton READ copyButton NOTIFY changed)
  Q_PROPERTY(QVariantMap privacyCard READ privacyCard CONSTANT)
  Q_PROPERTY(QStringList linkLabels READ linkLabels CONSTANT)

 public:
  // Both outlive it.
  ViewBinding(OrvoView& view, MainQueue& mainQueue);
  ~ViewBinding() override;

  QVariantList pages() const;
  int page() const { return static_cast<int>(view_.page()); }
  void setPage(int page);
  QVariantMap texts() const { return texts_; }
  QVariantMap statusLine() const;
  QVariantMap stateBadge() const;
  QString message() const;
  int guidance() const { return static_cast<int>(view_.guidance()); }
  QVariantMap unsupportedCard() const;
  QVariantList setupSteps() const;
  QVariantMap setupAdvice() const;
  bool shortcutAvailable() const { return view_.shortcutAvailable(); }
  QString searchText() const;
  void setSearchText(const QString& text);
  bool searchEnabled() const { return view_.searchEnabled(); }
  bool offersClearSearch() const { return view_.offersClearSearch(); }
  bool isScanning() const { return view_.isScanning(); }
  bool refreshEnabled() const { return view_.refreshEnabled(); }
  QAbstractItemModel* rows() { return &rows_; }
  bool hasRows() const { return rows_.rowCount() > 0; }
  bool pickersEnabled() const { return view_.pickersEnabled(); }
  QVariantMap emptyState() const;
  bool showsListFooter() const { return view_.showsListFooter(); }
  QString listCount() const;
  QString actionTitle() const;
  QString actionHint() const;
  QVariantMap primaryButton() const;
  bool launchAtLogin() const { return view_.launchAtLogin(); }
  QString shortcutDetail() const;
  QStringList rehideOptions() const;
  // -1 when the stored delay is none of the options.
  int rehideOption() const;
  QString rehideText() const;
  QVariantMap systemControlsCard() const;
  QVariantList diagnostics() const;
  QVariantMap copyButton() const;
  QVariantMap privacyCard() const;
  QStringList linkLabels() const;

  Q_INVOKABLE void performSetupAction() { view_.performSetupAction(); }
  Q_INVOKABLE void clearSearch() { view_.clearSearch(); }
  Q_INVOKABLE void refresh() { view_.refresh(); }
  Q_INVOKABLE void choose(const QString& bundleID, bool hide);
  Q_INVOKABLE void performPrimaryAction() { view_.performPrimaryAction(); }
  Q_INVOKABLE void setLaunchAtLogin(bool enabled) { view_.setLaunchAtLogin(enabled); }
  Q_INVOKABLE void chooseRehideOption(int option);
  Q_INVOKABLE void copyDiagnostics() { view_.copyDiagnostics(); }
  Q_INVOKABLE void openLink(int link);

 signals:
  void changed();

 private:
  void announced();
  void reread();

  OrvoView& view_;
  MainQueue& mainQueue_;
  ObjectWillChange::Token token_;
  bool rereadPosted_ = false;
  const QVariantMap texts_;
  IconListModel rows_;
};

}  // namespace orvo
