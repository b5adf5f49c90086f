// The focus of displays in windows of their own.
#include <QApplication>
#include <QElapsedTimer>
#include <array>
#include <memory>

#include "RealHarness.h"

namespace {

using windowtest::OnX;
using windowtest::Picture;
using windowtest::WaitFor;

class FocusCounter : public QObject {
 public:
  FocusCounter() { QCoreApplication::instance()->installEventFilter(this); }
  int count = 0;

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) ++count;
    return false;
  }
};

void LetPass(int milliseconds) {
  WaitFor([] { return false; }, milliseconds);
}

}  // namespace

TEST(Focus, of_several_displays_comes_to_rest_on_the_screen) {
  if (!OnX()) GTEST_SKIP() << "needs an X server";
  std::array<std::unique_ptr<QWidget>, 4> parents;
  std::array<QTDViewer*, 4> viewers{};
  for (std::size_t i = 0; i < parents.size(); ++i) {
    parents[i] = std::make_unique<QWidget>();
    parents[i]->setGeometry(300 * static_cast<int>(i % 2), 300 * static_cast<int>(i / 2), 280, 240);
    parents[i]->show();
    viewers[i] = new QTDViewer(parents[i].get(), false);
  }
  FocusCounter counter;
  LetPass(500);
  counter.count = 0;
  LetPass(300);
  EXPECT_EQ(0, counter.count);
  // The display in the window that is activated next has the keyboard.
  parents[1]->activateWindow();
  EXPECT_TRUE(WaitFor([&] { return QGuiApplication::focusWindow() == viewers[1]->Window(); }));
  counter.count = 0;
  LetPass(300);
  EXPECT_EQ(0, counter.count);
}
