// What the component takes and refuses, of hosts that are careful and of others.
#include "demosaicing/Bayer.h"

#include <atomic>
#include <limits>
#include <string>
#include <thread>

#include "tests/demosaicing/LinearModel.h"

namespace {

constexpr uint32_t kFailure = 0x80FF0000u;

struct BayerTest : testing::Test {
  uint32_t Init() { return bayer->Init(&scene.source, &scene.output); }
  uint32_t Process() { return bayer->ProcessImage(&scene.source, &scene.output); }

  BayerScene scene{FormatOf(ZYN_PIXEL_BAYERGR12), false, 20, 10, 2};
  BayerPointer bayer = MakeBayer();
};

TEST_F(BayerTest, takes_every_bayer_format_with_both_orders_of_its_depth_and_no_other_depth) {
  for (const SceneFormat& from : kSceneFormats) {
    for (const SceneFormat& to : kSceneFormats) {
      for (const uint32_t color : {to.rgb, to.bgr}) {
        scene.source.pixelType = from.bayer;
        scene.output.pixelType = color;
        EXPECT_EQ(Init(), from.depth == to.depth ? 0u : kFailure | 3u) << from.bayer << " " << color;
      }
    }
  }
}

TEST_F(BayerTest, refuses_other_sources) {
  for (const uint32_t pixelType : {0u, ZYN_PIXEL_MONO8, ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERGR12PACKED,
                                   ZYN_PIXEL_RGB12, ZYN_PIXEL_TRUESENSE_BGGR_WBBW_0_12, 0xFFFFFFFFu}) {
    scene.source.pixelType = pixelType;
    EXPECT_EQ(Init(), kFailure | 3u) << pixelType;
  }
}

TEST_F(BayerTest, refuses_other_outputs) {
  for (const uint32_t pixelType : {0u, ZYN_PIXEL_MONO12, ZYN_PIXEL_RGBA8, ZYN_PIXEL_RGB_12_BRIO_PACKED,
                                   ZYN_PIXEL_BAYERGR12, 0xFFFFFFFFu}) {
    scene.output.pixelType = pixelType;
    EXPECT_EQ(Init(), kFailure | 3u) << pixelType;
  }
}

TEST_F(BayerTest, refuses_null_empty_and_unequal_images_at_init) {
  EXPECT_EQ(bayer->Init(nullptr, &scene.output), kFailure | 7u);
  EXPECT_EQ(bayer->Init(&scene.source, nullptr), kFailure | 7u);
  scene.output.width = 21;
  EXPECT_EQ(Init(), kFailure | 7u);
  scene.output.width = 20;
  scene.output.height = 9;
  EXPECT_EQ(Init(), kFailure | 7u);
  scene.source.height = scene.output.height = 0;
  EXPECT_EQ(Init(), kFailure | 7u);
  scene.source.height = scene.output.height = 10;
  scene.source.width = scene.output.width = 0;
  EXPECT_EQ(Init(), kFailure | 7u);
}

TEST_F(BayerTest, refuses_an_unknown_method_at_init) {
  for (const int64_t method :
       {int64_t{-1}, int64_t{4}, int64_t{1} << 32, std::numeric_limits<int64_t>::min()}) {
    bayer->GetComponent()->SetParameterInt("BayerAlgType", method);
    EXPECT_EQ(Init(), kFailure | 7u) << method;
    EXPECT_EQ(Process(), kFailure | 8u);
  }
  bayer->GetComponent()->SetParameterString("BayerAlgType", "best");
  EXPECT_EQ(Init(), kFailure | 7u) << "and throws nothing";
  bayer->GetComponent()->SetParameterString("BayerAlgType", "99999999999999999999");
  EXPECT_EQ(Init(), kFailure | 7u) << "and throws nothing";
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 1);
  EXPECT_EQ(Init(), 0u);
  EXPECT_EQ(Process(), 0u);
}

TEST_F(BayerTest, takes_up_a_changed_method_at_the_next_init) {
  scene.FillAtRandom(1);
  ASSERT_EQ(Init(), 0u);
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 1);
  EXPECT_EQ(Process(), 0u);
  EXPECT_TRUE(FollowsModel(scene, 0));
  EXPECT_EQ(Init(), 0u);
  EXPECT_EQ(Process(), 0u);
  EXPECT_TRUE(FollowsModel(scene, 1));
}

TEST_F(BayerTest, processes_nothing_before_init_after_release_and_after_a_failed_init) {
  EXPECT_EQ(Process(), kFailure | 8u);
  EXPECT_EQ(Init(), 0u);
  EXPECT_EQ(Process(), 0u);
  bayer->Release();
  EXPECT_EQ(Process(), kFailure | 8u);
  bayer->Release();
  EXPECT_EQ(Init(), 0u);
  EXPECT_EQ(bayer->Init(nullptr, nullptr), kFailure | 7u);
  EXPECT_EQ(Process(), kFailure | 8u);
}

