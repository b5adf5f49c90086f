// Event filters of a host on the scroll bars, which close or delete the window when a bar is enabled or
// disabled.
#include "Harness.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;
using windowtest::ViewerTest;

struct Event {
  const char* name;
  void (*send)(QTDWindow& window, QWidget& widget);
};

// Each makes the picture fit, so that the bars are disabled.
const Event kEvents[] = {
    {"key", [](QTDWindow& window, QWidget&) { window.key(Qt::Key_0); }},
    {"wheel", [](QTDWindow& window, QWidget&) { window.wheel(-120); }},
    {"resize", [](QTDWindow& window, QWidget&) { window.resize(1000, 800); }},
    {"resize_event",
     [](QTDWindow& window, QWidget&) {
       QResizeEvent event(QSize(1000, 800), window.size());
       QCoreApplication::sendEvent(&window, &event);
     }},
    {"screen",
     [](QTDWindow& window, QWidget&) {
       window.Screen()->setScale(20);  // nobody is told
       Q_EMIT window.screenChanged(window.QWindow::screen());
     }},
    {"painting",
     [](QTDWindow& window, QWidget&) {
       window.Screen()->setScale(20);
       window.render();
     }},
    {"view", [](QTDWindow& window, QWidget&) { window.Screen()->setFit(1, true); }},
    {"picture",
     [](QTDWindow& window, QWidget&) {
       window.setImage(nullptr, false);
       window.update();
     }},
    {"widget", [](QTDWindow&, QWidget& widget) { widget.resize(1100, 900); }},
};

// Runs code of the host's once.
class Filter : public QObject {
 public:
  explicit Filter(std::function<void()> hostCode) : code(std::move(hostCode)) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::EnabledChange && code) std::exchange(code, nullptr)();
    return QObject::eventFilter(watched, event);
  }

 private:
  std::function<void()> code;
};

class BarFilters : public ViewerTest, public testing::WithParamInterface<Event> {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    Show(picture);
    ASSERT_TRUE(Bar(Qt::Horizontal)->isEnabled());
    ASSERT_TRUE(Bar(Qt::Vertical)->isEnabled());
  }
  // The filter's code runs when the event has been handled.
  void Send(std::function<void()> code) {
    bool called = false;
    Filter filter([&] {
      called = true;
      EXPECT_FALSE(inside) << "the window is at work";
      code();
    });
    Bar(Qt::Horizontal)->installEventFilter(&filter);
    inside = true;
    GetParam().send(*window, *widget);
    inside = false;
    EXPECT_TRUE(windowtest::WaitFor([&] { return called; }));
    Settle();
  }

  bool inside = false;
  const Picture picture{440, 330};  // at 100 per cent larger than the window, at 75 smaller
};

}  // namespace

TEST_P(BarFilters, may_close_the_window) {
  Send([this] { window->close(); });
  ASSERT_TRUE(window);
  EXPECT_FALSE(window->isOpen());
  EXPECT_TRUE(window->open());
  EXPECT_TRUE(window->isOpen());
}

TEST_P(BarFilters, may_delete_the_window) {
  Send([this] { delete window.data(); });
  EXPECT_TRUE(viewer && !viewer->Window());
}

INSTANTIATE_TEST_SUITE_P(Events, BarFilters, testing::ValuesIn(kEvents),
                         [](const testing::TestParamInfo<Event>& event) { return event.param.name; });
