// What the overlay stage draws.
#include "cpu/stages/CPUIPImageOverlay.h"

#include <cstring>

#include "QTD/screen/SurfaceText.h"
#include "tests/chain/TraceCapture.h"
#include "tests/cpu/OverlayFixture.h"
#include "tests/cpu/TextModel.h"

namespace {

constexpr uint32_t kWidth = 120, kHeight = 50;

const std::vector<uint32_t> kFormats = {
    ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO10, ZYN_PIXEL_MONO12, ZYN_PIXEL_MONO14, ZYN_PIXEL_MONO16,
    ZYN_PIXEL_RGB8,  ZYN_PIXEL_BGR8,   ZYN_PIXEL_RGB10,  ZYN_PIXEL_BGR10,  ZYN_PIXEL_RGB12,
    ZYN_PIXEL_BGR12, ZYN_PIXEL_RGB14,  ZYN_PIXEL_BGR14,  ZYN_PIXEL_RGB16,  ZYN_PIXEL_BGR16};

// A picture of noise with lines wider than their pixels, and what it becomes.
struct Drawn {
  explicit Drawn(uint32_t code, bool bottomUp = false, uint32_t width = kWidth, uint32_t height = kHeight)
      : picture(code, width, height, Pitch(code, width)), expected(code, width, height, Pitch(code, width)) {
    for (StagePicture* one : {&picture, &expected}) {
      one->record.origin = bottomUp ? 1 : 0;
      HoldDepth(*one);
    }
  }
  static uint32_t Pitch(uint32_t code, uint32_t width) { return width * QTD::BitsPerPixel(code) / 8 + 10; }
  void Expect(const Coverage& coverage, const double (&color)[3], bool bottomUp) const {
    BlendModel(expected, coverage, color, bottomUp);
  }
  bool AsExpected() const { return picture.Copy() == expected.Copy(); }

  StagePicture picture, expected;
};

TEST_F(OverlayTest, an_empty_store_leaves_the_picture_bit_for_bit) {
  for (const uint32_t code : kFormats) {
    const StagePicture picture(code, 31, 7);
    Prepare(picture);
    const auto before = picture.Copy();
    ASSERT_EQ(Run(picture.record), 0u);
    EXPECT_EQ(stage.Out(), &picture.record);
    EXPECT_EQ(picture.Copy(), before);
  }
}

TEST_F(OverlayTest, the_model_of_the_text_is_legible_itself) {
  const Coverage coverage = Coverage(kWidth, kHeight).Add("Text 0815", 5, 5);
  EXPECT_GT(coverage.Count(1), 150);
  EXPECT_GT(coverage.Count(200), 40);
  EXPECT_LT(coverage.Count(1), 1500);
}

TEST_F(OverlayTest, text_stands_upright_in_every_format_at_every_edge) {
  const struct {
    const char* where;
    int x, y;
  } kPlaces[] = {{"inside", 20, 15},
                 {"left", -9, 15},
                 {"right", static_cast<int>(kWidth) - 13, 15},
                 {"top", 20, 0},
                 {"bottom", 20, static_cast<int>(kHeight) - 8},
                 {"corner", static_cast<int>(kWidth) - 9, static_cast<int>(kHeight) - 6},
                 {"other corner", -5, 0},
                 {"outside", static_cast<int>(kWidth), 3},
                 {"far outside", 2000000000, 2000000000}};
  for (const uint32_t code : kFormats) {
    for (const bool bottomUp : {false, true}) {
      for (const auto& place : kPlaces) {
        const Drawn drawn(code, bottomUp);
        Prepare(drawn.picture);
        QTD::PROPERTIES orange;
        orange.Set("text.clr", "33023");  // 0x0080FF: red 255, green 128
        ASSERT_NE(stage.AddText("Text 0815", place.x, place.y, &orange), "");
        ASSERT_EQ(Run(drawn.picture.record), 0u);
        drawn.Expect(Coverage(kWidth, kHeight).Add("Text 0815", place.x, place.y), {1.0, 0.5, 0.0}, bottomUp);
        ASSERT_TRUE(drawn.AsExpected()) << std::hex << code << " " << place.where << " " << bottomUp;
        EXPECT_EQ(stage.Out(), &drawn.picture.record);
      }
    }
  }
}

// Where a placed text stands: whole blocks of 8 by 2, 4 off the sides and 2 off top and bottom.
TEST_F(OverlayTest, a_negative_y_makes_x_a_placement_code) {
  const std::string text = "Placed";
  const QRect bounds = QFontMetrics(DefaultFont()).boundingRect(QString::fromStdString(text));
  const int w = (bounds.width() + 7 + 4) / 8 * 8, h = (bounds.height() + 1 + 1) / 2 * 2;
  const int width = static_cast<int>(kWidth), height = static_cast<int>(kHeight);
  const struct {
    int code, x, y;
  } kRows[] = {{1, 4, 2},
               {2, 4, height - 2 - h},
               {3, width - w - 4, height - 2 - h},
               {4, width - w - 4, 2},
               {5, (width - w) / 2, (height - h) / 2 - h},
               {7, (width - w) / 2, height - 2 - h},
               {9, (width - w) / 2, 2}};
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_BGR16}) {
    for (const bool bottomUp : {false, true}) {
      for (const auto& row : kRows) {
        const Drawn drawn(code, bottomUp);
        Prepare(drawn.picture);
        const std::string id = AddWhite(text.c_str(), row.code, -1);
        EXPECT_EQ(stage.ValueOf(id, "placement"), std::to_string(row.code));
        ASSERT_EQ(Run(drawn.picture.record), 0u);
        drawn.Expect(Coverage(width, height).Add(text, row.x, row.y), kWhite, bottomUp);
        ASSERT_TRUE(drawn.AsExpected()) << std::hex << code << " " << row.code << " " << bottomUp;
      }
    }
  }
}

