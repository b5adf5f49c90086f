// Parameters and short commands of a ZynDisplay, and its messages to a window of the host's.
#include <ZynWindowMessage.h>

#include "tests/guide/GuideTest.h"

namespace guide {
namespace {

// [window_message]
class CommandTarget : public QWidget {  // its winId() stands in "window.command"
 public:
  uint32_t what = 0;
  int x = 0, y = 0;

 protected:
  bool event(QEvent* event) override {
    if (event->type() != static_cast<QEvent::Type>(ZynWindowMessage::kMessage)) return QWidget::event(event);
    auto* message = static_cast<ZynWindowMessage*>(event);
    what = message->firstWord & 0xFFFF;  // above it: the low 16 bits of "system.signature"
    x = static_cast<int16_t>(message->secondWord & 0xFFFF);
    y = static_cast<int16_t>(message->secondWord >> 16 & 0xFFFF);
    message->result = what == ZynWindowMessage::kLeftPressed;  // this press is ours: no pan begins
    return true;
  }
};
// [/window_message]

class Display : public testing::Test {
 protected:
  Display() {
    widget.resize(420, 320);
    widget.show();
    display = ZynDisplay_CreateComponent();
    settings = ZynDisplay_GetComponent(display);
    image.bytes.assign(image.bytes.size(), 90);
    EXPECT_EQ(ZynDisplay_Initialize(display, &widget, nullptr, &image.record), 0u);
    EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
    EXPECT_TRUE(
        WaitFor([] { return DisplayWindow()->isExposed() && OnScreen(200, 150) == QColor(90, 90, 90); }));
  }
  ~Display() override { ZynDisplay_DeleteComponent(display); }
  // Where a place of the window lies in the image.
  std::pair<uint32_t, uint32_t> InImage(uint32_t x, uint32_t y) {
    EXPECT_EQ(display->TranslatePosition(&x, &y, 1), 0u);
    return {x, y};
  }

