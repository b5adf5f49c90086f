// The viewer's drawings over the picture, by the commands that the display gets.
#include "apps/zynview/view/Overlays.h"

#include <gtest/gtest.h>

#include <set>

#include "apps/zynview/view/Commands.h"
#include "zynview/RecordingDisplay.h"

using zynview::Overlays;

namespace {

constexpr const char kAddRect[] = "cmd.display.overlay.rect.add", kAddText[] = "cmd.display.overlay.text.add",
                     kDelete[] = "cmd.display.overlay.del";

QRect RectOf(const QTD::ARGUMENTS& arguments) {
  const auto number = [&arguments](const char* name) { return std::stoi(arguments.at(name)); };
  return {number("rect.x"), number("rect.y"), number("rect.w"), number("rect.h")};
}

const ZynImage kFormat = zynview::MakeRecord(ZYN_PIXEL_MONO8, 200, 100, 0, nullptr);

}  // namespace

TEST(Overlays, frame_the_middle_of_the_picture_with_a_cross_in_image_coordinates) {
  RecordingDisplay display;
  Overlays overlays(&display);
  overlays.Start(kFormat, QStringLiteral("camera"), QRect());
  EXPECT_TRUE(overlays.Show());
  const std::vector<QTD::ARGUMENTS> rects = display.Of(kAddRect);
  ASSERT_EQ(rects.size(), 3u);
  EXPECT_EQ(RectOf(rects[0]), QRect(50, 25, 100, 50));
  // Arms of one pixel, which cross in the pixel at the middle.
  const QRect across = RectOf(rects[1]), down = RectOf(rects[2]);
  EXPECT_EQ(across.height(), 1);
  EXPECT_EQ(down.width(), 1);
  EXPECT_EQ(across.intersected(down), QRect(100, 50, 1, 1));
  EXPECT_EQ(across.center(), QPoint(100, 50));
  EXPECT_EQ(down.center(), QPoint(100, 50));
  ASSERT_EQ(display.Of(kAddText).size(), 1u);
  std::set<std::string> ids;
  for (const char* command : {kAddRect, kAddText}) {
    for (const QTD::ARGUMENTS& arguments : display.Of(command)) {
      EXPECT_EQ(arguments.at("cs"), "img");
      ids.insert(arguments.at("objectID"));
    }
  }
  EXPECT_EQ(ids.size(), 4u);
}

TEST(Overlays, label_is_a_template_that_names_source_and_frame) {
  RecordingDisplay display;
  std::string source;
  display.answer = [&source](const std::string& name, QTD::ARGUMENTS* args) {
    if (name == "cmd.display.overlay.params") {
      const auto* variables = static_cast<const QTD::ARGUMENTS*>(zynview::PointerFrom(args->at("vars")));
      source = variables->at("viewer.source");
    }
    return 1u;
  };
  Overlays overlays(&display);
  overlays.Start(kFormat, QStringLiteral("camera 7"), QRect());
  EXPECT_EQ(source, "camera 7");
  EXPECT_TRUE(overlays.Show());
  const std::string text = display.Of(kAddText).at(0).at("text.text");
  EXPECT_NE(text.find("${viewer.source}"), std::string::npos);
  EXPECT_NE(text.find("${image.id"), std::string::npos);
}

TEST(Overlays, go_and_come_with_all_their_parts) {
  RecordingDisplay display;
  Overlays overlays(&display);
  overlays.Start(kFormat, QString(), QRect());
  EXPECT_TRUE(overlays.Toggle());
  EXPECT_TRUE(overlays.AreShown());
  std::set<std::string> added, deleted;
  for (const char* command : {kAddRect, kAddText}) {
    for (const QTD::ARGUMENTS& arguments : display.Of(command)) added.insert(arguments.at("objectID"));
  }
  display.commands.clear();
  EXPECT_TRUE(overlays.Toggle());
  EXPECT_FALSE(overlays.AreShown());
  for (const QTD::ARGUMENTS& arguments : display.Of(kDelete)) deleted.insert(arguments.at("objectID"));
  EXPECT_EQ(added, deleted);
  EXPECT_TRUE(display.Of(kAddRect).empty());
}

TEST(Overlays, leave_nothing_behind_when_the_display_refuses_one) {
  RecordingDisplay display;
  display.answer = [](const std::string& name, QTD::ARGUMENTS*) { return name == kAddText ? 0u : 1u; };
  Overlays overlays(&display);
  overlays.Start(kFormat, QString(), QRect());
  display.commands.clear();
  EXPECT_FALSE(overlays.Show());
  EXPECT_FALSE(overlays.AreShown());
  EXPECT_EQ(display.Of(kDelete).size(), 4u);
}

TEST(Overlays, keep_the_region_on_the_picture) {
  RecordingDisplay display;
  Overlays overlays(&display);
  overlays.Start(kFormat, QString(), QRect(150, 80, 1000, 1000));
  EXPECT_EQ(overlays.Region(), QRect(150, 80, 50, 20));
  overlays.Start(kFormat, QString(), QRect(200, 100, 10, 10));
  EXPECT_EQ(overlays.Region(), QRect(50, 25, 100, 50));
  overlays.Start(zynview::MakeRecord(ZYN_PIXEL_MONO8, 1, 1, 0, nullptr), QString(), QRect());
  EXPECT_EQ(overlays.Region(), QRect(0, 0, 1, 1));
}