// An image stage's own image has no mark, whatever the header says that both were prepared with.
TEST_F(OverlayTest, the_mark_of_the_passing_image_alone_counts) {
  const Drawn drawn(ZYN_PIXEL_MONO12, true);
  CPUIPImage image(nullptr);
  ASSERT_EQ(image.Init(&drawn.picture.record, nullptr), 0u);
  ASSERT_EQ(image.GetImageInfo(false)->origin, 1u);
  ASSERT_EQ(stage.Init(image.GetImageInfo(false), nullptr), 0u);
  AddWhite("Text", 20, 4);
  ASSERT_EQ(image.ProcessImage(&drawn.picture.record, nullptr, nullptr), 0u);
  ASSERT_EQ(image.Out()->origin, 0u);
  ASSERT_EQ(Run(*image.Out()), 0u);
  drawn.Expect(Coverage(kWidth, kHeight).Add("Text", 20, 4), kWhite, false);
  EXPECT_EQ(PixelsOf(*image.Out()), PixelsOf(drawn.expected.record));
}

TEST_F(OverlayTest, each_image_leaves_a_line_in_the_trace) {
  const StagePicture picture(ZYN_PIXEL_RGB8, kWidth, kHeight);
  Prepare(picture);
  chain_test::TraceCapture trace;
  ASSERT_EQ(Run(picture.record), 0u);
  EXPECT_EQ(trace.lines, std::vector<std::string>{"CPUIPImageOverlay::ProcessImage()"});
}

TEST_F(OverlayTest, a_picture_of_another_size_than_prepared_takes_its_part) {
  Prepare(StagePicture(ZYN_PIXEL_RGB12, kWidth, kHeight));
  AddWhite("Text", 20, 10);
  for (const auto& [width, height] : {std::pair<uint32_t, uint32_t>{30, 20}, {1, 1}, {300, 90}}) {
    const Drawn drawn(ZYN_PIXEL_RGB12, false, width, height);
    ASSERT_EQ(Run(drawn.picture.record), 0u);
    drawn.Expect(Coverage(static_cast<int>(width), static_cast<int>(height)).Add("Text", 20, 10), kWhite,
                 false);
    EXPECT_TRUE(drawn.AsExpected()) << width;
  }
}

