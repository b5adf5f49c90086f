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
  NextFrame,
  PreviousFrame,
  OpenFiles,
  OpenFolder,
  ShowCamera,
  ShowAnalysis,
  HoldProfile,
  MarkRegion,
  ShowHelp,
  Quit,
};

// The menu of the menu bar in which an action stands.
enum class BarMenu { None, File, Camera, View, Help };

struct ActionRow {
  Action action;
  int key;              // of `QKeyEvent`; 0: a key sequence of the display, which it handles itself
  bool shift;           // with Shift
  const char* keyName;  // as the menu and the help show it
  const char* label;
  bool isSwitch;  // has a state, which the menu shows
  bool inMenu;    // in the context menu
  BarMenu bar = BarMenu::None;
  bool ctrl = false;  // with Ctrl
};

// Clear of the keys that are the display's own: + - 0 1 2 C, the arrows, and the sequences SD and SI.
const ActionRow* ActionRowAt(int index);  // null behind the last row
// Null: not one of the viewer's keys.
const ActionRow* FindAction(int key, bool withShift, bool withCtrl = false);

}  // namespace zynview
