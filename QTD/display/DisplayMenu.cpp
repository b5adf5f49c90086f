// The commands that begin with "cmd.system.menu", and what the entries of the context menu do.
#include <QMenu>
#include <QPointer>
#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/display/CommandTable.h"
#include "QTD/display/ContextMenu.h"
#include "QTD/display/GuiThread.h"
#include "QTD/display/LiveObjects.h"
#include "QTD/display/MenuUse.h"
#include "QTD/display/QTDDisplay.h"
#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/HostCodeUnderLocks.h"
#include "QTD/frame/Text.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"

namespace {

using Clock = std::chrono::steady_clock;

// A GUI thread that does not come to a job within this time may itself be waiting for the caller.
constexpr std::chrono::seconds kPatience{2};

// A job for the GUI thread that is either run or dropped, never both.
struct Turn {
  enum State { kQueued, kBegun, kDropped };
  std::atomic<int> state{kQueued};
  std::exception_ptr error;

  bool Pass(State next) {
    int expected = kQueued;
    return state.compare_exchange_strong(expected, next);
  }
};

// Runs `job` on the GUI thread and waits for it, holding nothing; what it throws is thrown here. False when
// it was dropped, or when `leave` said so after it had begun.
bool RunMenuJob(const std::function<void()>& job, const std::atomic<bool>& closing,
                const std::function<bool()>& leave) {
  const auto turn = std::make_shared<Turn>();
  const Clock::time_point deadline = Clock::now() + kPatience;
  const auto run = [turn, job] {
    if (!turn->Pass(Turn::kBegun)) return;
    try {
      job();
    } catch (...) {
      turn->error = std::current_exception();
    }
  };
  const auto giveUp = [&] {
    if (turn->state == Turn::kBegun) return leave();
    return (closing || Clock::now() >= deadline) && turn->Pass(Turn::kDropped);
  };
  const bool done = QTD::RunOnGuiThread(run, giveUp);
  if (!done) turn->Pass(Turn::kDropped);
  if (done && turn->error) std::rethrow_exception(turn->error);
  return done;
}

// Runs what an entry of the menu stands for; nothing may leave an event handler.
template <typename Action>
void RunEntry(const void* display, Action action) {
  QTD::LiveCall call(QTD::LiveObjects::Controllers(), display);
  if (!call) return;
  try {
    action();
  } catch (...) {
    // A parameter that cannot be read as a number.
  }
}

}  // namespace

// The widgets are the GUI thread's: a caller on another thread waits for it, without `viewLock`.
struct QTDDisplay::MenuCommands {
  struct Row {
    const char* name;
    void (*run)(QTDDisplay& display, QTD::ARGUMENTS* args);
  };
  static const Row kTable[3];

  static void Create(QTDDisplay& display, QTD::ARGUMENTS* args) {
    if (!args) return;  // nobody could show or delete it
    struct Made {
      QMenu* menu = nullptr;
      QWidget* owner = nullptr;
    };
    const auto made = std::make_shared<Made>();
    const auto build = [&display, made] {
      QTD::HostCodeLock guard(display.viewLock);  // a menu that is made tells the host's event filters
      QTDScreen* screen = display.Screen();
      if (!screen) return;
      const QTD::ContextMenuState state{display.CanZoom(true, -1.0), display.CanZoom(false, -1.0),
                                        screen->properties.GetInt("fit")};
      made->owner = display.viewer;
      made->menu = QTD::MakeContextMenu(display, *display.viewer, state);
    };
    if (!RunMenuJob(build, display.closing, [] { return false; }) || !made->menu) return;
    QTD::ArgumentView(args)
        .Set("qmenu", QTD::ToText(static_cast<const void*>(made->menu)))
        .Set("qmenuWidget", QTD::ToText(static_cast<const void*>(made->owner)));
  }

  // No lock of the display is held while the menu is open, and its call keeps the display until the menu is
  // closed: an entry that deletes it does not take the menu away below itself. A caller on another thread
  // goes on as soon as the menu has closed, even if an entry still runs: that one may be waiting for the
  // caller.
  static void Exec(QTDDisplay& display, QTD::ARGUMENTS* args) {
    const void* address = QTD::ArgumentView(args).GetPointer("qmenu");
    if (!address) return;
    const auto closed = std::make_shared<std::atomic<bool>>(false);
    const auto show = [address, closed, &display, key = display.Key()] {
      QTD::LiveCall call(QTD::LiveObjects::Controllers(), key);
      // One that opens now would not be closed any more, and hold up the display's end.
      QMenu* menu = call && !display.closing ? QTD::LivingMenu(address) : nullptr;
      if (menu) QTD::ShowMenu(*menu, [closed] { *closed = true; });
    };
    RunMenuJob(show, display.closing, [&display, &closed] { return display.closing || *closed; });
  }