TEST_F(OverlayTest, templates_see_the_image_at_hand_and_forget_it) {
  Drawn drawn(ZYN_PIXEL_MONO8);
  drawn.picture.record.imageID = 42;
  Prepare(drawn.picture);
  AddWhite("${image.id:%u} ${image.dims}", 3, 7);
  const std::string placed = AddWhite("${image.id}", 1, -1);
  stage.store.update(placed, nullptr);
  ASSERT_EQ(Run(drawn.picture.record), 0u);
  const QRect bounds = QFontMetrics(DefaultFont()).boundingRect(QStringLiteral("00000042"));
  EXPECT_EQ(stage.ValueOf(placed, "w"), std::to_string((bounds.width() + 7 + 4) / 8 * 8));
  EXPECT_EQ(stage.store.Parser()->variables.GetPointer("image"), nullptr);
  EXPECT_FALSE(stage.surface->Text()->isValid());  // and the surface has given the picture back
  stage.DeleteObject(placed);
  Drawn again(ZYN_PIXEL_MONO8);
  again.picture.record.imageID = 43;
  ASSERT_EQ(Run(again.picture.record), 0u);
  again.Expect(Coverage(kWidth, kHeight).Add("43 120x50", 3, 7), kWhite, false);
  EXPECT_TRUE(again.AsExpected());
}

TEST_F(OverlayTest, rectangles_are_kept_and_never_painted) {
  const Drawn drawn(ZYN_PIXEL_RGB8);
  Prepare(drawn.picture);
  const std::string id = stage.AddRect(3, 4, 50, 20, nullptr);
  ASSERT_NE(id, "");
  ASSERT_EQ(Run(drawn.picture.record), 0u);
  EXPECT_TRUE(drawn.AsExpected());
  EXPECT_EQ(stage.ValueOf(id, "type"), "rect");
  EXPECT_EQ(stage.ValueOf(id, "x") + stage.ValueOf(id, "y"), "34");
  EXPECT_EQ(stage.ValueOf(id, "w") + stage.ValueOf(id, "h"), "5020");
}

TEST_F(OverlayTest, formats_without_plain_samples_pass_as_they_are) {
  for (const uint32_t code : {ZYN_PIXEL_RGBA8, ZYN_PIXEL_BGRA8, ZYN_PIXEL_YUV422_8, ZYN_PIXEL_YUV444_8,
                              ZYN_PIXEL_RGB_8_BRIO_PACKED}) {
    const StagePicture picture(code, kWidth, kHeight);
    Prepare(picture);
    AddWhite("Text", 3, 3);
    const auto before = picture.Copy();
    ASSERT_EQ(Run(picture.record), 0u);
    EXPECT_EQ(stage.Out(), &picture.record);
    EXPECT_EQ(picture.Copy(), before) << std::hex << code;
  }
}

TEST_F(OverlayTest, records_that_lie_are_not_drawn_on) {
  struct Row {
    const char* what;
    void (*change)(ZynImage&);
  };
  const Row kRows[] = {{"size", [](ZynImage& r) { r.imageSize -= r.linePitch; }},
                       {"no size", [](ZynImage& r) { r.imageSize = 0; }},
                       {"pitch", [](ZynImage& r) { r.linePitch = 0xFFFFFFFF; }},
                       {"no pitch", [](ZynImage& r) { r.linePitch = 0; }},
                       {"width", [](ZynImage& r) { r.width = 0xFFFFFFFF; }},
                       {"no width", [](ZynImage& r) { r.width = 0; }},
                       {"height", [](ZynImage& r) { r.height = 0xFFFFFFFF; }},
                       {"packed", [](ZynImage& r) { r.pixelType = ZYN_PIXEL_MONO12P; }},
                       {"unknown", [](ZynImage& r) { r.pixelType = 0; }}};
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB16}) {
    for (const Row& row : kRows) {
      for (const uint32_t origin : {0u, 1u}) {
        const StagePicture picture(code, kWidth, kHeight);
        Prepare(picture);
        AddWhite("Text", 3, 3);
        AddWhite("Text", 3, -1);
        ZynImage lie = picture.record;
        lie.origin = origin;
        row.change(lie);
        const auto before = picture.Copy();
        EXPECT_EQ(Run(lie), 0u);
        EXPECT_EQ(picture.Copy(), before) << row.what;
      }
    }
  }
}

TEST_F(OverlayTest, missing_pictures_and_preparation_are_refused) {
  const StagePicture picture(ZYN_PIXEL_MONO8, kWidth, kHeight);
  EXPECT_EQ(Run(picture.record), kNotReady);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kNotReady);  // comes first
  Prepare(picture);
  ASSERT_EQ(Run(picture.record), 0u);
  EXPECT_EQ(stage.ProcessImage(nullptr, nullptr, nullptr), kBadArgument);
  EXPECT_EQ(stage.Out(), nullptr);
  ZynImage empty = picture.record;
  empty.imageData = nullptr;
  EXPECT_EQ(Run(empty), kBadArgument);
  stage.Release();
  EXPECT_EQ(Run(picture.record), kNotReady);
}

