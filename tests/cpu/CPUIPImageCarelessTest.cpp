// The image stage and hosts whose records lie, change or share memory.
#include <gtest/gtest.h>

#include <algorithm>

#include "ZynPixelFormat.h"
#include "tests/cpu/ReadyStage.h"

namespace {

TEST(CPUIPImageCareless, refuses_images_of_another_size_than_prepared) {
  struct Kind {
    uint32_t source, target;
  };
  for (const Kind kind : {Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8}, Kind{ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8},
                          Kind{ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB8}, Kind{ZYN_PIXEL_RGB12, ZYN_PIXEL_RGB8}}) {
    const StagePicture picture(kind.source, 8, 4);
    ReadyStage ready(picture.record, kind.target);
    const uint32_t sizes[][2] = {{4, 8}, {8, 3}, {8, 5}, {7, 4}, {9, 4}, {16, 2}, {1, 1}, {64, 64}};
    for (const auto& size : sizes) {
      const StagePicture other(kind.source, size[0], size[1]);
      EXPECT_EQ(ready.Run(other.record), kFailed) << size[0] << "x" << size[1];
    }
    ZynImage flat = picture.record;
    flat.height = 0;
    EXPECT_EQ(ready.Run(flat), kFailed);
    // An output that was turned with the source, of the prepared number of bytes.
    const StagePicture turned(kind.source, 4, 8);
    StagePicture output(kind.target, 4, 8);
    ASSERT_EQ(output.record.imageSize, ready.stage.GetImageInfo(false)->imageSize);
    EXPECT_EQ(ready.Run(turned.record, &output.record), kFailed);
    EXPECT_EQ(ready.Run(picture.record), 0u);
  }
}

TEST(CPUIPImageCareless, records_that_lie_about_their_buffer_are_refused) {
  struct Kind {
    uint32_t source, target;
  };
  for (const Kind kind : {Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8}, Kind{ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8},
                          Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8}, Kind{ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB8},
                          Kind{ZYN_PIXEL_BGR12, ZYN_PIXEL_RGB8}, Kind{ZYN_PIXEL_RGB12, ZYN_PIXEL_RGB8}}) {
    const StagePicture picture(kind.source, 9, 4);
    ReadyStage ready(picture.record, kind.target);
    for (const uint32_t pitch : {0u, 1u, 8u, picture.record.linePitch * 2, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
      ZynImage lying = picture.record;
      lying.linePitch = pitch;
      EXPECT_EQ(ready.Run(lying), kFailed) << pitch;
    }
    for (const uint32_t size : {0u, 1u, picture.record.linePitch * 3}) {
      ZynImage lying = picture.record;
      lying.imageSize = size;
      EXPECT_EQ(ready.Run(lying), kFailed) << size;
    }
    StagePicture output(kind.target, 9, 4);
    for (const uint32_t pitch : {0u, 1u, 8u, output.record.linePitch * 2, 0xFFFFFFFFu}) {
      ZynImage lying = output.record;
      lying.linePitch = pitch;
      EXPECT_EQ(ready.Run(picture.record, &lying), kFailed) << pitch;
    }
  }
}

TEST(CPUIPImageCareless, a_source_larger_than_the_target_is_not_copied_over_its_end) {
  const StagePicture prepared(ZYN_PIXEL_MONO8, 8, 4);
  StagePicture larger(ZYN_PIXEL_MONO8, 8, 5);
  larger.record.height = 4;  // bytes behind the last line
  ReadyStage ready(prepared.record, ZYN_PIXEL_MONO8);
  EXPECT_EQ(ready.Run(larger.record), kFailed);
}

// Every code for every code, in buffers of the stated size: an answer, and nothing touched outside.
TEST(CPUIPImageCareless, sources_of_any_other_format_than_prepared_are_answered) {
  for (const uint32_t target : {ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8, ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB16}) {
    for (const uint32_t prepared : {ZYN_PIXEL_MONO12, ZYN_PIXEL_BGR12, ZYN_PIXEL_BGR8, ZYN_PIXEL_MONO8,
                                    ZYN_PIXEL_RGB12, ZYN_PIXEL_YUV422_10}) {
      const StagePicture usual(prepared, 7, 3);
      ReadyStage ready(usual.record, target);
      for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
        StagePicture other(QTD::FindPixelRow(number)->code, 7, 3);
        for (const uint32_t depth : {other.record.bitDepth, 0u, 8u, 12u, 16u, 24u, 40u, 0xFFFFFFFFu}) {
          other.record.bitDepth = depth;
          const uint32_t code = ready.Run(other.record);
          ASSERT_TRUE(code == 0 || code == kFailed) << number;
        }
      }
    }
  }
}

TEST(CPUIPImageCareless, a_depth_that_no_sample_has_is_refused) {
  StagePicture picture(ZYN_PIXEL_MONO12, 40, 2);
  ReadyStage ready(picture.record, ZYN_PIXEL_MONO8);
  picture.record.bitDepth = 23;
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out()->imageData[9], WordAt(picture, 9) >> 15);
  picture.record.bitDepth = 24;
  EXPECT_EQ(ready.Run(picture.record), kFailed);
}

