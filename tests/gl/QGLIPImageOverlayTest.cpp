// The overlay stage on the card.
#include "gl/stages/QGLIPImageOverlay.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "StageFixture.h"

namespace {

constexpr uint32_t kWidth = 120, kHeight = 60;

class OpenOverlay : public QGLIPImageOverlay {
 public:
  using QGLIPImageOverlay::lastError;
  using QGLIPImageOverlay::QGLIPImageOverlay;
  using QGLIPImageOverlay::ready;
  using QGLIPImageOverlay::store;
};

class QGLIPImageOverlayTest : public StageFixture {
 protected:
  void SetUp() override {
    StageFixture::SetUp();
    if (HasFatalFailure()) return;
    ASSERT_EQ(Init(stage, picture), 0u);
    source = std::make_unique<OnCard>(&display, picture);
  }
  void TearDown() override {
    source.reset();
    stage.Release();
    StageFixture::TearDown();
  }
  std::string AddWhite(const char* text, int x, int y) {
    QTD::PROPERTIES style;
    style.Set("text.clr", "16777215");
    return stage.AddText(text, x, y, &style);
  }

  // Where the result differs from the source: a rectangle in lines from the top, and the changed pixels of
  // each of those lines. The texture's line 0 is the picture's last.
  struct Ink {
    int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
    std::vector<int> perLine = std::vector<int>(kHeight, 0);
    int count = 0;
  };
  Ink InkOf(const Samples& result) {
    Ink ink;
    for (uint32_t line = 0; line < kHeight; ++line) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        if (Pixel(result, kWidth, x, line) == Pixel(samples, kWidth, x, line)) continue;
        const int y = static_cast<int>(kHeight - 1 - line);
        ink.left = std::min(ink.left, static_cast<int>(x));
        ink.right = std::max(ink.right, static_cast<int>(x));
        ink.top = std::min(ink.top, y);
        ink.bottom = std::max(ink.bottom, y);
        ++ink.perLine[static_cast<size_t>(y)];
        ++ink.count;
      }
    }
    return ink;
  }
  Ink Drawn() {
    EXPECT_EQ(Run(stage, source->record()), 0u);
    return InkOf(Texels(stage));
  }

  const Samples samples = Samples(kWidth * kHeight * 3, 40);
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, samples);
  OpenOverlay stage{&display};
  std::unique_ptr<OnCard> source;
};

TEST_F(QGLIPImageOverlayTest, an_empty_store_copies_and_no_more) {
  const Samples values = Scattered(kWidth * kHeight * 3, 255);
  const Record busy = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, values);
  OnCard card(&display, busy);
  ASSERT_EQ(Run(stage, card.record()), 0u);
  EXPECT_EQ(Texels(stage), values);
  EXPECT_NE(stage.Out(), card.record());
  ASSERT_EQ(Run(stage, busy.get()), 0u);  // from memory
  EXPECT_EQ(Texels(stage), values);
}

TEST_F(QGLIPImageOverlayTest, draws_text_upright_where_it_was_put) {
  ASSERT_NE(AddWhite("L", 20, 10), "");
  const Ink ink = Drawn();
  ASSERT_GT(ink.count, 5);
  EXPECT_GE(ink.left, 20);
  EXPECT_LT(ink.right, 40);
  EXPECT_GE(ink.top, 10);
  EXPECT_LT(ink.bottom, 40);
  // The foot of the letter is wider than its head.
  EXPECT_GT(ink.perLine[static_cast<size_t>(ink.bottom)], ink.perLine[static_cast<size_t>(ink.top)]);
}

TEST_F(QGLIPImageOverlayTest, draws_on_pictures_that_come_in_memory_at_the_same_place) {
  AddWhite("L", 20, 10);
  ASSERT_GT(Drawn().count, 5);
  const Samples onCard = Texels(stage);
  // Other stages leave other projections behind.
  const Record small = MakeRecord(4, 4, ZYN_PIXEL_RGB8);
  OnCard first(&display, small);
  QGLIPImage other(&display);
  ASSERT_EQ(Init(other, small), 0u);
  ASSERT_EQ(Run(other, first.record()), 0u);
  ASSERT_EQ(Run(stage, picture.get()), 0u);
  EXPECT_EQ(Texels(stage), onCard);
}

TEST_F(QGLIPImageOverlayTest, draws_rectangles_in_their_colour) {
  QTD::PROPERTIES style;
  style.Set("line.clr", "255");
  style.Set("line.width", "1");
  ASSERT_NE(stage.AddRect(30, 12, 40, 20, &style), "");
  const Ink ink = Drawn();
  ASSERT_GE(ink.count, 2 * (40 + 20) - 8);
  EXPECT_NEAR(ink.left, 30, 1);
  EXPECT_NEAR(ink.right, 70, 1);
  EXPECT_NEAR(ink.top, 12, 1);
  EXPECT_NEAR(ink.bottom, 32, 1);
  const Samples result = Texels(stage);
  for (uint32_t line = 0; line < kHeight; ++line) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      const auto pixel = Pixel(result, kWidth, x, line);
      const bool red = pixel == std::vector<uint32_t>{255, 0, 0};
      ASSERT_TRUE(red || pixel == Pixel(samples, kWidth, x, line)) << x << "," << line;
    }
  }
}

