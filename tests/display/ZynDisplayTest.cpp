// The host's face: exported functions and the display component.
#include <QPointer>
#include <stdexcept>
#include <thread>
#include <utility>

#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

constexpr uint32_t kNullHandle = 0x80070007;

class Host : public testing::Test {
 protected:
  Host() {
    parent.resize(200, 150);
    parent.show();
    display = ZynDisplay_CreateComponent();
  }
  ~Host() override { ZynDisplay_DeleteComponent(display); }

  ZynDisplayImpl* Impl() { return static_cast<ZynDisplayImpl*>(display); }
  ZynComponent* Component() { return ZynDisplay_GetComponent(display); }
  std::string Parameter(const char* name) { return Impl()->Parameters().GetString(name, "absent"); }

  // Shows a picture, and answers the screen when it has the picture's size.
  QTDScreen* ShowOnScreen(const HostImage& picture) {
    EXPECT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &picture.record), 0u);
    QTDScreen* screen = Impl()->Controller()->Viewer()->Window()->Screen();
    ZynDisplay_DisplayVideo(display, &picture.record);
    const bool shown = WaitFor([&] { return screen->isReady() && screen->Picture().width > 0; });
    Settle(20);
    return shown ? screen : nullptr;
  }

  QWidget parent;
  HostImage image{ZYN_PIXEL_MONO8, 64, 48};
  ZynDisplay* display = nullptr;
};

TEST_F(Host, a_null_handle_is_answered_and_touches_nothing) {
  EXPECT_EQ(ZynDisplay_Initialize(nullptr, &parent, nullptr, &image.record), kNullHandle);
  EXPECT_EQ(ZynDisplay_DisplayVideo(nullptr, &image.record), kNullHandle);
  EXPECT_EQ(ZynDisplay_DisplayImage(nullptr, &image.record), kNullHandle);
  EXPECT_EQ(ZynDisplay_ConvertImage(nullptr, &image.record, &image.record), kNullHandle);
  EXPECT_EQ(ZynDisplay_GetComponent(nullptr), nullptr);
  ZynDisplay_DeleteComponent(nullptr);
  ZynDisplay::DeleteComponent(nullptr);
  ZynDisplayCPU::DeleteComponent(nullptr);
}

TEST_F(Host, a_deleted_display_is_answered_like_a_null_one) {
  ZynDisplay* gone = ZynDisplay_CreateComponent();
  ZynDisplay_DeleteComponent(gone);
  EXPECT_EQ(ZynDisplay_DisplayVideo(gone, &image.record), kNullHandle);
  EXPECT_EQ(ZynDisplay_GetComponent(gone), nullptr);
  ZynDisplay_DeleteComponent(gone);
  ZynDisplay::DeleteComponent(gone);
}

TEST_F(Host, shows_its_identity) {
  EXPECT_EQ(Parameter("class"), "ZynDisplayImpl");
  EXPECT_EQ(Parameter("system.signature"),
            QTD::ToText(static_cast<long long>(reinterpret_cast<intptr_t>(display))));
  EXPECT_FALSE(display->IsReserved());
  EXPECT_EQ(display->ReservedOne(), 0u);
  EXPECT_EQ(display->ReservedTwo(), 0u);
}

TEST_F(Host, initialises_with_a_widget_or_with_its_window_id) {
  EXPECT_EQ(ZynDisplay_Initialize(display, &parent, "", &image.record), 0u);
  EXPECT_EQ(Impl()->Controller()->Parameters().GetPointer("system.parentWidget"), &parent);
  EXPECT_EQ(ZynDisplay_Initialize(display, reinterpret_cast<void*>(parent.winId()), nullptr, &image.record),
            0u);
  EXPECT_EQ(Impl()->Controller()->Parameters().GetPointer("system.parentWidget"), &parent);
}