// Storage of 36 bits: a pixel ends amid a 16-bit word, which may lie outside.
TEST(CPUIPImageCareless, half_a_word_at_the_end_of_the_buffer_is_not_read) {
  const StagePicture usual(ZYN_PIXEL_RGB_12_BRIO_PACKED, 1, 1), cut(ZYN_PIXEL_RGB_12_BRIO_PACKED, 1, 1, 5);
  ReadyStage ready(usual.record, ZYN_PIXEL_RGB8);
  EXPECT_EQ(ready.Run(usual.record), 0u);
  EXPECT_EQ(ready.Run(cut.record), kFailed);
}

// Row RGB12 with 255 bits of storage: more words in a line than the target has bytes.
TEST(CPUIPImageCareless, a_code_with_absurd_storage_does_not_write_over_the_target) {
  StagePicture picture(ZYN_PIXEL_RGB12, 8, 4, 256);
  picture.record.pixelType = 0x02FF0377;
  ReadyStage ready(picture.record, ZYN_PIXEL_RGB8, true);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  EXPECT_EQ(ready.Run(picture.record, &output.record), kFailed);
}

// Bytes that are said to be words, in lines that would hold as many words.
TEST(CPUIPImageCareless, a_depth_against_the_storage_of_the_code_is_refused) {
  const StagePicture prepared(ZYN_PIXEL_MONO12, 8, 4);
  ReadyStage ready(prepared.record, ZYN_PIXEL_RGB8);
  StagePicture lying(ZYN_PIXEL_MONO8, 8, 4, 16);
  lying.record.bitDepth = 12;
  EXPECT_EQ(ready.Run(lying.record), kFailed);
}

TEST(CPUIPImageCareless, a_step_that_was_not_prepared_for_is_refused) {
  // Prepared for no reduction, and for a reduction alone.
  const StagePicture bytes(ZYN_PIXEL_BGR8, 8, 4), words(ZYN_PIXEL_RGB12, 8, 4);
  const StagePicture deep(ZYN_PIXEL_BGR12, 8, 4);
  ReadyStage swapping(bytes.record, ZYN_PIXEL_RGB8), reducing(words.record, ZYN_PIXEL_RGB8);
  EXPECT_EQ(swapping.Run(deep.record), kFailed);
  EXPECT_EQ(reducing.Run(deep.record), kFailed);
}

// In place, and into memory that the source reaches into: as if the source had been copied before.
TEST(CPUIPImageCareless, a_target_may_share_memory_with_its_source) {
  struct Kind {
    uint32_t source, target;
  };
  for (const Kind kind : {Kind{ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8}, Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8},
                          Kind{ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB8}, Kind{ZYN_PIXEL_RGB12, ZYN_PIXEL_RGB8},
                          Kind{ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8}}) {
    const StagePicture picture(kind.source, 67, 5);
    ReadyStage ready(picture.record, kind.target);
    ASSERT_EQ(ready.Run(picture.record), 0u);
    const auto expected = PixelsOf(*ready.stage.Out());
    const uint32_t targetSize = ready.stage.Out()->imageSize;
    for (const uint32_t sourceOffset : {0u, 1u, 100u}) {
      for (const uint32_t targetOffset : {0u, 3u, 150u}) {
        GuardedBytes memory(150 + std::max(picture.record.imageSize + 100, targetSize));
        ZynImage source = picture.record, target = *ready.stage.Out();
        source.imageData = memory.data() + sourceOffset;
        std::copy_n(picture.record.imageData, source.imageSize, source.imageData);
        target.imageData = memory.data() + targetOffset;
        ASSERT_EQ(ready.Run(source, &target), 0u);
        ASSERT_EQ(PixelsOf(target), expected) << sourceOffset << " " << targetOffset;
      }
    }
    // The stage's own result as the source.
    if (kind.source == kind.target) {
      ASSERT_EQ(ready.Run(picture.record), 0u);
      ASSERT_EQ(ready.Run(*ready.stage.Out()), 0u);
      EXPECT_EQ(PixelsOf(*ready.stage.Out()), expected);
    }
  }
}

TEST(CPUIPImageCareless, shared_memory_may_grow_from_frame_to_frame) {
  const StagePicture prepared(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(prepared.record, ZYN_PIXEL_RGB8);
  for (const uint32_t pitch : {8u, 1u << 20, 16u}) {
    const StagePicture picture(ZYN_PIXEL_MONO8, 8, 4, pitch);
    ASSERT_EQ(ready.Run(picture.record), 0u);
    const auto expected = PixelsOf(*ready.stage.Out());
    ZynImage target = *ready.stage.Out();
    GuardedBytes memory(std::max(picture.record.imageSize, target.imageSize));
    ZynImage source = picture.record;
    source.imageData = target.imageData = memory.data();
    std::copy_n(picture.record.imageData, source.imageSize, source.imageData);
    ASSERT_EQ(ready.Run(source, &target), 0u);
    EXPECT_EQ(PixelsOf(target), expected);
  }
}

// What lies behind the lines is neither read nor copied aside, whatever the record says of it.
TEST(CPUIPImageCareless, an_absurd_buffer_size_is_not_believed_where_memory_is_shared) {
  const StagePicture prepared(ZYN_PIXEL_MONO8, 8, 4);
  ReadyStage ready(prepared.record, ZYN_PIXEL_RGB8, true);
  StagePicture output(ZYN_PIXEL_RGB8, 8, 4);
  ZynImage source = prepared.record;
  source.imageData = output.record.imageData + output.record.imageSize - source.imageSize;
  source.imageSize = 0xFFFFFFFF;
  EXPECT_EQ(ready.Run(source, &output.record), 0u);
}

}  // namespace
