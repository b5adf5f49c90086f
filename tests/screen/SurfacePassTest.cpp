#include "QTD/screen/SurfacePass.h"

#include <gtest/gtest.h>

#include <optional>

#include "QTD/screen/QTDSurface.h"

namespace {

struct CountedSurface : QTDSurface {
  bool begin(QTD::PROPERTIES*) override {
    ++begins;
    if (throws) throw 1;
    return can;
  }
  void end(QTD::PROPERTIES*, bool) override { ++ends; }
  bool can = true, throws = false;
  int begins = 0, ends = 0;
};

}  // namespace

TEST(SurfacePass, begins_and_ends) {
  CountedSurface surface;
  {
    const SurfacePass pass(&surface);
    EXPECT_TRUE(pass);
    EXPECT_EQ(1, surface.begins);
    EXPECT_EQ(0, surface.ends);
  }
  EXPECT_EQ(1, surface.ends);
}

TEST(SurfacePass, tells_of_a_surface_that_cannot_begin_and_does_not_end_it) {
  CountedSurface surface;
  surface.can = false;
  EXPECT_FALSE(SurfacePass(&surface));
  EXPECT_EQ(1, surface.begins);
  EXPECT_EQ(0, surface.ends);
}

TEST(SurfacePass, a_surface_that_throws_has_not_begun) {
  CountedSurface surface;
  surface.throws = true;
  EXPECT_FALSE(SurfacePass(&surface));
}

TEST(SurfacePass, is_a_success_without_a_surface) {
  EXPECT_TRUE(SurfacePass(nullptr));
}

TEST(SurfacePass, leaves_another_surface_in_the_same_place_alone) {
  std::optional<CountedSurface> place;
  place.emplace();
  const uint64_t serial = place->Serial();
  {
    const SurfacePass pass(&*place);
    place.emplace();
    ASSERT_NE(serial, place->Serial());
  }
  EXPECT_EQ(0, place->ends);
}
