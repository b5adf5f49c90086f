#include "view/RecentFiles.h"

#include <QDir>
#include <QFileInfo>

namespace zynview {

namespace {

constexpr int kLabelLength = 60;

}  // namespace

RecentFiles::RecentFiles(const QStringList& from) {
  for (auto path = from.rbegin(); path != from.rend(); ++path) {
    if (!path->isEmpty()) Add(*path);
  }
}

void RecentFiles::Add(const QString& path) {
  const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
  paths.removeAll(absolute);
  paths.prepend(absolute);
  while (paths.size() > kMost) paths.removeLast();
}

bool RecentFiles::IsThere(const QString& path) {
  return QFileInfo::exists(path);
}

QString RecentFiles::Label(const QString& path) {
  QString label = path;
  if (label.size() > kLabelLength)
    label = label.left(kLabelLength / 3) + QStringLiteral("...") + label.right(kLabelLength * 2 / 3 - 3);
  // A menu takes "&" for the mark of a key.
  return label.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

}  // namespace zynview