TEST_F(Host, only_the_exact_word_selects_the_other_variant) {
  for (const char* mode : {"OpenGL", "", "opengl ", "cpu"}) {
    ZynDisplay_Initialize(display, &parent, mode, &image.record);
    EXPECT_EQ(Impl()->Controller()->Parameters().GetString("system.opengl"), "0") << mode;
  }
  ZynDisplay_Initialize(display, &parent, "opengl", &image.record);
  EXPECT_EQ(Impl()->Controller()->Parameters().GetString("system.opengl"), "1");
  EXPECT_EQ(display->Initialize(&image.record, nullptr), 0u);
  EXPECT_EQ(Impl()->Controller()->Parameters().GetString("system.opengl"), "0");
}

TEST_F(Host, without_a_widget_a_new_display_answers_1) {
  EXPECT_EQ(display->Initialize(&image.record, nullptr), Composed(1));
}

TEST_F(Host, a_bad_format_answers_7) {
  EXPECT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, nullptr), Composed(7));
}

TEST_F(Host, shows_video_and_answers_for_images_that_do_not_fit) {
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  ZynImage noPixels = image.record;
  noPixels.imageData = nullptr;
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &noPixels), Composed(7));
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &small.record), Composed(8));
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, nullptr), 0u);
}

TEST_F(Host, offers_a_failing_image_twice) {
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  QTDDisplay* controller = Impl()->Controller();
  int calls = 0, failures = 0;
  // As if the GUI thread had processed the image before the call looks at the outcome.
  QObject::connect(controller, &QTDDisplay::signalImageReceived, [&] {
    if (++calls <= failures) controller->slotCheckIncomingBuffer();
  });
  ZynImage lying = image.record;
  lying.imageSize = 100;  // fails in processing, with 7

  failures = 2;
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &lying), Composed(7));
  EXPECT_EQ(calls, 2);

  // The second answer counts, with the bits of a failure.
  calls = 0;
  failures = 1;
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &lying), 0x80FF0000u);
  EXPECT_EQ(calls, 2);

  Settle();
  calls = 0;
  failures = 0;
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  EXPECT_EQ(calls, 1);
}

TEST_F(Host, display_image_is_not_provided) {
  EXPECT_EQ(ZynDisplay_DisplayImage(display, &image.record), Composed(3));
}

TEST_F(Host, converts_and_prepares_another_converter_when_the_format_changes) {
  HostImage input(ZYN_PIXEL_MONO8, 8, 4, 0, 33), rgb(ZYN_PIXEL_RGB8, 8, 4), grey(ZYN_PIXEL_MONO8, 8, 4);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &input.record, &rgb.record), Composed(8));
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &input.record), 0u);
  input.record.imageID = 5;
  input.record.timestamp = 123456789;
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &input.record, &rgb.record), 0u);
  EXPECT_EQ(rgb.pixels[0], 33);
  EXPECT_EQ(rgb.record.imageID, 5u);
  EXPECT_EQ(rgb.record.timestamp, 123456789u);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &input.record, &grey.record), 0u);
  EXPECT_EQ(grey.pixels[31], 33);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, nullptr, &rgb.record), Composed(7));
  // The converter does not fit no output, and none can be prepared for it.
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &input.record, nullptr), Composed(8));
}

TEST_F(Host, translation_without_a_screen_fails_and_leaves_the_position) {
  uint32_t x = 12, y = 34;
  EXPECT_EQ(display->TranslatePosition(&x, &y, 1), Composed(1));
  EXPECT_EQ(x, 12u);
  EXPECT_EQ(y, 34u);
  EXPECT_EQ(display->TranslatePosition(nullptr, nullptr, 0), Composed(1));
}

