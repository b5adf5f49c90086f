// The picture's context menu.
#pragma once

class QMenu;
class QTDDisplay;
class QTDViewer;

namespace QTD {

// What the states of the entries follow.
struct ContextMenuState {
  bool canZoomIn = false, canZoomOut = false;
  int fit = 0;  // the screen's fit mode
};

// A child of `viewer`; its entries call the slots of `display`, and go when it goes. GUI thread.
QMenu* MakeContextMenu(QTDDisplay& display, QTDViewer& viewer, const ContextMenuState& state);

}  // namespace QTD
