// The life of a display: create, initialise, stream, convert, delete.
#include <memory>

#include "tests/guide/GuideTest.h"

namespace guide {

class Life : public testing::Test {
 protected:
  Life() {
    widget.resize(420, 320);
    widget.show();
  }
  ~Life() override { ZynDisplay_DeleteComponent(display); }
  void Start(const ZynImage& format) {
    display = ZynDisplay_CreateComponent();
    ASSERT_EQ(ZynDisplay_Initialize(display, &widget, nullptr, &format), 0u);
  }

  QWidget widget;
  ZynDisplay* display = nullptr;
};

TEST_F(Life, a_display_is_made_and_fed_from_a_thread) {
  // [create]
  ZynImage format{};  // depth and channels follow from the pixel code
  format.pixelType = ZYN_PIXEL_MONO12;
  format.width = 640;
  format.height = 480;
  format.linePitch = 640 * 2;
  format.imageSize = format.linePitch * format.height;

  display = ZynDisplay_CreateComponent();
  uint32_t code = ZynDisplay_Initialize(display, &widget, "opengl", &format);
  if (code != 0) code = ZynDisplay_Initialize(display, &widget, nullptr, &format);  // no OpenGL here
  // [/create]
  ASSERT_EQ(code, 0u);

  std::atomic<uint32_t> refused{0};
  std::atomic<bool> ended{false};
  // [stream]
  std::thread camera([&] {
    std::vector<uint16_t> pixels(640 * 480);
    ZynImage frame = format;
    frame.imageData = reinterpret_cast<uint8_t*>(pixels.data());
    for (frame.imageID = 1; frame.imageID <= 50; ++frame.imageID) {
      std::fill(pixels.begin(), pixels.end(), static_cast<uint16_t>(frame.imageID * 64));
      if (ZynDisplay_DisplayVideo(display, &frame) != 0) ++refused;  // copied: the buffer is free again
    }
    ended = true;
  });
  // [/stream]
  EXPECT_TRUE(WaitFor([&] { return ended.load(); }));
  camera.join();
  EXPECT_EQ(refused, 0u);
  // The newest frame stays: 3200 of 4095 are 200 of 255.
  EXPECT_TRUE(WaitFor([] { return std::abs(OnScreen(200, 150).red() - 200) < 2; }))
      << OnScreen(200, 150).red();
}

TEST_F(Life, another_format_takes_another_initialisation) {
  Picture first(ZYN_PIXEL_MONO8, 640, 480), second(ZYN_PIXEL_RGB8, 320, 240);
  Start(first.record);
  const ZynImage& frame = second.record;
  uint32_t code = 1;
  if ((ZynDisplay_DisplayVideo(display, &frame) & 0xFFFF) == ZYN_ERR_NOT_READY) {
    ZynDisplay_Initialize(display, &widget, nullptr, &frame);  // the camera has been set to another size
    code = ZynDisplay_DisplayVideo(display, &frame);
  }
  EXPECT_EQ(code, 0u);
}

TEST_F(Life, images_are_refused_for_what_is_wrong_with_them) {
  Picture image(ZYN_PIXEL_MONO8, 640, 480), larger(ZYN_PIXEL_MONO8, 800, 600);
  Start(image.record);
  ZynImage empty = image.record;
  empty.imageData = nullptr;
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &empty), 0x80FF0007u);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &larger.record), 0u);  // dropped without a word
  EXPECT_EQ(ZynDisplay_DisplayImage(display, &image.record), 0x80FF0003u);
  ZynImage nothing = image.record;
  nothing.width = 0;
  EXPECT_EQ(ZynDisplay_Initialize(display, &widget, nullptr, &nothing), 0x80FF0007u);
  EXPECT_EQ(ZynDisplay_Initialize(display, &widget, nullptr, nullptr), 0x80FF0007u);
  EXPECT_EQ(ZynDisplay_Initialize(nullptr, &widget, nullptr, &image.record), 0x80070007u);
}

// What "notification.image" says of each image that reached the chain.
class Results : public ZynDisplayCommand {
 public:
  std::vector<std::string> all;

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    if (std::string(name) == "notification.image") all.push_back((*args)["result"]);
    return 0;
  }
};

