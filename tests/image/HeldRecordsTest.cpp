#include "QTD/image/HeldRecords.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <vector>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"

namespace {

using QTD::HoldRecord;
using QTD::ImageDelete;
using QTD::LeaveToHolders;
using QTD::LetRecordGo;
using QTD::RecordHold;

ZynImage* MakeRecord() {
  ZynImage* const record = QTD::ImageCreate(nullptr, 8, 4, ZYN_PIXEL_MONO8);
  record->imageData[31] = 77;
  return record;
}

// What the owner does; the holders' pointer is what remains.
void DeleteByOwner(ZynImage* record) {
  ImageDelete(record);
  EXPECT_EQ(record, nullptr);
}

// Whether somebody holds what is, or was, at that address. (A record that is held by mistake would stay for
// ever.)
bool IsHeld(const ZynImage* record) {
  return LeaveToHolders(const_cast<ZynImage*>(record));
}

TEST(HeldRecords, keep_record_and_pixels_when_the_owner_deletes_them) {
  ZynImage* const record = MakeRecord();
  HoldRecord(record);
  DeleteByOwner(record);
  EXPECT_EQ(record->width, 8u);
  ASSERT_NE(record->imageData, nullptr);
  EXPECT_EQ(record->imageData[31], 77);
  LetRecordGo(record);
  EXPECT_FALSE(IsHeld(record));
}

TEST(HeldRecords, lose_their_attachments_at_once) {
  ZynImage* const record = MakeRecord();
  record->attachments = std::calloc(1, 64);
  HoldRecord(record);
  DeleteByOwner(record);
  EXPECT_EQ(record->attachments, nullptr);
  LetRecordGo(record);
}

TEST(HeldRecords, go_with_the_last_of_several_holders) {
  ZynImage* const record = MakeRecord();
  HoldRecord(record);
  HoldRecord(record);
  DeleteByOwner(record);
  LetRecordGo(record);
  EXPECT_EQ(record->imageData[31], 77);
  LetRecordGo(record);
  EXPECT_FALSE(IsHeld(record));
}

TEST(HeldRecords, stay_the_owners_when_the_holders_let_go_first) {
  ZynImage* record = MakeRecord();
  HoldRecord(record);
  LetRecordGo(record);
  EXPECT_EQ(record->imageData[31], 77);
  EXPECT_FALSE(IsHeld(record));
  ImageDelete(record);
}

TEST(HeldRecords, that_nobody_holds_and_null_are_let_go_without_effect) {
  ZynImage* record = MakeRecord();
  LetRecordGo(record);
  LetRecordGo(nullptr);
  HoldRecord(nullptr);
  EXPECT_EQ(record->imageData[31], 77);
  ImageDelete(record);
}

TEST(RecordHold, holds_for_its_life) {
  ZynImage* const record = MakeRecord();
  {
    const RecordHold hold(record);
    DeleteByOwner(record);
    EXPECT_EQ(record->imageData[31], 77);
  }
  EXPECT_FALSE(IsHeld(record));
  const RecordHold nothing(nullptr), empty;
}

TEST(RecordHold, changes_its_record_in_a_swap) {
  ZynImage* const first = MakeRecord();
  ZynImage* const second = MakeRecord();
  RecordHold kept(first);
  {
    RecordHold next(second);
    kept.Swap(next);
    DeleteByOwner(first);
    DeleteByOwner(second);
    EXPECT_EQ(first->imageData[31], 77);
  }
  EXPECT_FALSE(IsHeld(first));
  EXPECT_EQ(second->imageData[31], 77);
}

TEST(HeldRecords, are_deleted_and_let_go_by_threads_at_once) {
  for (int round = 0; round < 200; ++round) {
    ZynImage* const record = MakeRecord();
    std::vector<std::thread> threads;
    for (int n = 0; n < 3; ++n) HoldRecord(record);
    threads.emplace_back([record] { DeleteByOwner(record); });
    for (int n = 0; n < 3; ++n) {
      threads.emplace_back([record] {
        EXPECT_EQ(record->imageData[31], 77);
        LetRecordGo(record);
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_FALSE(IsHeld(record));
  }
}

}  // namespace
