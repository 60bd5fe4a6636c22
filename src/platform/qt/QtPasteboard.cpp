#include "platform/qt/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace orvo {

void QtPasteboard::clearContents() { QGuiApplication::clipboard()->clear(); }

void QtPasteboard::setString(const std::string& text) {
  QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

}  // namespace orvo
