// Positions that the host has translated, with numbers worked out by hand.
#include "tests/display/HostFixture.h"

namespace display_test {

using Point = std::pair<int64_t, int64_t>;

class HostPosition : public HostPictureTest {};

TEST_F(HostPosition, to_the_image_the_fraction_is_cut_off) {
  ShowAt(0.7);
  // (78 - 80) * 0.7 + 500 = 498.6, (57 - 60) * 0.7 + 400 = 397.9
  EXPECT_EQ(Translated(78, 57, 1), Point(498, 397));
  EXPECT_EQ(Translated(90, 70, 1), Point(507, 407));
}

TEST_F(HostPosition, any_other_direction_leads_to_the_window) {
  ShowAt(0.7);
  // (502 - 500) / 0.7 + 80 = 82.86, (404 - 400) / 0.7 + 60 = 65.71
  for (int direction : {0, 2, -1}) EXPECT_EQ(Translated(502, 404, direction), Point(82, 65)) << direction;
}

TEST_F(HostPosition, negative_results_are_cut_towards_zero) {
  ShowAt(0.7);
  // -500 / 0.7 + 80 = -634.29, -400 / 0.7 + 60 = -511.43
  EXPECT_EQ(Translated(0, 0, 0), Point(-634, -511));
}

TEST_F(HostPosition, numbers_beyond_the_signed_ones_are_negative) {
  ShowAt(0.7);
  // (-1 - 80) * 0.7 + 500 = 443.3, (-2 - 60) * 0.7 + 400 = 356.6
  EXPECT_EQ(Translated(0xFFFFFFFF, 0xFFFFFFFE, 1), Point(443, 356));
  ASSERT_TRUE(Controller()->SetScale(0.5, false));
  // (-2147483648 - 80) / 2 + 500, and the same with 60 and 400
  EXPECT_EQ(Translated(0x80000000, 0x80000000, 1), Point(-1073741364, -1073741454));
}

TEST_F(HostPosition, each_pointer_may_be_null) {
  ShowAt(0.5);
  uint32_t x = 100, y = 100;
  EXPECT_EQ(display->TranslatePosition(&x, nullptr, 1), 0u);
  EXPECT_EQ(x, 510u);
  EXPECT_EQ(display->TranslatePosition(nullptr, &y, 1), 0u);
  EXPECT_EQ(y, 420u);
}

}  // namespace display_test
