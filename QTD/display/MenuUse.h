// Shows and deletes menus that a host may want gone while they are open.
#pragma once

#include <QMenu>
#include <QPointer>
#include <functional>

class QTDViewer;

namespace QTD {

// GUI thread, all of it.

// A menu of which `DropMenu` knows when Qt is inside it, however it is shown. A submenu counts as part of the
// menu that it stands in.
class TrackedMenu : public QMenu {
 public:
  explicit TrackedMenu(QWidget* owner) : QMenu(owner), whole(this) {}
  TrackedMenu(const QString& title, QMenu& menu) : QMenu(title, &menu), whole(&menu) {}

 protected:
  bool event(QEvent* event) override;

 private:
  QPointer<QObject> whole;  // a menu, or what is left of one that is being destroyed
};

// The menu at that address, or null when there is none (any more).
QMenu* LivingMenu(const void* address);

// Shows the menu and returns when it is closed. `closed` is called from the event loop, once or more, after
// it has left the screen: inside this call when an entry handles events, else soon after it. A menu that is
// shown already is not shown once more: the first call would never come back.
void ShowMenu(QMenu& menu, const std::function<void()>& closed);

// Deletes the menu: at once, or, while it is shown or one of its entries runs, when Qt has left it; until
// then it is hidden and no living menu any more.
void DropMenu(QMenu& menu);

// A menu in use outlives the viewer that owns it: it leaves that one with its entries, and is dropped.
void BindToViewer(QMenu& menu, QTDViewer& viewer);

}  // namespace QTD