TEST_F(Host, positions_are_translated_both_ways_and_cut_to_integers) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  QTDScreen* screen = ShowOnScreen(large);
  ASSERT_NE(screen, nullptr);
  ASSERT_TRUE(Impl()->Controller()->SetScale(0.75, false));
  const QTD::RectD picture = screen->Picture();
  uint32_t x = 20, y = 31;
  EXPECT_EQ(display->TranslatePosition(&x, &y, 1), 0u);
  EXPECT_EQ(x, static_cast<uint32_t>((20 - picture.x) * 0.75 + 1e-6));
  EXPECT_EQ(y, static_cast<uint32_t>((31 - picture.y) * 0.75 + 1e-6));
  // 600.5 image pixels would be needed for a whole window pixel: the fraction is cut off, not rounded.
  x = 601;
  EXPECT_EQ(display->TranslatePosition(&x, nullptr, 0), 0u);
  EXPECT_EQ(x, static_cast<uint32_t>(static_cast<int>(601 / 0.75 + picture.x)));
  EXPECT_EQ(display->TranslatePosition(nullptr, nullptr, 1), 0u);
}

TEST_F(Host, a_position_too_far_for_an_integer_fails_and_stays) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  ASSERT_NE(ShowOnScreen(large), nullptr);
  ASSERT_TRUE(Impl()->Controller()->SetScale(4.0, false));
  uint32_t x = 2000000000, y = 3;
  EXPECT_EQ(display->TranslatePosition(&x, &y, 1), Composed(1));
  EXPECT_EQ(x, 2000000000u);
  EXPECT_EQ(y, 3u);
}

TEST_F(Host, zoom_and_centre_need_a_screen) {
  for (const char* name :
       {"display.zoom.in", "display.zoom.out", "display.atcenter", "display.dump.on", "display.dump.off"}) {
    EXPECT_EQ(Component()->ExecuteCommand(name), Composed(1)) << name;
  }
}

TEST_F(Host, zooms_and_centres_by_its_short_commands) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  QTDScreen* screen = ShowOnScreen(large);
  ASSERT_NE(screen, nullptr);
  ASSERT_TRUE(Impl()->Controller()->SetScale(1.0, false));
  EXPECT_EQ(Component()->ExecuteCommand("display.zoom.in"), 0u);
  EXPECT_EQ(screen->zoomPercent(), 125);
  EXPECT_EQ(Component()->ExecuteCommand("display.zoom.out"), 0u);
  EXPECT_EQ(screen->zoomPercent(), 100);
  // The position is 0, 0: as far as the picture's corner lets the view go.
  ASSERT_TRUE(Impl()->Controller()->SetCenter(0.5, 0.5, false));
  EXPECT_EQ(Component()->ExecuteCommand("display.atcenter"), 0u);
  EXPECT_NEAR(screen->Picture().x, 0, 1e-9);
  EXPECT_NEAR(screen->Picture().y, 0, 1e-9);
}

TEST_F(Host, dumps_a_rectangle_in_image_coordinates) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  ASSERT_NE(ShowOnScreen(large), nullptr);
  const std::pair<const char*, const char*> params[] = {
      {"dump.x", "10"}, {"dump.y", "20"}, {"dump.w", "30"}, {"dump.h", "40"}};
  for (const auto& [name, value] : params) Component()->SetParameterString(name, value);
  EXPECT_EQ(Component()->ExecuteCommand("display.dump.on"), 0u);
  EXPECT_EQ(Parameter("dump.objectID"), "@dump");
  QTD::PROPERTIES object;
  QTD::DrawObjects& objects = Impl()->Controller()->Viewer()->Window()->Objects();
  ASSERT_TRUE(objects.get("@dump", &object));
  const std::pair<const char*, const char*> expected[] = {
      {"x.cs", "10"}, {"y.cs", "20"},      {"w.cs", "30"},       {"h.cs", "40"},
      {"cs", "img"},  {"line.width", "2"}, {"line.clr", "50372"}};
  for (const auto& [name, value] : expected) EXPECT_EQ(object.GetString(name), value) << name;

  EXPECT_EQ(Component()->ExecuteCommand("display.dump.off"), 0u);
  EXPECT_FALSE(objects.get("@dump", &object));
  EXPECT_EQ(Component()->ExecuteCommand("display.dump.off"), Composed(1));

  Component()->SetParameterString("dump.clr", "7");
  Component()->SetParameterString("dump.objectID", "mine");
  EXPECT_EQ(Component()->ExecuteCommand("display.dump.on"), 0u);
  ASSERT_TRUE(objects.get("mine", &object));
  EXPECT_EQ(object.GetString("line.clr"), "7");
  Component()->SetParameterString("dump.w", "wide");
  EXPECT_THROW(Component()->ExecuteCommand("display.dump.on"), std::invalid_argument);
}

