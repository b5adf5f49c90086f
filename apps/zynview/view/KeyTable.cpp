#include "view/KeyTable.h"

#include "view/Actions.h"

namespace zynview {

namespace {

struct Row {
  const char* key;
  const char* does;
};

constexpr Row kMouse[] = {
    {"wheel", "zoom"},
    {"left button", "drag the picture; double click: centre here; after R: mark a region"},
    {"right button",
     "click: menu; drag: zoom into a rectangle, with Shift out of it, with Ctrl from its centre"},
    {"pointing", "the status bar tells the position, and the camera's own sample there"},
};

constexpr Row kDisplayKeys[] = {
    {"+ -", "zoom in, zoom out"},
    {"0 1 2", "fit the picture, show it one to one, fill the window"},
    {"C, arrows", "centre the picture, move it"},
};

constexpr int kKeyWidth = 12;

template <std::size_t N>
KeySection Section(const QString& title, const Row (&rows)[N]) {
  KeySection section{title, {}};
  for (const Row& row : rows)
    section.rows.emplace_back(QString::fromLatin1(row.key), QString::fromLatin1(row.does));
  return section;
}

}  // namespace

std::vector<KeySection> KeySections() {
  KeySection viewer{QStringLiteral("Keys of the viewer, and their entries in the menus"), {}};
  for (int i = 0; const ActionRow* row = ActionRowAt(i); ++i)
    viewer.rows.emplace_back(QString::fromLatin1(row->keyName), QString::fromLatin1(row->label));
  viewer.rows.emplace_back(QStringLiteral("Esc"), QStringLiteral("Stop marking a region"));
  return {Section(QStringLiteral("Mouse"), kMouse),
          Section(QStringLiteral("Keys of the display"), kDisplayKeys), viewer};
}

QString KeysHelp() {
  QString help;
  for (const KeySection& section : KeySections()) {
    if (!help.isEmpty()) help += QLatin1Char('\n');
    help += section.title + QStringLiteral(":\n");
    for (const auto& [key, does] : section.rows)
      help += QStringLiteral("  %1 %2\n").arg(key, -kKeyWidth).arg(does);
  }
  return help;
}

}  // namespace zynview
