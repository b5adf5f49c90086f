#include "view/Settings.h"

#include <QFileInfo>
#include <utility>

namespace zynview {

namespace {

struct Switch {
  const char* key;
  bool Settings::*value;
};

constexpr Switch kSwitches[] = {
    {"opengl", &Settings::opengl},
    {"view/status", &Settings::statusLine},
    {"view/information", &Settings::information},
    {"view/overlays", &Settings::overlays},
    {"view/markExposure", &Settings::markExposure},
};

struct Bytes {
  const char* key;
  QByteArray Settings::*value;
};

constexpr Bytes kBytes[] = {
    {"window/geometry", &Settings::geometry},
    {"window/docks", &Settings::docks},
};

constexpr char kFolder[] = "folder", kRecent[] = "recent";

}  // namespace

Settings Settings::OfUser() {
  return Settings(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                              QStringLiteral("ZynDisplayQt"), QStringLiteral("zynview")));
}

Settings Settings::InFile(const QString& file) {
  return Settings(std::make_unique<QSettings>(file, QSettings::IniFormat));
}

Settings Settings::None() {
  return Settings(nullptr);
}

// Whatever stands in the file: what is of another kind reads as empty or as false.
Settings::Settings(std::unique_ptr<QSettings> place) : store(std::move(place)) {
  if (!store) return;
  for (const Switch& each : kSwitches) this->*each.value = store->value(QLatin1String(each.key)).toBool();
  for (const Bytes& each : kBytes) this->*each.value = store->value(QLatin1String(each.key)).toByteArray();
  folder = store->value(QLatin1String(kFolder)).toString();
  recent = RecentFiles(store->value(QLatin1String(kRecent)).toStringList());
}

void Settings::Save() {
  if (!store) return;
  for (const Switch& each : kSwitches) store->setValue(QLatin1String(each.key), this->*each.value);
  for (const Bytes& each : kBytes) store->setValue(QLatin1String(each.key), this->*each.value);
  store->setValue(QLatin1String(kFolder), folder);
  store->setValue(QLatin1String(kRecent), recent.Paths());
  store->sync();
}

void Settings::Complete(Options* options) const {
  options->opengl = options->opengl || (opengl && !options->processor);
  options->statusLine = options->statusLine || statusLine;
  options->information = options->information || information;
  options->overlays = options->overlays || overlays;
  // The folder may have gone meanwhile.
  if (options->folder.isEmpty() && QFileInfo(folder).isDir()) options->folder = folder;
}

}  // namespace zynview
