#include "cpu/screen/MEMSurface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "QTD/frame/Text.h"
#include "QTD/screen/SurfaceText.h"
#include "ZynPixelFormat.h"

namespace {

class MEMSurfaceTest : public testing::Test {
 protected:
  MEMSurfaceTest() : pixels(100 * 40, 9) {
    record.pixelType = ZYN_PIXEL_MONO8;
    record.bitDepth = 8;
    record.width = record.linePitch = 100;
    record.height = 40;
    record.imageSize = 4000;
    record.imageData = pixels.data();
    list.Set("image", QTD::ToText(static_cast<const void*>(&record)));
  }

  bool untouched() const {
    return std::all_of(pixels.begin(), pixels.end(), [](uint8_t pixel) { return pixel == 9; });
  }

  std::vector<uint8_t> pixels;
  ZynImage record{};
  QTD::PROPERTIES list;
  MEMSurface surface;
  const ColorValue white{0xFFFFFF};
};

}  // namespace

TEST_F(MEMSurfaceTest, is_valid_from_init_to_done) {
  EXPECT_FALSE(surface.isValid());
  EXPECT_TRUE(surface.init(nullptr));
  EXPECT_TRUE(surface.isValid());
  EXPECT_TRUE(surface.init(&list));
  EXPECT_TRUE(surface.isValid());
  EXPECT_TRUE(surface.done());
  EXPECT_FALSE(surface.isValid());
  EXPECT_TRUE(surface.done());
}

TEST_F(MEMSurfaceTest, begin_needs_a_valid_surface_and_a_list) {
  EXPECT_FALSE(surface.begin(&list));
  ASSERT_TRUE(surface.init(nullptr));
  EXPECT_FALSE(surface.begin(nullptr));
  EXPECT_FALSE(surface.Text()->isValid());
  EXPECT_TRUE(surface.begin(&list));
  EXPECT_TRUE(surface.Text()->isValid());
  surface.end(nullptr, true);
  EXPECT_FALSE(surface.Text()->isValid());
}

TEST_F(MEMSurfaceTest, stamps_text_between_begin_and_end_only) {
  ASSERT_TRUE(surface.init(nullptr));
  surface.text("text", 2, 2, "", &white);
  EXPECT_TRUE(untouched());
  ASSERT_TRUE(surface.begin(&list));
  surface.end(nullptr, false);
  surface.text("text", 2, 2, "", &white);
  EXPECT_TRUE(untouched());
  ASSERT_TRUE(surface.begin(&list));
  surface.text("text", 2, 2, "", &white);
  EXPECT_FALSE(untouched());
}

TEST_F(MEMSurfaceTest, begin_without_an_image_leaves_text_without_a_target) {
  ASSERT_TRUE(surface.init(nullptr));
  for (const char* pointer : {"", "0", "(nil)", "nonsense"}) {
    list.Set("image", pointer);
    surface.begin(&list);
    EXPECT_FALSE(surface.Text()->isValid()) << pointer;
    surface.text("text", 2, 2, "", &white);
    surface.end(nullptr, false);
  }
}

TEST_F(MEMSurfaceTest, draws_nothing_but_text) {
  ASSERT_TRUE(surface.init(nullptr));
  ASSERT_TRUE(surface.begin(&list));
  const QTD::RectD rect{0, 0, 50, 20};
  surface.rect(5, 5, 30, 20, &white, 3, 0);
  surface.line(0, 0, 50, 30, &white, 3, 0);
  surface.polyline({{0, 0}, {50, 30}}, &white, 3, 0);
  surface.fill(-1, -1, -1, -1, &white);
  surface.fill(-1, -1, -1, -1, nullptr);
  surface.image(&record, &rect, &rect);
  surface.flush(nullptr);
  EXPECT_TRUE(untouched());
}

TEST_F(MEMSurfaceTest, end_without_init_and_done_within_a_pass_are_harmless) {
  surface.end(nullptr, true);
  ASSERT_TRUE(surface.init(nullptr));
  ASSERT_TRUE(surface.begin(&list));
  EXPECT_TRUE(surface.done());
  surface.text("text", 2, 2, "", &white);
  surface.end(nullptr, true);
  EXPECT_TRUE(untouched());
}

TEST_F(MEMSurfaceTest, describes_itself_as_the_base_does) {
  surface.resize(100, 40);
  EXPECT_EQ(surface.describe("mem"), "mem (size=100;40; area=0.000000;0.000000-0.000000;0.000000)");
  EXPECT_EQ(surface.describe(""), "(size=100;40; area=0.000000;0.000000-0.000000;0.000000)");
}
