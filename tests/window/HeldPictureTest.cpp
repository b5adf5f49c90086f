// A picture whose owner deletes it while the window shows it.
#include "Harness.h"
#include "QTD/image/HeldRecords.h"

namespace windowtest {
namespace {

class HeldPicture : public ViewerTest {
 protected:
  ZynImage* ShowRecord(QRgb colour) {
    const Picture painted(kWidth, kHeight, [colour](int, int) { return colour; });
    ZynImage* const record = QTD::ImageCreate(nullptr, kWidth, kHeight, ZYN_PIXEL_RGB8);
    EXPECT_TRUE(QTD::ImageCopy(painted.Record(), record));
    viewer->setImage(record, true);
    Settle();
    return record;
  }
  static void DeleteByOwner(ZynImage* record) { QTD::ImageDelete(record); }
  // What is at that address no longer counts.
  static bool IsHeld(const ZynImage* record) { return QTD::LeaveToHolders(const_cast<ZynImage*>(record)); }
};

TEST_F(HeldPicture, stays_over_paintings_and_resizes) {
  DeleteByOwner(ShowRecord(qRgb(10, 200, 30)));
  EXPECT_TRUE(window->hasImage());
  widget->resize(widget->width() + 40, widget->height() + 20);
  Settle();
  window->render();
  EXPECT_TRUE(window->hasImage());
  if (OnX()) {
    EXPECT_EQ(Grab().pixel(kWidth / 2, kHeight / 2), qRgb(10, 200, 30));
  }
}

TEST_F(HeldPicture, stays_over_closing_and_opening) {
  DeleteByOwner(ShowRecord(qRgb(10, 200, 30)));
  window->close();
  ASSERT_TRUE(window->open());
  EXPECT_TRUE(window->hasImage());
  window->render();
}

TEST_F(HeldPicture, goes_when_the_next_one_comes) {
  ZynImage* const first = ShowRecord(qRgb(10, 200, 30));
  DeleteByOwner(first);
  ZynImage* const second = ShowRecord(qRgb(200, 10, 30));
  EXPECT_FALSE(IsHeld(first));
  if (OnX()) {
    EXPECT_EQ(Grab().pixel(kWidth / 2, kHeight / 2), qRgb(200, 10, 30));
  }
  // The same one again, as with every frame, is still one hold.
  viewer->setImage(second, true);
  viewer->setImage(nullptr, false);
  EXPECT_FALSE(IsHeld(second));
  DeleteByOwner(second);
}

TEST_F(HeldPicture, goes_with_the_window) {
  ZynImage* const record = ShowRecord(qRgb(10, 200, 30));
  DeleteByOwner(record);
  widget.reset();
  EXPECT_FALSE(IsHeld(record));
}

}  // namespace
}  // namespace windowtest