  // Late is better than never: this job is not dropped.
  static void Delete(QTDDisplay& display, QTD::ARGUMENTS* args) {
    const void* address = QTD::ArgumentView(args).GetPointer("qmenu");
    if (!address) return;
    const Clock::time_point deadline = Clock::now() + kPatience;
    const auto drop = [address] {
      if (QMenu* menu = QTD::LivingMenu(address)) QTD::DropMenu(*menu);
    };
    QTD::RunOnGuiThread(drop, [&] { return display.closing || Clock::now() >= deadline; });
  }
};

const QTDDisplay::MenuCommands::Row QTDDisplay::MenuCommands::kTable[3] = {
    {"cmd.system.menu.create", Create},
    {"cmd.system.menu.exec", Exec},
    {"cmd.system.menu.delete", Delete},
};

std::vector<std::string> QTDDisplay::MenuCommandNames() {
  return QTD::CommandNames(MenuCommands::kTable);
}

// The names are compared exactly.
uint32_t QTDDisplay::RunCommandSystemMenu(const char* name, QTD::ARGUMENTS* args) {
  const std::string command = name ? name : "";
  for (const MenuCommands::Row& row : MenuCommands::kTable) {
    if (command != row.name) continue;
    row.run(*this, args);
    return 1;
  }
  return 0;
}

// GUI thread. The display is about to go, and waits for its menus.
void QTDDisplay::CloseMenus() {
  if (!viewer) return;
  std::vector<QPointer<QMenu>> menus;  // what closes one may delete others
  for (QMenu* menu : viewer->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
    menus.emplace_back(menu);
  for (const QPointer<QMenu>& menu : menus) {
    if (menu && menu->isVisible()) menu->close();
  }
}

void QTDDisplay::slotMenuFitWindow() {
  RunEntry(Key(), [this] { SetFit(QTD::kFitWhole, true); });
}

void QTDDisplay::slotMenuFillWindow() {
  RunEntry(Key(), [this] { SetFit(QTD::kFitFill, true); });
}

void QTDDisplay::slotMenuZoom25() {
  RunEntry(Key(), [this] { SetMenuScale(4.0); });
}

void QTDDisplay::slotMenuZoom50() {
  RunEntry(Key(), [this] { SetMenuScale(2.0); });
}

void QTDDisplay::slotMenuZoom100() {
  RunEntry(Key(), [this] { SetMenuScale(1.0); });
}

void QTDDisplay::slotMenuZoom200() {
  RunEntry(Key(), [this] { SetMenuScale(0.5); });
}

void QTDDisplay::slotMenuZoomIn() {
  RunEntry(Key(), [this] { Zoom(true, -1.0, true); });
}

void QTDDisplay::slotMenuZoomOut() {
  RunEntry(Key(), [this] { Zoom(false, -1.0, true); });
}

void QTDDisplay::slotMenuCenterImage() {
  RunEntry(Key(), [this] { SetCenter(0.5, 0.5, true); });
}

// Where the mouse was last pressed.
void QTDDisplay::slotMenuCenterHere() {
  RunEntry(Key(), [this] {
    std::lock_guard<std::recursive_mutex> guard(viewLock);
    QTDScreen* screen = Screen();
    if (!HasPicture() || !screen) return;
    double y = Window()->Parameters().GetDouble("mouse.win.y");
    double x = Window()->Parameters().GetDouble("mouse.win.x");
    screen->transform(&x, &y, "win", "base", true, false);
    screen->setCenter(x, y);
    Window()->update();
  });
}

// Image pixels per device pixel. Straight to the screen: the fit mode and "display.view.fit" stay as they
// are.
void QTDDisplay::SetMenuScale(double scale) {
  std::lock_guard<std::recursive_mutex> guard(viewLock);
  QTDScreen* screen = Screen();
  if (!screen) return;
  screen->setScale(scale * Window()->devicePixelRatio());
  Window()->update();
}