TEST_F(Host, the_fit_goes_to_the_view) {
  HostImage large(ZYN_PIXEL_MONO8, 1000, 800);
  QTDScreen* screen = ShowOnScreen(large);
  ASSERT_NE(screen, nullptr);
  EXPECT_EQ(Component()->SetParameterString("display.fit", "2"), 0u);
  EXPECT_EQ(Parameter("display.fit"), "2");
  EXPECT_EQ(screen->properties.GetInt("fit"), 2);
  EXPECT_EQ(Impl()->Controller()->Parameters().GetString("display.view.fit"), "2");
  EXPECT_THROW(Component()->SetParameterString("display.fit", "whole"), std::invalid_argument);
  EXPECT_EQ(Parameter("display.fit"), "2");
}

TEST_F(Host, adds_and_deletes_a_text) {
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  Component()->SetParameterString("text.text", "hello");
  Component()->SetParameterInt("text.pos.x", 3);
  Component()->SetParameterInt("text.pos.y", 4);
  Component()->SetParameterString("objectID", "greeting");
  EXPECT_EQ(Component()->ExecuteCommand("text.add"), 0u);
  EXPECT_EQ(Parameter("objectID"), "greeting");
  QTD::PROPERTIES object;
  ASSERT_TRUE(Impl()->Controller()->Viewer()->Window()->Objects().get("greeting", &object));
  EXPECT_EQ(object.GetString("text.font"), "default");
  EXPECT_EQ(Component()->ExecuteCommand("text.del"), 0u);
  EXPECT_EQ(Parameter("objectID"), "greeting");
  EXPECT_FALSE(Impl()->Controller()->Viewer()->Window()->Objects().get("greeting", &object));
  EXPECT_EQ(Component()->ExecuteCommand("text.del"), 0u);
  EXPECT_EQ(Parameter("objectID"), "");
}

TEST_F(Host, an_unknown_command_answers_0) {
  EXPECT_EQ(Component()->ExecuteCommand("something"), 0u);
  EXPECT_EQ(Component()->ExecuteCommand(nullptr), 0u);
}

TEST_F(Host, a_refused_fit_keeps_the_old_text) {
  EXPECT_EQ(Component()->SetParameterString("display.fit", "2"), 1u);
  EXPECT_EQ(Parameter("display.fit"), "absent");
}

TEST_F(Host, the_background_colour_goes_to_the_controller_and_back) {
  EXPECT_EQ(Component()->SetParameterInt("display.bg.color", 255), 0u);
  EXPECT_EQ(Parameter("display.bg.color"), "255");
  EXPECT_EQ(Impl()->Controller()->Parameters().GetString("display.view.bgcolor"), "255");
  EXPECT_THROW(Component()->SetParameterString("display.bg.color", "red"), std::invalid_argument);
}

TEST_F(Host, reading_the_background_colour_yields_what_was_last_stored) {
  Component()->SetParameterInt("display.bg.color", 255);
  Impl()->Controller()->SetParameterInt("display.view.bgcolor", 9);
  int64_t color = 0;
  EXPECT_EQ(Component()->GetParameterInt("display.bg.color", &color), 0u);
  EXPECT_EQ(color, 255);
}

