#include "Actions.h"

#include <Qt>
#include <iterator>

namespace zynview {

namespace {

constexpr ActionRow kRows[] = {
    // action, key, shift, key's name, label, switch, in the menu
    {Action::Pause, Qt::Key_Space, false, "space", "Pause", true, true},
    {Action::SavePicture, Qt::Key_P, false, "P", "Save Picture", false, true},
    {Action::SaveFrame, Qt::Key_W, false, "W", "Save Raw Frame", false, true},
    {Action::StatusLine, 0, false, "S D", "Status Line", true, true},
    {Action::Information, 0, false, "S I", "Information", true, true},
    {Action::Overlays, Qt::Key_O, false, "O", "Overlays", true, true},
    {Action::MarkExposure, Qt::Key_E, false, "E", "Mark Exposure", true, true},
    {Action::NextDemosaicing, Qt::Key_M, false, "M", "Next Demosaicing Method", false, false},
    {Action::MoreGain, Qt::Key_G, false, "G", "More Gain", false, false},
    {Action::LessGain, Qt::Key_G, true, "Shift+G", "Less Gain", false, false},
    {Action::ResetCorrection, Qt::Key_R, false, "R", "Reset Gain, Offset and Gamma", false, false},
};

}  // namespace

const ActionRow* ActionRowAt(int index) {
  return index >= 0 && index < static_cast<int>(std::size(kRows)) ? &kRows[index] : nullptr;
}

// Shift counts only where a key has two meanings.
const ActionRow* FindAction(int key, bool withShift) {
  if (key == 0) return nullptr;
  const ActionRow* found = nullptr;
  for (const ActionRow& row : kRows) {
    if (row.key == key && (!found || row.shift == withShift)) found = &row;
  }
  return found;
}

QString ActionsHelp() {
  QString help;
  for (const ActionRow& row : kRows) {
    help += QStringLiteral("  %1 %2\n")
                .arg(QString::fromLatin1(row.keyName), -12)
                .arg(QString::fromLatin1(row.label));
  }
  return help;
}

}  // namespace zynview
