// Keys over a picture.
#pragma once

#include <QKeyEvent>

#include "MouseHarness.h"

namespace windowtest {

// Beyond `Press` and the like of the mouse: a key told to the window's own handler.
class KeysTest : public MouseTest {
 protected:
  // How many repaints were posted.
  int Key(int code, bool handled = true) {
    Settle();
    UpdateCounter counter(window);
    EXPECT_EQ(handled, window->key(code)) << code;
    Settle();
    return counter.count;
  }
  void KeyEvent(int code) {
    QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &event);
  }
  int FitMode() { return window->Screen()->properties.GetInt("fit"); }
};

// All keys of the view.
constexpr int kViewKeys[] = {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_0,  Qt::Key_1,     Qt::Key_2,
                             Qt::Key_C,    Qt::Key_Left,  Qt::Key_Up, Qt::Key_Right, Qt::Key_Down};

}  // namespace windowtest
