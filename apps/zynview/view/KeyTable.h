// What mouse and keys do: for --help and for the window with the help.
#pragma once

#include <QString>
#include <utility>
#include <vector>

namespace zynview {

struct KeySection {
  QString title;
  std::vector<std::pair<QString, QString>> rows;  // key or button, and what it does
};

// Of the mouse, of the display's keys, and of the viewer's, which are those of the table of actions.
std::vector<KeySection> KeySections();

QString KeysHelp();  // all of them, as lines for a terminal

}  // namespace zynview
