// What the viewer remembers from one run to the next.
#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <memory>

#include "Options.h"
#include "view/RecentFiles.h"

namespace zynview {

// GUI thread.
class Settings {
 public:
  // Those of the user, in the place where programs keep them; those in a file of INI form; none at all: then
  // nothing is remembered.
  static Settings OfUser();
  static Settings InFile(const QString& file);
  static Settings None();

  // What the command line leaves open is taken from here.
  void Complete(Options* options) const;

  QByteArray geometry, docks;  // as `QMainWindow` writes them
  QString folder;              // where frames are saved; empty: never chosen
  RecentFiles recent;
  bool opengl = false;
  bool statusLine = false, information = false, overlays = false, markExposure = false;

  bool AreKept() const { return store != nullptr; }
  void Save();

 private:
  explicit Settings(std::unique_ptr<QSettings> place);

  std::unique_ptr<QSettings> store;  // null: none
};

}  // namespace zynview