TEST_F(QGLIPImageOverlayTest, the_picture_is_turned_here_where_no_stage_before_did_it) {
  const Samples values = Scattered(kWidth * kHeight * 3, 255);
  const Record busy = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, values);
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, busy), 0u);
  OnCard card(&display, busy);
  ASSERT_EQ(Run(stage, card.record()), 0u);
  EXPECT_EQ(Texels(stage), Turned(values, kHeight));
  // Its information does not tell of that: one record for both.
  EXPECT_EQ(stage.GetImageInfo(true), stage.GetImageInfo(false));
  EXPECT_EQ(stage.GetImageInfo(true)->origin, 0u);
}

TEST_F(QGLIPImageOverlayTest, a_factor_acts_in_the_copy) {
  stage.SetParameterDouble("image.color.coef", 2);
  ASSERT_EQ(Init(stage, picture), 0u);
  ASSERT_EQ(Run(stage, source->record()), 0u);
  EXPECT_EQ(Texels(stage), Samples(samples.size(), 80));
}

TEST_F(QGLIPImageOverlayTest, a_factor_of_0_counts_as_not_set) {
  // 12 bits lie in the low bits of a word, and stay there.
  const Samples values = Scattered(kWidth * kHeight * 3, 4095);
  const Record deep = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB12, values);
  OnCard card(&display, deep);
  for (const char* zero : {"0", "0.0", "0.000000"}) {
    SCOPED_TRACE(zero);
    stage.Parameters().Set("image.color.coef", zero);
    ASSERT_EQ(Init(stage, deep), 0u);
    ASSERT_EQ(Run(stage, card.record()), 0u);
    EXPECT_EQ(Texels(stage), values);
  }
}

TEST_F(QGLIPImageOverlayTest, disabled_it_draws_nothing) {
  AddWhite("text", 5, 5);
  stage.Enable(false);
  EXPECT_EQ(Drawn().count, 0);
  stage.Enable(true);
  EXPECT_GT(Drawn().count, 0);
}

TEST_F(QGLIPImageOverlayTest, templates_see_the_picture_that_passes) {
  AddWhite("${image.id:%u}", 5, 5);
  const auto picture_with = [&](uint64_t id) {
    picture->imageID = id;
    EXPECT_EQ(source->stage.ProcessImage(picture.get(), nullptr, nullptr), 0u);
    EXPECT_EQ(Run(stage, source->record()), 0u);
    return Texels(stage);
  };
  const Samples one = picture_with(1), many = picture_with(888888), again = picture_with(1);
  EXPECT_EQ(one, again);
  EXPECT_GT(InkOf(many).count, 3 * InkOf(one).count);
}

TEST_F(QGLIPImageOverlayTest, a_negative_y_makes_x_a_placement_code) {
  const std::string id = AddWhite("placed", 1, -1);
  ASSERT_NE(id, "");
  QTD::PROPERTIES object;
  ASSERT_TRUE(stage.store.get(id.c_str(), &object));
  EXPECT_EQ(object.GetString("placement"), "1");
  EXPECT_GT(Drawn().count, 0);
}

TEST_F(QGLIPImageOverlayTest, deep_pictures_get_text_in_full_white) {
  const uint32_t values = 1000;
  const Record deep = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB12, Samples(samples.size(), values));
  ASSERT_EQ(Init(stage, deep), 0u);
  EXPECT_EQ(stage.Parameters().GetString("color.depth"), "12");
  AddWhite("deep", 5, 5);
  OnCard card(&display, deep);
  ASSERT_EQ(Run(stage, card.record()), 0u);
  const Samples result = Texels(stage);
  EXPECT_EQ(*std::max_element(result.begin(), result.end()), 65535u);
}

TEST_F(QGLIPImageOverlayTest, refuses_pixels_that_are_no_colours) {
  const GLNames before = names();
  OpenOverlay other(&display);
  for (const uint32_t code : {ZYN_PIXEL_BAYERRG8, ZYN_PIXEL_BAYERRG12P, ZYN_PIXEL_MONO10P,
                              ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_YUV422_8_UYVY}) {
    EXPECT_EQ(Init(other, MakeRecord(8, 4, code)), Composed(3)) << std::hex << code;
    EXPECT_EQ(other.GetImageInfo(true), nullptr);
  }
  const Record nameless = MakeRecord(8, 4, ZYN_PIXEL_MONO8);
  nameless->pixelType = 0;
  EXPECT_EQ(Init(other, nameless), Composed(3));
  for (const auto& [width, height] : {std::pair{0u, 4u}, {8u, 0u}}) {
    const Record empty = MakeRecord(8, 4, ZYN_PIXEL_MONO8);
    empty->width = width;
    empty->height = height;
    EXPECT_EQ(Init(other, empty), Composed(7));
  }
  EXPECT_EQ(names(), before);
}