TEST_F(BayerTest, does_not_touch_buffers_at_init) {
  scene.source.imageData = scene.output.imageData = nullptr;
  scene.source.imageSize = scene.output.imageSize = 0;
  EXPECT_EQ(Init(), 0u);
}

TEST_F(BayerTest, refuses_images_that_differ_from_those_at_init) {
  ASSERT_EQ(Init(), 0u);
  EXPECT_EQ(bayer->ProcessImage(nullptr, &scene.output), kFailure | 7u);
  EXPECT_EQ(bayer->ProcessImage(&scene.source, nullptr), kFailure | 7u);
  for (ZynImage* const image : {&scene.source, &scene.output}) {
    const ZynImage good = *image;
    const auto refuses = [&](const char* what) {
      EXPECT_EQ(Process(), kFailure | 7u) << what;
      *image = good;
    };
    image->width = 19;
    refuses("narrower");
    image->width = 0;
    refuses("empty");
    image->height = 11;
    refuses("higher");
    image->pixelType = image == &scene.source ? ZYN_PIXEL_BAYERRG12 : ZYN_PIXEL_BGR12;
    refuses("another order");
    image->imageData = nullptr;
    refuses("no data");
    image->linePitch = image->width * (image == &scene.source ? 2 : 6) - 1;
    refuses("lines that overlap");
    image->linePitch = 0;
    refuses("no pitch");
    image->linePitch = 0xFFFFFFFFu;
    refuses("a pitch beyond the buffer");
    image->linePitch = 0x80000000u;
    refuses("a pitch whose multiples overflow 32 bits");
    image->imageSize -= 1;
    refuses("one byte too few");
    image->imageSize = 0;
    refuses("no size");
    EXPECT_EQ(Process(), 0u);
  }
}

TEST_F(BayerTest, refuses_a_source_and_an_output_that_share_memory) {
  ASSERT_EQ(Init(), 0u);
  const ZynImage source = scene.source;
  scene.source.imageData = scene.output.imageData;
  EXPECT_EQ(Process(), kFailure | 7u);
  // The last byte of the one is the first of the other.
  scene.source.imageData = scene.output.imageData + scene.output.imageSize - 1;
  EXPECT_EQ(Process(), kFailure | 7u);
  scene.source = source;
  EXPECT_EQ(Process(), 0u);
}

TEST_F(BayerTest, survives_init_with_the_largest_sizes) {
  for (const auto& [width, height] :
       {std::pair(0xFFFFFFFFu, 0xFFFFFFFFu), {0xFFFFFFFFu, 1u}, {1u, 0xFFFFFFFFu}}) {
    for (const int64_t method : {0, 1, 2, 3}) {
      bayer->GetComponent()->SetParameterInt("BayerAlgType", method);
      scene.source.width = scene.output.width = width;
      scene.source.height = scene.output.height = height;
      EXPECT_EQ(Init(), 0u);
      EXPECT_EQ(Process(), kFailure | 7u) << "no buffer is as large";
    }
  }
}

TEST_F(BayerTest, has_its_class_and_method_as_parameters_from_the_start) {
  const BayerPointer fresh(ZynBayer::CreateComponent());
  ZynComponent* const component = fresh->GetComponent();
  ASSERT_NE(component, nullptr);
  int64_t method = -1;
  EXPECT_EQ(component->GetParameterInt("BayerAlgType", &method), 0u);
  EXPECT_EQ(method, 0);
  char text[32];
  uint32_t size = sizeof text;
  EXPECT_EQ(component->GetParameterString("class", text, &size), 0u);
  EXPECT_STREQ(text, "ZynBayer");
}

TEST(BayerFactory, ignores_null) {
  ZynBayer::DeleteComponent(nullptr);
}

// Everything at once from four threads, on one component: each call ends with one of the known codes, and
// afterwards the component works as before.
TEST_F(BayerTest, stands_calls_from_four_threads_at_once) {
  std::atomic<int> surprises{0};
  std::vector<std::thread> threads;
  for (uint32_t number = 0; number < 4; ++number) {
    threads.emplace_back([&, number] {
      BayerScene own(scene.format, false, 20, 10);
      own.FillAtRandom(number);
      for (uint32_t turn = 0; turn < 200; ++turn) {
        uint32_t code = 0;
        switch ((turn + number) % 5) {
          case 0:
            code = bayer->Init(&own.source, &own.output);
            break;
          case 1:
            bayer->GetComponent()->SetParameterInt("BayerAlgType", static_cast<int64_t>(turn % 7) - 1);
            break;
          case 2:
            bayer->Release();
            break;
          default:
            code = bayer->ProcessImage(&own.source, &own.output);
            break;
        }
        code &= 0xFFFF;
        if (code != 0 && code != 7 && code != 8) ++surprises;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(surprises, 0);
  bayer->GetComponent()->SetParameterInt("BayerAlgType", 0);
  scene.FillAtRandom(9);
  EXPECT_EQ(scene.Run(*bayer), 0u);
  EXPECT_TRUE(FollowsModel(scene, 0));
}

}  // namespace