  QWidget widget;
  Picture image{ZYN_PIXEL_MONO8, 1200, 900};
  ZynDisplay* display = nullptr;
  ZynComponent* settings = nullptr;
};

TEST_F(Display, parameters_are_written_and_read) {
  ZynComponent* component = ZynDisplay_GetComponent(display);
  component->SetParameterInt("display.bg.color", 0x804020);
  int64_t fit = 2;
  component->SetParameterInt("display.fit", fit);
  component->GetParameterInt("display.fit", &fit);
  char text[64] = "";
  uint32_t size = sizeof text;
  component->GetParameterString("class", text, &size);
  EXPECT_EQ(fit, 2);
  EXPECT_STREQ(text, "ZynDisplayImpl");
  size = 3;
  EXPECT_EQ(component->GetParameterString("class", text, &size), 0x80FF0006u);
  EXPECT_EQ(component->GetParameterString("missing", text, &size), 0x80FF0005u);
  EXPECT_NE(Parameter(component, "system.signature"), "none");
  for (int step = 0; step < 12; ++step) component->ExecuteCommand("display.zoom.out");
  EXPECT_TRUE(WaitFor([] { return OnScreen(10, 10) == QColor(0x20, 0x40, 0x80); }))
      << qPrintable(OnScreen(10, 10).name());
}

TEST_F(Display, a_fit_that_is_refused_is_not_stored) {
  ZynDisplay* fresh = ZynDisplay_CreateComponent();
  ZynComponent* component = ZynDisplay_GetComponent(fresh);
  EXPECT_EQ(component->SetParameterInt("display.fit", 2), 1u);  // no window yet
  EXPECT_EQ(Parameter(component, "display.fit"), "none");
  EXPECT_EQ(component->SetParameter("objectID", ""), 0x80FF0007u);
  EXPECT_EQ(component->SetParameterString("objectID", ""), 0u);
  ZynDisplay_DeleteComponent(fresh);
}

TEST_F(Display, what_a_text_is_read_as_decides) {
  settings->SetParameterString("dump.x", "left");
  int64_t x = 0;
  bool readable = true;
  try {
    settings->GetParameterInt("dump.x", &x);
  } catch (const std::logic_error&) {  // std::invalid_argument or std::out_of_range
    readable = false;
  }
  EXPECT_FALSE(readable);
}

TEST_F(Display, short_commands) {
  // [short_commands]
  settings->SetParameterInt("display.fit", 1);  // the whole picture
  settings->ExecuteCommand("display.zoom.in");  // and one step closer

  settings->SetParameterString("text.text", "frame ${image.id:%u}");
  settings->SetParameterInt("text.pos.x", 20);
  settings->SetParameterInt("text.pos.y", 30);
  settings->SetParameterInt("text.clr", 0x00FFFF);  // yellow
  settings->SetParameterString("cs", "img");
  settings->SetParameterString("objectID", "");  // a new object; its name comes back here
  settings->ExecuteCommand("text.add");
  char id[64] = "";  // what stands in it is read as well
  uint32_t size = sizeof id;
  settings->GetParameterString("objectID", id, &size);  // 6 when the buffer is too small
  // [/short_commands]
  EXPECT_STRNE(id, "");
  settings->SetParameterString("text.font", "medium");
  settings->ExecuteCommand("text.del");
  EXPECT_EQ(Parameter(settings, "objectID"), id);
  EXPECT_EQ(settings->ExecuteCommand("text.del"), 0u);
  EXPECT_EQ(Parameter(settings, "objectID"), "");
  EXPECT_EQ(settings->ExecuteCommand("text.add"), 0u);
  EXPECT_NE(Parameter(settings, "objectID"), "");
  settings->SetParameterString("text.text", "");
  EXPECT_EQ(settings->ExecuteCommand("text.add"), 0u);  // refused, and told by the name alone
  EXPECT_EQ(Parameter(settings, "objectID"), "");

  for (const char* command : {"display.zoom.in", "display.zoom.out", "display.atcenter"})
    EXPECT_EQ(settings->ExecuteCommand(command), 0u) << command;
  EXPECT_EQ(settings->ExecuteCommand("no such command"), 0u);
  settings->SetParameterInt("display.fit", 3);  // one to one, about the middle
  settings->ExecuteCommand("display.atcenter");
  EXPECT_EQ(InImage(0, 0), (std::pair<uint32_t, uint32_t>(0, 0)));
  EXPECT_EQ(InImage(10, 20), (std::pair<uint32_t, uint32_t>(10, 20)));
}

TEST_F(Display, a_frame_is_drawn_around_a_region) {
  settings->SetParameterInt("display.fit", 3);
  settings->ExecuteCommand("display.atcenter");
  settings->SetParameterInt("dump.x", 100);  // image pixels
  settings->SetParameterInt("dump.y", 80);
  settings->SetParameterInt("dump.w", 120);
  settings->SetParameterInt("dump.h", 60);
  settings->SetParameterInt("dump.clr", 0xFF0000);  // blue
  const uint32_t shown = settings->ExecuteCommand("display.dump.on");
  EXPECT_EQ(shown, 0u);
  EXPECT_EQ(Parameter(settings, "dump.objectID"), "@dump");
  EXPECT_TRUE(WaitFor([] { return OnScreen(100, 110) == QColor(0, 0, 255); }));
  EXPECT_EQ(settings->ExecuteCommand("display.dump.off"), 0u);
  EXPECT_TRUE(WaitFor([] { return OnScreen(100, 110) == QColor(90, 90, 90); }));
  EXPECT_EQ(settings->ExecuteCommand("display.dump.off"), 0x80FF0001u);
}

TEST_F(Display, the_mouse_is_told_to_a_window_of_the_host) {
  CommandTarget target;
  settings->SetParameterInt("window.command", static_cast<int64_t>(target.winId()));
  Mouse(QEvent::MouseButtonPress, 30, 40, Qt::LeftButton);
  EXPECT_EQ(target.what, 0x4002u);
  EXPECT_EQ(target.x, 30);
  EXPECT_EQ(target.y, 40);
  Mouse(QEvent::MouseButtonRelease, 31, 41, Qt::LeftButton);
  EXPECT_EQ(target.what, 0x4003u);
  Mouse(QEvent::MouseButtonPress, 50, 60, Qt::RightButton);
  Mouse(QEvent::MouseButtonRelease, 50, 60, Qt::RightButton);
  EXPECT_TRUE(WaitFor([&] { return target.what == 0x4004; }));
  settings->SetParameterInt("window.command", 0);
}

TEST_F(Display, points_are_carried_between_window_and_image) {
  settings->SetParameterInt("display.fit", 3);
  settings->ExecuteCommand("display.atcenter");
  uint32_t x = 40, y = 25;
  display->TranslatePosition(&x, &y, 1);  // window to image
  display->TranslatePosition(&x, &y, 0);  // and back
  EXPECT_EQ(x, 40u);
  EXPECT_EQ(y, 25u);
}

}  // namespace
}  // namespace guide