TEST_F(GuideTest, a_frame_counts_as_the_prepared_format) {
  Picture grey(ZYN_PIXEL_MONO8, 64, 48), deep(ZYN_PIXEL_MONO12, 64, 48);
  std::fill(grey.bytes.begin(), grey.bytes.end(), static_cast<uint8_t>(200));
  EXPECT_EQ(display->DisplayVideo(&grey.record), 0u);  // dropped: nothing is prepared
  ASSERT_EQ(display->Initialize(&grey.record), 0u);
  Results results;
  Command(display, "cmd.system.notification.add",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
  settings->SetParameterInt("image.notification.flags.set", 1);

  ZynImage mosaic = grey.record;
  mosaic.pixelType = ZYN_PIXEL_BAYERGB8;
  mosaic.origin = 1;
  EXPECT_EQ(display->DisplayVideo(&mosaic), 0u);
  ASSERT_TRUE(WaitFor([&] { return results.all.size() == 1; }));
  EXPECT_EQ(results.all[0], "0");
  EXPECT_EQ(display->GetProcessor()->Out()->imageData[0], 200);

  EXPECT_EQ(display->DisplayVideo(&deep.record), 0u);  // dropped: more bytes
  EXPECT_FALSE(WaitFor([&] { return results.all.size() > 1; }, 200));

  ZynImage narrow = grey.record;
  narrow.linePitch = 32;
  EXPECT_EQ(display->DisplayVideo(&narrow), 0u);
  ASSERT_TRUE(WaitFor([&] { return results.all.size() == 2; }));
  EXPECT_EQ(results.all[1], "7");

  // The failure stands until something succeeds.
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.add", {{"text.text", "text"}}), 0u);
  EXPECT_EQ(display->DisplayVideo(nullptr), 0u);
  EXPECT_EQ(Command(display, "cmd.display.overlay.text.add", {{"text.text", "text"}}), 1u);
  Command(display, "cmd.system.notification.del",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
}

TEST_F(GuideTest, a_frame_of_no_size_or_of_other_bytes_is_told_by_code_or_notification) {
  Picture grey(ZYN_PIXEL_MONO8, 64, 48);
  ZynImage flat = grey.record;
  flat.height = 0;
  EXPECT_EQ(display->DisplayVideo(&flat), 0x80FF0007u);
  ASSERT_EQ(display->Initialize(&grey.record), 0u);
  EXPECT_EQ(display->DisplayVideo(&flat), 0x80FF0008u);
  flat.imageSize *= 2;
  EXPECT_EQ(display->DisplayVideo(&flat), 0x80FF0007u);

  Results results;
  Command(display, "cmd.system.notification.add",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
  settings->SetParameterInt("image.notification.flags.set", 1);
  ZynImage nothing = grey.record, chunked = grey.record;
  nothing.imageSize = 0;
  chunked.imageSize += 64;
  grey.bytes.resize(chunked.imageSize);
  chunked.imageData = grey.bytes.data();
  nothing.imageData = grey.bytes.data();
  for (const ZynImage* untrue : {&nothing, &chunked}) {
    results.all.clear();
    EXPECT_EQ(display->DisplayVideo(untrue), 0u);
    ASSERT_TRUE(WaitFor([&] { return !results.all.empty(); }));
    EXPECT_EQ(results.all[0], "7");
  }
  Command(display, "cmd.system.notification.del",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
}

// A refused image stops the one that waits: it is dropped without a notification.
TEST_F(GuideTest, a_failure_drops_the_frame_that_waits) {
  Picture grey(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&grey.record), 0u);
  Results results;
  Command(display, "cmd.system.notification.add",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
  settings->SetParameterInt("image.notification.flags.set", 1);
  ZynImage empty = grey.record;
  empty.imageData = nullptr;
  EXPECT_EQ(display->DisplayVideo(&grey.record), 0u);
  EXPECT_EQ(display->DisplayVideo(&empty), 0x80FF0007u);
  EXPECT_FALSE(WaitFor([&] { return !results.all.empty(); }, 200));
  EXPECT_EQ(display->DisplayVideo(&grey.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return results.all.size() == 1; }));
  Command(display, "cmd.system.notification.del",
          {{"proc", PointerText(static_cast<ZynDisplayCommand*>(&results))}});
}

TEST_F(Life, an_image_is_converted_without_being_shown) {
  Picture source(ZYN_PIXEL_MONO12, 64, 48);
  source.FillWords(3200);
  Start(source.record);
  const ZynImage& input = source.record;
  // [convert]
  std::vector<uint8_t> bytes(64 * 48 * 3);
  ZynImage output{};
  output.pixelType = ZYN_PIXEL_RGB8;
  output.width = 64;
  output.height = 48;
  output.linePitch = 64 * 3;
  output.imageSize = output.linePitch * output.height;
  output.imageData = bytes.data();
  const uint32_t code = ZynDisplay_ConvertImage(display, &input, &output);
  // [/convert]
  ASSERT_EQ(code, 0u);
  EXPECT_EQ(bytes[0], 3200 >> 4);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end(), bytes[0]), 64 * 48 * 3);
}

TEST_F(Life, a_conversion_goes_to_as_many_channels_or_more_and_to_no_greater_depth) {
  Picture colour(ZYN_PIXEL_RGB12, 64, 48), deep(ZYN_PIXEL_BGR12, 64, 48), bytes(ZYN_PIXEL_BGR8, 64, 48);
  Picture grey(ZYN_PIXEL_MONO8, 64, 48), small(ZYN_PIXEL_RGB8, 32, 24);
  Start(colour.record);
  bytes.record.origin = 1;
  colour.record.imageID = 5;
  colour.record.timestamp = 77;
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &colour.record, &deep.record), 0u);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &colour.record, &bytes.record), 0u);
  EXPECT_EQ(bytes.record.imageID, 5u);
  EXPECT_EQ(bytes.record.timestamp, 77u);
  EXPECT_EQ(bytes.record.origin, 0u);
  grey.record.imageID = 4;
  grey.bytes.assign(grey.bytes.size(), 7);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &colour.record, &grey.record), 0x80FF0001u);
  EXPECT_EQ(grey.record.imageID, 4u);  // after a failure all is as it was
  EXPECT_EQ(static_cast<size_t>(std::count(grey.bytes.begin(), grey.bytes.end(), 7)), grey.bytes.size());
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &bytes.record, &deep.record),
            0x80FF0007u);  // not the prepared one
  EXPECT_NE(ZynDisplay_ConvertImage(display, &colour.record, &small.record), 0u);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, nullptr, &bytes.record), 0x80FF0007u);
}

