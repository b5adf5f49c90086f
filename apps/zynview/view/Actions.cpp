#include "view/Actions.h"

#include <Qt>
#include <iterator>

namespace zynview {

namespace {

constexpr ActionRow kRows[] = {
    // action, key, shift, key's name, label, switch, in the context menu, menu of the bar, ctrl
    {Action::Pause, Qt::Key_Space, false, "space", "Pause", true, true, BarMenu::Camera},
    {Action::OpenFiles, Qt::Key_O, false, "Ctrl+O", "Open...", false, false, BarMenu::File, true},
    {Action::OpenFolder, Qt::Key_O, true, "Ctrl+Shift+O", "Open Folder...", false, false, BarMenu::File,
     true},
    {Action::SavePicture, Qt::Key_P, false, "P", "Save Picture", false, true, BarMenu::File},
    {Action::SaveFrame, Qt::Key_W, false, "W", "Save Raw Frame", false, true, BarMenu::File},
    {Action::StatusLine, 0, false, "S D", "Status Line", true, true, BarMenu::View},
    {Action::Information, 0, false, "S I", "Information", true, true, BarMenu::View},
    {Action::Overlays, Qt::Key_O, false, "O", "Overlays", true, true, BarMenu::View},
    {Action::MarkExposure, Qt::Key_E, false, "E", "Mark Exposure", true, true, BarMenu::View},
    {Action::NextDemosaicing, Qt::Key_M, false, "M", "Next Demosaicing Method", false, false, BarMenu::View},
    {Action::MoreGain, Qt::Key_G, false, "G", "More Gain", false, false, BarMenu::View},
    {Action::LessGain, Qt::Key_G, true, "Shift+G", "Less Gain", false, false, BarMenu::View},
    {Action::ResetCorrection, Qt::Key_R, true, "Shift+R", "Reset Gain, Offset and Gamma", false, false,
     BarMenu::View},
    {Action::NextFrame, Qt::Key_PageDown, false, "PageDown", "Next Frame", false, false, BarMenu::Camera},
    {Action::PreviousFrame, Qt::Key_PageUp, false, "PageUp", "Previous Frame", false, false, BarMenu::Camera},
    {Action::ShowCamera, Qt::Key_K, false, "Ctrl+K", "Camera Controls", true, false, BarMenu::Camera, true},
    {Action::ShowAnalysis, Qt::Key_H, false, "H", "Histogram and Statistics", true, true, BarMenu::View},
    {Action::HoldProfile, Qt::Key_L, false, "L", "Hold Line Profile", true, false, BarMenu::View},
    {Action::MarkRegion, Qt::Key_R, false, "R", "Mark Region", true, true, BarMenu::View},
    {Action::ShowHelp, Qt::Key_F1, false, "F1", "Keys and Mouse", false, true, BarMenu::Help},
    {Action::Quit, Qt::Key_Q, false, "Ctrl+Q", "Quit", false, false, BarMenu::File, true},
};

}  // namespace

const ActionRow* ActionRowAt(int index) {
  return index >= 0 && index < static_cast<int>(std::size(kRows)) ? &kRows[index] : nullptr;
}

// Shift counts only where a key has two meanings.
const ActionRow* FindAction(int key, bool withShift, bool withCtrl) {
  if (key == 0) return nullptr;
  const ActionRow* found = nullptr;
  for (const ActionRow& row : kRows) {
    if (row.key == key && row.ctrl == withCtrl && (!found || row.shift == withShift)) found = &row;
  }
  return found;
}

}  // namespace zynview
