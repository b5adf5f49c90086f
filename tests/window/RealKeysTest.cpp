// Every key of the view by a real keyboard, judged by what is on the screen.
#include "RealHarness.h"

namespace {

using windowtest::Picture;
using windowtest::RealZoomTest;
using windowtest::WaitFor;

constexpr QRgb kWhite = qRgb(255, 255, 255);
constexpr QRgb kBlue = qRgb(0, 0, 240);

// A white field of 200 by 150 pixels in the middle of a blue picture that is wider than the window's shape:
// at first it fills the window's middle from (100, 75) to (300, 225).
class RealKeysTest : public RealZoomTest {
 protected:
  void SetUp() override {
    RealZoomTest::SetUp();
    if (IsSkipped()) return;
    Show(wide);
    Do(QStringLiteral("key 1 key c"));
    ASSERT_TRUE(HasField(100, 75, 300, 225));
  }
  void TearDown() override {
    if (viewer) viewer->setImage(nullptr, false);
    RealZoomTest::TearDown();
  }

  // Whether the field is shown from the one corner up to the other: by the pixels on both sides of its edges.
  bool HasField(int left, int top, int right, int bottom) {
    const int x = (left + right) / 2;
    const int y = (top + bottom) / 2;
    return WaitFor([&] {
      const QImage shown = Grab();
      const auto white = [&](int px, int py) { return shown.pixel(px, py) == kWhite; };
      const auto blue = [&](int px, int py) { return shown.pixel(px, py) == kBlue; };
      return white(left + 1, y) && blue(left - 2, y) && white(right - 2, y) && blue(right + 1, y) &&
             white(x, top + 1) && blue(x, top - 2) && white(x, bottom - 2) && blue(x, bottom + 1);
    });
  }
  void Key(const char* name) { Do(QStringLiteral("key %1").arg(QLatin1String(name))); }

  const Picture wide{
      1600, 600, [](int x, int y) { return x >= 700 && x < 900 && y >= 225 && y < 375 ? kWhite : kBlue; }};
};

}  // namespace

TEST_F(RealKeysTest, plus_and_minus) {
  Key("plus");
  EXPECT_TRUE(HasField(75, 56, 325, 244));  // 125 per cent
  Key("minus");
  EXPECT_TRUE(HasField(100, 75, 300, 225));
  Key("minus");
  EXPECT_TRUE(HasField(125, 94, 275, 206));  // 75 per cent
}

TEST_F(RealKeysTest, digits) {
  Key("0");  // a quarter, with bars above and below the picture
  EXPECT_TRUE(HasField(175, 131, 225, 169));
  EXPECT_NE(kBlue, Grab().pixel(200, 70));
  EXPECT_EQ(kBlue, Grab().pixel(200, 78));
  EXPECT_NE(kBlue, Grab().pixel(200, 228));
  Key("2");  // half the size, up to the upper and lower edge
  EXPECT_TRUE(HasField(150, 112, 250, 188));
  EXPECT_EQ(kBlue, Grab().pixel(200, 1));
  EXPECT_EQ(kBlue, Grab().pixel(200, 298));
  Key("1");
  EXPECT_TRUE(HasField(100, 75, 300, 225));
}

TEST_F(RealKeysTest, arrows_and_c) {
  struct Row {
    const char* key;
    int left, top;
  };
  for (const Row& row :
       {Row{"Left", 140, 75}, Row{"Up", 100, 105}, Row{"Right", 60, 75}, Row{"Down", 100, 45}}) {
    Key(row.key);
    EXPECT_TRUE(HasField(row.left, row.top, row.left + 200, row.top + 150)) << row.key;
    Key("c");
    EXPECT_TRUE(HasField(100, 75, 300, 225)) << row.key;
  }
}

TEST_F(RealKeysTest, two_letters_make_a_command) {
  ConnectHost();
  Do(QStringLiteral("key s key d"));
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.status") == 1; }));
  Do(QStringLiteral("key s key i"));
  EXPECT_TRUE(WaitFor([&] { return host.CountOf("cmd.display.view.info") == 1; }));
}