TEST_F(OverlayTest, a_disabled_stage_draws_all_the_same) {
  const Drawn drawn(ZYN_PIXEL_MONO8);
  Prepare(drawn.picture);
  AddWhite("Text", 3, 3);
  EXPECT_FALSE(stage.Enable(false));
  ASSERT_EQ(Run(drawn.picture.record), 0u);
  drawn.Expect(Coverage(kWidth, kHeight).Add("Text", 3, 3), kWhite, false);
  EXPECT_TRUE(drawn.AsExpected());
}

TEST_F(OverlayTest, refuses_empty_headers_and_formats_that_it_cannot_draw_on) {
  EXPECT_EQ(stage.Init(nullptr, nullptr), kBadArgument);
  ZynImage header = Header(ZYN_PIXEL_RGB8);
  header.width = 0;
  EXPECT_EQ(stage.Init(&header, nullptr), kBadArgument);
  header = Header(ZYN_PIXEL_RGB8);
  header.height = 0;
  EXPECT_EQ(stage.Init(&header, nullptr), kBadArgument);
  for (const uint32_t code : {ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_BAYERRG8,
                              ZYN_PIXEL_BAYERGB12P, ZYN_PIXEL_YUV422_8_UYVY, 0x04080131u}) {
    header = Header(code);
    EXPECT_EQ(stage.Init(&header, nullptr), kFormat) << std::hex << code;
    EXPECT_EQ(stage.surface, nullptr);
  }
  header = Header(ZYN_PIXEL_RGB8);
  header.pixelType = 0x021801FF;
  EXPECT_EQ(stage.Init(&header, nullptr), kNoMemory);
  header = Header(ZYN_PIXEL_RGB8);
  header.height = 0xFFFFFFFF;
  EXPECT_EQ(stage.Init(&header, nullptr), kNoMemory);
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
}

TEST_F(OverlayTest, one_header_describes_source_and_result) {
  ZynImage header = Header(ZYN_PIXEL_BGR12, 70, 30);
  stage.SetParameterBool("image.flip.vert", 1);  // means nothing in place
  ASSERT_EQ(stage.Init(&header, nullptr), 0u);
  EXPECT_TRUE(stage.IsReady());
  ASSERT_TRUE(stage.GetImageInfo(true));
  EXPECT_EQ(stage.GetImageInfo(true), stage.GetImageInfo(false));
  EXPECT_EQ(stage.GetImageInfo(true)->origin, 0u);
  EXPECT_EQ(stage.GetImageInfo(true)->pixelType, ZYN_PIXEL_BGR12);
  EXPECT_EQ(stage.GetImageInfo(true)->height, 30u);
  EXPECT_EQ(stage.surface->size.width, 70);
  EXPECT_EQ(stage.surface->size.height, 30);
  header.origin = 1;
  ASSERT_EQ(stage.Init(&header, nullptr), 0u);
  EXPECT_EQ(stage.GetImageInfo(true)->origin, 1u);
  ASSERT_EQ(stage.Init(stage.GetImageInfo(true), nullptr), 0u);  // its own record, which goes meanwhile
  EXPECT_EQ(stage.GetImageInfo(true)->width, 70u);
}

TEST_F(OverlayTest, release_and_init_start_with_an_empty_store) {
  const Drawn drawn(ZYN_PIXEL_MONO8);
  Prepare(drawn.picture);
  const std::string id = AddWhite("Text", 3, 3);
  AddWhite("Text", 5, -1);
  stage.Release();
  EXPECT_FALSE(stage.DeleteObject(id));
  EXPECT_EQ(stage.surface, nullptr);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_FALSE(stage.IsReady());
  AddWhite("Text", 5, -1);  // no surface to measure it on
  EXPECT_EQ(stage.store.count(), 1);
  Prepare(drawn.picture);
  EXPECT_EQ(stage.store.count(), 0);
  ASSERT_EQ(Run(drawn.picture.record), 0u);
  EXPECT_TRUE(drawn.AsExpected());
}

}  // namespace
