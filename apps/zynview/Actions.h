// What the user can ask the viewer for, by a key or in the context menu.
#pragma once

#include <QString>

namespace zynview {

enum class Action {
  Pause,
  SavePicture,
  SaveFrame,
  StatusLine,
  Information,
  Overlays,
  MarkExposure,
  NextDemosaicing,
  MoreGain,
  LessGain,
  ResetCorrection,
};

struct ActionRow {
  Action action;
  int key;              // of `QKeyEvent`; 0: a key sequence of the display, which it handles itself
  bool shift;           // with Shift
  const char* keyName;  // as the menu and the help show it
  const char* label;
  bool isSwitch;  // has a state, which the menu shows
  bool inMenu;
};

// Clear of the keys that are the display's own: + - 0 1 2 C, the arrows, and the sequences SD and SI.
const ActionRow* ActionRowAt(int index);               // null behind the last row
const ActionRow* FindAction(int key, bool withShift);  // null: not one of the viewer's keys
QString ActionsHelp();                                 // one line for each row

}  // namespace zynview