TEST_F(QGLIPImageOverlayTest, keeps_the_lack_of_a_surface_to_itself) {
  OpenOverlay lonely(nullptr);
  EXPECT_EQ(Init(lonely, picture), 0u);
  EXPECT_EQ(lonely.lastError, 8u);
  EXPECT_FALSE(lonely.ready);
  EXPECT_EQ(Run(lonely, source->record()), Composed(8));
  EXPECT_EQ(lonely.AddText("text", 1, 1, nullptr), "");
}

TEST_F(QGLIPImageOverlayTest, texts_need_letters_and_a_prepared_stage) {
  EXPECT_EQ(AddWhite("", 1, 1), "");
  EXPECT_EQ(AddWhite(nullptr, 1, 1), "");
  EXPECT_EQ(stage.store.count(), 0);
  AddWhite("gone", 1, 1);
  stage.Release();
  EXPECT_EQ(stage.store.count(), 0);
  EXPECT_EQ(AddWhite("text", 1, 1), "");
}

TEST_F(QGLIPImageOverlayTest, places_that_are_no_numbers_make_no_object) {
  QTD::ARGUMENTS text{{"text.text", "one"}, {"text.pos.x", "left"}}, rect{{"rect.w", "99999999999"}};
  EXPECT_EQ(stage.RunCommand("cmd.text.add", &text), 0u);
  EXPECT_EQ(stage.RunCommand("cmd.rect.add", &rect), 0u);
  stage.SetParameterString("rect.h", "high");
  EXPECT_EQ(stage.ExecuteCommand("rect.add"), Composed(1));
  stage.SetParameterString("enabled", "yes");
  EXPECT_EQ(stage.ExecuteCommand("params.apply"), Composed(1));
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_EQ(stage.store.count(), 0);
}

TEST_F(QGLIPImageOverlayTest, objects_come_and_go_by_commands) {
  QTD::ARGUMENTS text{
      {"text.text", "one"}, {"text.pos.x", "3"}, {"text.pos.y", "4"}, {"text.clr", "16777215"}};
  ASSERT_EQ(stage.RunCommand("cmd.text.add", &text), 1u);
  ASSERT_NE(text["objectID"], "");
  QTD::ARGUMENTS rect{
      {"rect.x", "3"}, {"rect.y", "4"}, {"rect.w", "9"}, {"rect.h", "9"}, {"line.clr", "255"}};
  ASSERT_EQ(stage.RunCommand("cmd.rect.add", &rect), 1u);
  EXPECT_GT(Drawn().count, 10);
  EXPECT_EQ(stage.RunCommand("cmd.rect.del", &text), 1u);  // looks at no kind
  EXPECT_TRUE(stage.DeleteObject(rect["objectID"]));
  EXPECT_FALSE(stage.DeleteObject(rect["objectID"]));
  EXPECT_EQ(Drawn().count, 0);
  QTD::PROPERTIES variables;
  variables.Set("who", "me");
  EXPECT_TRUE(stage.SetTextVariables(&variables));
  EXPECT_FALSE(stage.SetTextVariables(nullptr));
  EXPECT_TRUE(stage.SetDefaults(&variables));
  EXPECT_FALSE(stage.SetDefaults(nullptr));
  EXPECT_EQ(stage.store.Parser()->Parse("I am ${who}"), "I am me");
}

TEST_F(QGLIPImageOverlayTest, hosts_add_objects_on_other_threads_while_pictures_pass) {
  std::atomic<bool> stop{false};
  std::atomic<int> added{0};
  std::thread host([&] {
    while (!stop) {
      const std::string text = AddWhite("from another thread", 5, 5);
      const std::string rect = stage.AddRect(1, 1, 9, 9, nullptr);
      QTD::PROPERTIES variables;
      variables.Set("n", QTD::ToText(added.load()));
      stage.SetTextVariables(&variables);
      stage.DeleteObject(rect);
      stage.DeleteObject(text);
      ++added;
    }
  });
  while (added < 2) std::this_thread::yield();
  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(Run(stage, source->record()), 0u);
    if (round % 10 == 9) {
      ASSERT_EQ(Init(stage, picture), 0u);
    }
  }
  stop = true;
  host.join();
  AddWhite("L", 20, 10);
  EXPECT_GT(Drawn().count, 5);
}

TEST_F(QGLIPImageOverlayTest, a_surface_that_goes_first_takes_nothing_along_that_is_still_used) {
  AddWhite("text", 5, 5);
  source->stage.Release();
  surface->end(nullptr, false);
  surface.reset();
  EXPECT_EQ(Run(stage, picture.get()), Composed(8));
  AddWhite("more", 5, 5);
  EXPECT_EQ(Run(stage, picture.get()), Composed(8));
}

}  // namespace
