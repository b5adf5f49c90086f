// A window whose cursor and modifier keys the test sets, for the rubber band.
#pragma once

#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <cmath>

#include "Harness.h"
#include "QTD/window/QTDZoom.h"
#include "tests/support/Xdotool.h"

QT_BEGIN_NAMESPACE
// What Qt's own test library calls to make a key event that counts as one of the window system.
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text, bool repeated,
                                    ushort count);
QT_END_NAMESPACE

namespace windowtest {

// Shift and Ctrl are held as they are here from now on, for the events that come and for the keyboard when it
// is asked. The event goes to a window of its own.
inline void HoldModifiers(Qt::KeyboardModifiers modifiers) {
  if (OnX() && QGuiApplication::queryKeyboardModifiers() != modifiers) {
    const auto verb = [modifiers](Qt::KeyboardModifier key) {
      return modifiers.testFlag(key) ? QStringLiteral("keydown") : QStringLiteral("keyup");
    };
    ASSERT_EQ(0, Xdotool({verb(Qt::ShiftModifier), QStringLiteral("Shift_L"), verb(Qt::ControlModifier),
                          QStringLiteral("Control_L")}));
    Settle();
  }
  QWindow other;
  qt_handleKeyEvent(&other, QEvent::KeyRelease, Qt::Key_unknown, modifiers, QString(), false, 1);
  ASSERT_EQ(modifiers, QGuiApplication::keyboardModifiers());
  ASSERT_TRUE(WaitFor([&] { return QGuiApplication::queryKeyboardModifiers() == modifiers; }));
}

class CursorWindow : public QTDWindow {
 public:
  using QTDWindow::event;
  using QTDWindow::grabbed;
  using QTDWindow::kIdle;
  using QTDWindow::kZoomRectangle;
  using QTDWindow::mouseMode;
  using QTDWindow::QTDWindow;
  using QTDWindow::rightPressed;

  QPoint cursorPos(bool global) override {
    QPoint position = at;
    if (!global) mapFromGlobal(position);
    return position;
  }

  // Qt's geometry of it is empty from now on. A window of the system always has a pixel, so that one goes.
  void MakeEmpty() {
    destroy();
    setGeometry(30, 20, 0, 0);
    ASSERT_TRUE(QWindow::geometry().isEmpty());
  }

  QPoint at;  // the cursor, global
};

// A window of 400 by 300 in a widget that is not at the screen's corner; a picture of 800 by 600, one to one:
// its corner lies at (-200, -150).
class ZoomTest : public testing::Test {
 protected:
  void SetUp() override {
    parent.setGeometry(30, 20, 400, 300);
    ASSERT_TRUE(window.open());
    window.setGeometry(30, 20, 400, 300);
    window.resize(400, 300);
    window.setImage(picture.Record(), false);
    messenger.AddReceiver(&host);
    window.setMessenger(&messenger);
    HoldModifiers(Qt::NoModifier);
    Settle();
    ASSERT_TRUE(Shows(1, -200, -150));
  }
  void TearDown() override {
    HoldModifiers(Qt::NoModifier);
    window.setMessenger(nullptr);
    window.setImage(nullptr, false);
    messenger.RemoveReceiver(&host);
  }

  QTDZoom& Zoom() { return *window.Zoom(); }
  QPoint Global(int x, int y) { return parent.mapToGlobal(QPoint(x, y)); }
  void Cursor(int x, int y) { window.at = Global(x, y); }

  // The mouse in window pixels, as the handlers are told.
  void Press(int x, int y) {
    Cursor(x, y);
    window.mouseDown(x, y, false, false);
  }
  bool Move(int x, int y) {
    Cursor(x, y);
    return window.mouseMove(x, y, false);
  }
  void Release(int x, int y) {
    Cursor(x, y);
    window.mouseUp(x, y, false, false);
  }
  void Drag(int x, int y, int toX, int toY) {
    Press(x, y);
    Move(toX, toY);
    Move(toX, toY);
  }

  bool Shows(double scale, double x, double y) {
    const QTD::RectD view = window.Screen()->Picture();
    return std::abs(window.Screen()->Scale() - scale) < 1e-6 && std::abs(view.x - x) < 1e-6 &&
           std::abs(view.y - y) < 1e-6;
  }
  // The band among the overlays, in window pixels; none is empty.
  std::vector<int> Band() {
    QTD::PROPERTIES object;
    if (!window.Objects().get(Zoom().ObjectID(), &object)) return {};
    return {object.GetInt("x"), object.GetInt("y"), object.GetInt("w"), object.GetInt("h")};
  }
  Qt::CursorShape Shape() const { return window.cursor().shape(); }

  const Picture picture{800, 600};
  QWidget parent;
  CursorWindow window{&parent, false};
  Host host;
  QTD::Messenger messenger;
};

// The selection zoom as the window drives it.
class ZoomRectangleTest : public ZoomTest {
 protected:
  int FitMode() { return window.Screen()->properties.GetInt("fit"); }
  void LoseFocus() {
    QFocusEvent event(QEvent::FocusOut);
    window.event(&event);
  }
  void Key(int code) {
    QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
    window.event(&event);
  }
  void Flags(const char* flags) {
    QTD::PROPERTIES list;
    list.Set("flags", flags);
    window.Execute("cmd.notification.flags.set", &list);
  }
};

// With its protected side open.
class OpenZoom : public QTDZoom {
 public:
  using QTDZoom::fromCenter;
  using QTDZoom::lastMode;
  using QTDZoom::lastTick;
  using QTDZoom::mode;
  using QTDZoom::name;
  using QTDZoom::objectID;
  using QTDZoom::QTDZoom;
  using QTDZoom::rect;
  using QTDZoom::start;
  using QTDZoom::timer;
};

// A rubber band of the test's own over that window.
class QTDZoomTest : public ZoomTest {
 protected:
  // The band that `trackTo` gives back.
  std::vector<int> Tracked() {
    QTD::RectI band;
    zoom.trackTo(&band);
    return {band.x, band.y, band.width, band.height};
  }
  bool Begin(int x, int y, bool fromCenter = false) {
    const QPoint press = Global(x, y);
    return zoom.begin(&window, &press, fromCenter);
  }
  std::vector<int> OnScreen(int x, int y, int w, int h) {
    const QPoint corner = Global(x, y);
    return {corner.x(), corner.y(), w, h};
  }
  std::vector<int> Drawn() {
    QTD::PROPERTIES object;
    if (!window.Objects().get(zoom.ObjectID(), &object)) return {};
    return {object.GetInt("x"), object.GetInt("y"), object.GetInt("w"), object.GetInt("h")};
  }

  OpenZoom zoom{&window};
};

}  // namespace windowtest
