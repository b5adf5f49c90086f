// The lock of a pass: what is written under it reaches a picture as a whole, or not at all.
#include <atomic>
#include <chrono>
#include <thread>

#include "PassFixture.h"
#include "gl/passes/QGLColorCorrection.h"
#include "gl/passes/QGLExposureColoration.h"

namespace {

constexpr int kWidth = 2, kHeight = 1;
constexpr auto kHalfway = std::chrono::milliseconds(30);

class PassLockTest : public PassFixture {
 protected:
  // Another thread writes `first`, lingers, and writes `second`, all under the pass's lock. The picture that
  // is rendered meanwhile.
  template <typename Pass, typename First, typename Second>
  Samples RenderedDuring(Pass& pass, uint32_t texture, QTD::PROPERTIES* arguments, First first,
                         Second second) {
    std::atomic<bool> halfway{false};
    std::thread host([&] {
      const QTD::RMutexLock guard(pass.Lock());
      first();
      halfway = true;
      std::this_thread::sleep_for(kHalfway);
      second();
    });
    while (!halfway) std::this_thread::yield();
    const Samples result = render(pass, texture, 3, 8, arguments);
    host.join();
    return result;
  }
};

TEST_F(PassLockTest, a_correction_that_is_half_written_is_not_drawn) {
  makeTarget(kWidth, kHeight, ZYN_PIXEL_RGB8);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, kWidth, kHeight, ZYN_PIXEL_RGB8));
  const uint32_t grey = upload(kWidth, kHeight, 3, 8, Samples(6, 204));
  for (const auto& [gain, code] : {std::pair{0.25, 51u}, {0.75, 153u}, {0.5, 102u}}) {
    const Samples result = RenderedDuring(
        pass, grey, nullptr, [&, value = gain] { pass.gainR = value; },
        [&, value = gain] { pass.gainG = pass.gainB = value; });
    EXPECT_EQ(result, Samples(6, code));
  }
}

TEST_F(PassLockTest, parameters_of_a_correction_are_read_together) {
  makeTarget(kWidth, kHeight, ZYN_PIXEL_RGB8);
  RenderObjects::QGLColorCorrection pass(surface.get());
  ASSERT_TRUE(init(pass, kWidth, kHeight, ZYN_PIXEL_RGB8));
  const uint32_t grey = upload(kWidth, kHeight, 3, 8, Samples(6, 204));
  for (const char* const coef : {"0.5", "0.25"}) {
    // The factor and the gain make up for each other.
    const double gain = 1 / std::stod(coef);
    const Samples result = RenderedDuring(
        pass, grey, nullptr, [&] { pass.Parameters().Set("image.color.coef", coef); },
        [&] { pass.gainR = pass.gainG = pass.gainB = gain; });
    EXPECT_EQ(result, Samples(6, 204));
  }
}

TEST_F(PassLockTest, marks_that_are_half_written_are_not_drawn) {
  makeTarget(kWidth, kHeight, ZYN_PIXEL_RGB8);
  RenderObjects::QGLExposureColoration pass(surface.get());
  ASSERT_TRUE(init(pass, kWidth, kHeight, ZYN_PIXEL_RGB8));
  pass.thresholdLo = 0.4;
  pass.thresholdHi = 0.6;
  QTD::PROPERTIES arguments;
  arguments.Set("source", QTD::ToText(upload(kWidth, kHeight, 1, 8, {0, 255})));
  arguments.Set("mono", "1");
  const uint32_t picture = upload(kWidth, kHeight, 3, 8, Samples(6, 9));
  for (const uint32_t color : {0x111111u, 0x777777u}) {
    const Samples result = RenderedDuring(
        pass, picture, &arguments, [&] { pass.colorLo = color; }, [&] { pass.colorHi = color; });
    EXPECT_EQ(result, Samples(6, color & 0xFF));
  }
}

}  // namespace
