// The files and folders that were opened last.
#pragma once

#include <QString>
#include <QStringList>

namespace zynview {

class RecentFiles {
 public:
  static constexpr int kMost = 10;

  RecentFiles() = default;
  // The newest one first; what is too much or twice falls off.
  explicit RecentFiles(const QStringList& paths);

  // Comes to the front, also when it was there before. Paths are made absolute.
  void Add(const QString& path);
  void Clear() { paths.clear(); }

  const QStringList& Paths() const { return paths; }
  static bool IsThere(const QString& path);
  // The entry of a menu: the path, shortened in its middle.
  static QString Label(const QString& path);

 private:
  QStringList paths;
};

}  // namespace zynview
