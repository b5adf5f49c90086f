#include "QTD/display/ContextMenu.h"

#include <QAction>
#include <memory>

#include "QTD/display/MenuUse.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"

namespace QTD {

namespace {

enum class Level { kMenu, kTitle, kSubmenu };  // a title begins a submenu, for the rows behind it
enum class State { kAlways, kZoomsIn, kZoomsOut, kFits, kFills };

struct Row {
  Level level;
  const char* label;  // a tab stands before the key
  void (QTDDisplay::*slot)();
  State state;
};

constexpr Row kRows[] = {
    {Level::kMenu, QT_TR_NOOP("Zoom In\t[plus]"), &QTDDisplay::slotMenuZoomIn, State::kZoomsIn},
    {Level::kMenu, QT_TR_NOOP("Zoom Out\t[minus]"), &QTDDisplay::slotMenuZoomOut, State::kZoomsOut},
    {Level::kTitle, "Set fit mode...", nullptr, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("Fit to Window\t[0]"), &QTDDisplay::slotMenuFitWindow, State::kFits},
    {Level::kSubmenu, QT_TR_NOOP("Fill Window\t[2]"), &QTDDisplay::slotMenuFillWindow, State::kFills},
    {Level::kTitle, "Set zoom...", nullptr, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("25%"), &QTDDisplay::slotMenuZoom25, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("50%"), &QTDDisplay::slotMenuZoom50, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("100%\t[1]"), &QTDDisplay::slotMenuZoom100, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("200%"), &QTDDisplay::slotMenuZoom200, State::kAlways},
    {Level::kTitle, "Center at...", nullptr, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("Image Center\t[C]"), &QTDDisplay::slotMenuCenterImage, State::kAlways},
    {Level::kSubmenu, QT_TR_NOOP("Here\t[double click]"), &QTDDisplay::slotMenuCenterHere, State::kAlways},
};

void SetChecked(QAction& action, bool checked) {
  action.setCheckable(true);
  action.setChecked(checked);
}

void SetState(QAction& action, State wanted, const ContextMenuState& state) {
  switch (wanted) {
    case State::kZoomsIn:
      action.setEnabled(state.canZoomIn);
      break;
    case State::kZoomsOut:
      action.setEnabled(state.canZoomOut);
      break;
    case State::kFits:
      SetChecked(action, state.fit == kFitWhole);
      break;
    case State::kFills:
      SetChecked(action, state.fit == kFitFill);
      break;
    case State::kAlways:
      break;
  }
}

}  // namespace

QMenu* MakeContextMenu(QTDDisplay& display, QTDViewer& viewer, const ContextMenuState& state) {
  auto menu = std::make_unique<TrackedMenu>(&viewer);
  BindToViewer(*menu, viewer);
  QMenu* submenu = nullptr;
  for (const Row& row : kRows) {
    if (row.level == Level::kTitle) {
      submenu = new TrackedMenu(QString::fromLatin1(row.label), *menu);
      menu->addMenu(submenu);
      continue;
    }
    auto* action = new QAction(QObject::tr(row.label), &viewer);
    // A host that opens the menu again and again would otherwise heap its entries up in the viewer.
    QObject::connect(menu.get(), &QObject::destroyed, action, [action] { delete action; });
    QObject::connect(action, &QAction::triggered, &display, row.slot);
    SetState(*action, row.state, state);
    QMenu* const place = row.level == Level::kMenu ? menu.get() : submenu;
    place->addAction(action);
  }
  return menu.release();
}

}  // namespace QTD