TEST_F(Host, other_notifications_are_dropped_but_get_a_code) {
  QTD::ARGUMENTS args;
  EXPECT_EQ(Impl()->RunCommand("notification.view", &args), 0u);
  EXPECT_EQ(args.count("code"), 1u);
  QTD::ARGUMENTS untouched;
  EXPECT_EQ(Impl()->RunCommand("other", &untouched), 0u);
  EXPECT_TRUE(untouched.empty());
  EXPECT_EQ(Impl()->RunCommand("notification.mouse", nullptr), 0u);
}

TEST_F(Host, the_class_is_looked_at_before_a_deletion) {
  ZynDisplay* other = ZynDisplay::CreateComponent();
  static_cast<ZynDisplayImpl*>(other)->Parameters().Set("class", "Something");
  ZynDisplay::DeleteComponent(other);
  EXPECT_NE(ZynDisplay_GetComponent(other), nullptr);  // still alive
  static_cast<ZynDisplayImpl*>(other)->Parameters().Set("class", "zyndisplayIMPL");
  ZynDisplay::DeleteComponent(other);
  EXPECT_EQ(ZynDisplay_GetComponent(other), nullptr);
}

TEST_F(Host, the_plain_deletion_makes_no_test_of_the_class) {
  ZynDisplay* other = ZynDisplay_CreateComponent();
  static_cast<ZynDisplayImpl*>(other)->Parameters().Set("class", "Something");
  ZynDisplay_DeleteComponent(other);
  EXPECT_EQ(ZynDisplay_GetComponent(other), nullptr);
}

TEST_F(Host, a_controller_can_be_had_alone) {
  ZynDisplayProcessor* controller = ZynDisplayCPU::CreateComponent(&parent);
  const QPointer<QTDDisplay> object = static_cast<QTDDisplay*>(controller);
  EXPECT_EQ(object->Parameters().GetPointer("system.parentWidget"), &parent);
  EXPECT_EQ(object->Parameters().GetString("system.opengl"), "0");
  EXPECT_EQ(controller->Initialize(&image.record), 0u);
  EXPECT_EQ(controller->DisplayVideo(&image.record), 0u);
  object->Parameters().Set("class", "Something");
  ZynDisplayCPU::DeleteComponent(controller);
  EXPECT_FALSE(object.isNull());
  object->Parameters().Set("class", "QTDDisplay");
  ZynDisplayCPU::DeleteComponent(controller);
  EXPECT_TRUE(object.isNull());
}

TEST_F(Host, a_display_is_no_controller_to_delete) {
  ZynDisplayCPU::DeleteComponent(reinterpret_cast<ZynDisplayProcessor*>(display));
  EXPECT_NE(ZynDisplay_GetComponent(display), nullptr);
}

TEST_F(Host, a_display_may_be_deleted_from_inside_its_notification) {
  ZynDisplay* other = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(other, &parent, nullptr, &image.record), 0u);
  const QPointer<QTDDisplay> controller = static_cast<ZynDisplayImpl*>(other)->Controller();
  Receiver receiver;
  receiver.OnMessage([&](const std::string& name) {
    if (name == "notification.image") ZynDisplay_DeleteComponent(other);
  });
  controller->AddNotification(&receiver);
  controller->SetParameterInt("image.notification.flags.set", 1);
  ZynDisplay_DisplayVideo(other, &image.record);
  EXPECT_TRUE(WaitFor([&] { return controller.isNull(); }));
  EXPECT_EQ(ZynDisplay_DisplayVideo(other, &image.record), kNullHandle);
}

TEST_F(Host, a_display_deleted_off_the_gui_thread_goes_a_moment_later) {
  ZynDisplay* other = ZynDisplay_CreateComponent();
  const QPointer<QTDDisplay> controller = static_cast<ZynDisplayImpl*>(other)->Controller();
  std::thread host([other] { ZynDisplay_DeleteComponent(other); });
  host.join();
  EXPECT_EQ(ZynDisplay_GetComponent(other), nullptr);
  EXPECT_TRUE(WaitFor([&] { return controller.isNull(); }));
}

}  // namespace display_test
