#include "platform/linux/desktop/ConfigFolder.h"

#include <QDir>

namespace orvo {

std::string configFolder() {
  const QString told = qEnvironmentVariable("XDG_CONFIG_HOME");
  return (QDir::isAbsolutePath(told) ? told : QDir::homePath() + QStringLiteral("/.config")).toStdString();
}

}  // namespace orvo
