#include "QTD/display/MenuUse.h"

#include <QAction>
#include <QApplication>
#include <QCursor>
#include <algorithm>
#include <vector>

#include "QTD/platform/GuiThread.h"
#include "QTD/window/QTDViewer.h"

namespace QTD {

namespace {

constexpr const char* kDropped = "dropped";

// Menus in which Qt is at the moment, one entry for each call on the stack. Only the addresses count: such a
// menu may be gone.
std::vector<const QObject*>& Uses() {
  static std::vector<const QObject*>& uses = *new std::vector<const QObject*>;  // menus may outlive all else
  return uses;
}

bool IsEntered(const QObject& menu) {
  return std::count(Uses().begin(), Uses().end(), &menu) > 0;
}

bool IsInUse(const QMenu& menu) {
  return menu.isVisible() || IsEntered(menu);
}

bool IsDropped(const QObject& menu) {
  return menu.property(kDropped).isValid();
}

// The last one to leave a dropped menu has it deleted. It does not go earlier: entries may handle events.
class MenuUse {
 public:
  explicit MenuUse(QObject* usedMenu) : menu(usedMenu) { Uses().push_back(usedMenu); }
  ~MenuUse() {
    Uses().pop_back();
    if (menu && IsDropped(*menu) && !IsEntered(*menu)) menu->deleteLater();
  }
  MenuUse(const MenuUse&) = delete;
  MenuUse& operator=(const MenuUse&) = delete;

 private:
  const QPointer<QObject> menu;
};

// The entries that the viewer owns go along: Qt may be inside one of them.
void TakeEntries(QMenu& menu, QMenu& place, const QObject& viewer) {
  for (QAction* entry : place.actions()) {
    if (entry->menu()) TakeEntries(menu, *entry->menu(), viewer);
    if (entry->parent() == &viewer) entry->setParent(&menu);
  }
}

}  // namespace

bool TrackedMenu::event(QEvent* event) {
  const MenuUse use(whole);
  return QMenu::event(event);
}

QMenu* LivingMenu(const void* address) {
  const QWidgetList widgets = QApplication::allWidgets();
  const auto found = std::find(widgets.begin(), widgets.end(), address);
  QMenu* const menu = found == widgets.end() ? nullptr : qobject_cast<QMenu*>(*found);
  return menu && !IsDropped(*menu) ? menu : nullptr;
}

void ShowMenu(QMenu& menu, const std::function<void()>& closed) {
  if (menu.isVisible()) return;
  const QPointer<QMenu> shown(&menu);
  {
    const MenuUse use(&menu);
    const QObject scope;  // of the connections
    const auto tell = [closed] { platform::QueueOnGuiThread(closed); };
    QObject::connect(&menu, &QMenu::aboutToHide, &scope, tell);
    QObject::connect(&menu, &QObject::destroyed, &scope, tell);
    menu.exec(QCursor::pos());
  }
  if (shown && IsDropped(*shown) && !IsInUse(*shown)) delete shown;
}

void DropMenu(QMenu& menu) {
  if (!IsInUse(menu)) {
    delete &menu;
    return;
  }
  menu.setProperty(kDropped, true);
  menu.hide();
  if (!IsEntered(menu)) menu.deleteLater();
}

void BindToViewer(QMenu& menu, QTDViewer& viewer) {
  QObject::connect(&viewer, &QTDViewer::signalClosing, &menu, [&menu, &viewer] {
    if (!IsInUse(menu)) return;  // it goes with the viewer
    TakeEntries(menu, menu, viewer);
    menu.setParent(nullptr, menu.windowFlags());
    DropMenu(menu);
  });
}

}  // namespace QTD