TEST_F(Life, the_picture_goes_and_the_display) {
  Picture image(ZYN_PIXEL_MONO8, 640, 480);
  Start(image.record);
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  // [delete]
  ZynDisplay_DisplayVideo(display, nullptr);  // takes the picture away; the display stays
  ZynDisplay_DeleteComponent(display);        // calls of other threads that are under way end first
  const uint32_t code = ZynDisplay_DisplayVideo(display, &image.record);  // 0x80070007: not alive
  // [/delete]
  EXPECT_EQ(code, 0x80070007u);
  EXPECT_EQ(ZynDisplay_GetComponent(display), nullptr);
}

TEST_F(Life, a_widget_that_goes_first_closes_the_display) {
  Picture image(ZYN_PIXEL_MONO8, 64, 48);
  auto parent = std::make_unique<QWidget>();
  parent->show();
  display = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(display, parent.get(), nullptr, &image.record), 0u);
  parent.reset();
  EXPECT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);  // dropped
  Picture output(ZYN_PIXEL_RGB8, 64, 48);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &image.record, &output.record), 0x80FF0008u);
  EXPECT_EQ(display->Initialize(&image.record, nullptr), 0x80FF0001u);
  EXPECT_EQ(ZynDisplay_Initialize(display, &widget, nullptr, &image.record), 0u);
  EXPECT_EQ(ZynDisplay_ConvertImage(display, &image.record, &output.record), 0u);
}

TEST_F(Life, a_controller_tells_of_a_format_that_it_cannot_show_when_it_is_not_silent) {
  Picture image(ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_8, 64, 48);
  ZynDisplayProcessor* controller = ZynDisplayCPU::CreateComponent(&widget);  // or ZynDisplayQGL
  controller->GetComponent()->SetParameterBool("system.silent", false);
  const uint32_t code = controller->Initialize(&image.record);  // 0x80FF0001: no chain for this format
  EXPECT_EQ(controller->DisplayVideo(&image.record), 0u);       // dropped
  image.record.pixelType = 0xDEADBEEF;
  EXPECT_EQ(controller->Initialize(&image.record), 0x80FF0001u);
  image.record.pixelType = ZYN_PIXEL_MONO8;
  image.record.width = image.record.height = 60000;
  EXPECT_EQ(controller->Initialize(&image.record), 0x80FF0001u);
  ZynDisplayCPU::DeleteComponent(controller);
  EXPECT_EQ(code, 0x80FF0001u);
}

}  // namespace guide
