// Running the unpack stage.
#include "cpu/stages/CPUIPUnpack.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"
#include "tests/chain/TraceCapture.h"
#include "tests/cpu/UnpackHelpers.h"
#include "tests/support/TestData.h"

using Words = std::vector<uint16_t>;

namespace {

// The samples of one line of `bytes`.
Words Unpacked(uint32_t pixelType, uint32_t width, std::vector<uint8_t> bytes) {
  ZynImage source{};
  QTD::ImageCreateHeader(&source, width, 1, pixelType);
  source.imageData = bytes.data();
  source.imageSize = static_cast<uint32_t>(bytes.size());
  ReadyUnpack ready(source);
  EXPECT_EQ(ready.Run(source), 0u);
  return SamplesOf(*ready.stage.Out());
}

TEST(CPUIPUnpack, mono10p_is_a_stream_of_bits) {
  EXPECT_EQ(Unpacked(ZYN_PIXEL_MONO10P, 4, {0xFF, 0x03, 0x00, 0x00, 0x00}), (Words{1023, 0, 0, 0}));
}

TEST(CPUIPUnpack, mono10packed_keeps_low_bits_in_the_middle_byte) {
  EXPECT_EQ(Unpacked(ZYN_PIXEL_MONO10PACKED, 2, {0xFF, 0x33, 0xFF}), (Words{1023, 1023}));
}

TEST(CPUIPUnpack, mono12packed_keeps_low_bits_in_the_middle_byte) {
  EXPECT_EQ(Unpacked(ZYN_PIXEL_MONO12PACKED, 2, {0xAB, 0xCD, 0xEF}), (Words{0xABD, 0xEFC}));
}

TEST(CPUIPUnpack, mono12p_is_a_stream_of_bits) {
  EXPECT_EQ(Unpacked(ZYN_PIXEL_MONO12P, 2, {0xAB, 0xCD, 0xEF}), (Words{0xDAB, 0xEFC}));
  EXPECT_EQ(Unpacked(ZYN_PIXEL_MONO12P, 4, {0xAB, 0xCD, 0xEF, 0x01, 0x00, 0x80}),
            (Words{0xDAB, 0xEFC, 0x001, 0x800}));
}

// All 20 formats, at widths of every remainder, against the layouts written out bit by bit.
TEST(CPUIPUnpack, every_packed_format_is_unpacked_by_its_group) {
  for (const uint32_t code : PackedCodes()) {
    for (const uint32_t width : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 50u, 64u, 101u}) {
      const StagePicture picture(code, width, 3);
      ReadyUnpack ready(picture.record);
      ASSERT_EQ(ready.Run(picture.record), 0u);
      ASSERT_EQ(SamplesOf(*ready.stage.Out()), ExpectedSamples(picture.record))
          << std::hex << code << " " << width;
    }
  }
}

TEST(CPUIPUnpack, lines_follow_each_other_whatever_the_pitch_says) {
  for (const uint32_t code : PackedCodes()) {
    const StagePicture picture(code, 22, 4);
    ReadyUnpack ready(picture.record);
    for (const uint32_t pitch : {0u, 1u, 100u, 0xFFFFFFFFu}) {
      ZynImage other = picture.record;
      other.linePitch = pitch;
      ASSERT_EQ(ready.Run(other), 0u);
      ASSERT_EQ(SamplesOf(*ready.stage.Out()), ExpectedSamples(picture.record)) << pitch;
    }
  }
}

// The 12-bit stream does not even begin lines at whole bytes.
TEST(CPUIPUnpack, a_mono12p_image_of_odd_width_is_one_stream) {
  std::vector<uint8_t> bytes = {0x01, 0x20, 0x00, 0x03, 0x40, 0x00, 0x05, 0x60, 0x00};
  StagePicture picture(ZYN_PIXEL_MONO12P, 3, 2);
  std::copy(bytes.begin(), bytes.end(), picture.record.imageData);
  ReadyUnpack ready(picture.record);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(SamplesOf(*ready.stage.Out()), (Words{1, 2, 3, 4, 5, 6}));
}

TEST(CPUIPUnpack, bytes_behind_the_image_size_count_as_zero) {
  for (const uint32_t code : PackedCodes()) {
    for (const uint32_t width : {8u, 13u}) {
      for (uint32_t size = 3; size < 60; ++size) {
        const StagePicture cut(code, width, 3, 0, 1, GuardedBytes::kAtEnd);
        ZynImage source = cut.record;
        GuardedBytes bytes(size);
        std::copy_n(source.imageData, std::min(size, source.imageSize), bytes.data());
        source.imageSize = size;
        source.imageData = bytes.data();
        ReadyUnpack ready(source);
        ASSERT_EQ(ready.Run(source), 0u);
        ASSERT_EQ(SamplesOf(*ready.stage.Out()), ExpectedSamples(source)) << size;
      }
    }
  }
}

// No picture of an earlier image stays under the new one's number.
TEST(CPUIPUnpack, a_stream_that_ends_early_is_black_from_there_on) {
  StagePicture picture(ZYN_PIXEL_MONO12P, 6, 2);
  ReadyUnpack ready(picture.record);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  for (uint32_t size = 0; size <= 3; ++size) {
    picture.record.imageSize = size;
    EXPECT_EQ(ready.Run(picture.record), 0u);
    EXPECT_EQ(SamplesOf(*ready.stage.Out()), ExpectedSamples(picture.record)) << size;
  }
  EXPECT_NE(SamplesOf(*ready.stage.Out()), Words(12));
  picture.record.imageSize = 0;
  EXPECT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(SamplesOf(*ready.stage.Out()), Words(12));
}

TEST(CPUIPUnpack, each_image_leaves_a_line_in_the_trace) {
  const StagePicture picture(ZYN_PIXEL_MONO10P, 8, 4);
  ReadyUnpack ready(picture.record);
  chain_test::TraceCapture trace;
  ready.Run(picture.record);
  EXPECT_EQ(trace.lines, std::vector<std::string>{"CPUIPUnpack::ProcessImage()"});
}

TEST(CPUIPUnpack, the_padding_of_lines_stays_zero) {
  for (const uint32_t code : PackedCodes()) {
    const StagePicture picture(code, 5, 3);
    ReadyUnpack ready(picture.record);
    for (int round = 0; round < 2; ++round) ASSERT_EQ(ready.Run(picture.record), 0u);
    const ZynImage& out = *ready.stage.Out();
    ASSERT_EQ(out.linePitch, 12u);
    for (size_t line = 0; line < 3; ++line) {
      EXPECT_EQ(out.imageData[line * 12 + 10], 0);
      EXPECT_EQ(out.imageData[line * 12 + 11], 0);
    }
  }
}

TEST(CPUIPUnpack, the_image_number_travels_and_the_buffer_stays) {
  StagePicture picture(ZYN_PIXEL_BAYERGR12P, 8, 4);
  picture.record.imageID = 0x123456789A;
  ReadyUnpack ready(picture.record);
  const uint8_t* const buffer = ready.stage.Out()->imageData;
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out()->imageID, 0x123456789Au);
  EXPECT_EQ(ready.stage.Out()->imageData, buffer);
  picture.record.imageID = 0x123456789B;
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.Out()->imageID, 0x123456789Bu);
  EXPECT_EQ(ready.stage.Out()->imageData, buffer);
}

// What gives no picture gives a black one.

class CPUIPUnpackBlack : public testing::TestWithParam<uint32_t> {
 protected:
  CPUIPUnpackBlack() : picture(GetParam(), 100, 4), ready(picture.record) {
    EXPECT_EQ(ready.Run(picture.record), 0u);
    EXPECT_FALSE(IsBlack(*ready.stage.Out()));
    buffer = ready.stage.Out()->imageData;
  }
  void ExpectBlack(const ZynImage& source) {
    ASSERT_EQ(ready.Run(picture.record), 0u);
    EXPECT_EQ(ready.Run(source), 0u);
    const ZynImage* const out = ready.stage.Out();
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(IsBlack(*out));
    EXPECT_EQ(out->imageID, source.imageID);
    // The record still tells the truth about its buffer.
    EXPECT_EQ(out->imageData, buffer);
    EXPECT_EQ(out->width, 100u);
    EXPECT_EQ(out->height, 4u);
    EXPECT_EQ(out->imageSize, 800u);
  }
  StagePicture picture;
  ReadyUnpack ready;
  const uint8_t* buffer = nullptr;
};

TEST_P(CPUIPUnpackBlack, a_source_without_lines_columns_or_pixels) {
  ZynImage source = picture.record;
  source.imageID = 17;
  source.height = 0;
  ExpectBlack(source);
  source = picture.record;
  source.width = 0;
  ExpectBlack(source);
  source = picture.record;
  source.imageData = nullptr;
  ExpectBlack(source);
}

TEST_P(CPUIPUnpackBlack, a_source_of_another_size_than_prepared) {
  const uint32_t sizes[][2] = {{100, 3}, {100, 5}, {99, 4}, {101, 4}, {50, 8}, {400, 1}, {1, 1}, {200, 200}};
  for (const auto& size : sizes) {
    const StagePicture other(GetParam(), size[0], size[1]);
    ExpectBlack(other.record);
  }
  ZynImage huge = picture.record;
  huge.width = huge.height = 0xFFFFFFFF;
  ExpectBlack(huge);
  huge.width = huge.height = 0x10000;
  ExpectBlack(huge);
}

INSTANTIATE_TEST_SUITE_P(Packed, CPUIPUnpackBlack,
                         testing::Values(ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO10PACKED,
                                         ZYN_PIXEL_MONO12PACKED, ZYN_PIXEL_BAYERRG12P));

// Pixels of 8 bits ask the stream kernels for an output of half the size; the others do not look.
TEST(CPUIPUnpack, a_source_that_claims_pixels_of_8_bits) {
  for (const uint32_t code : PackedCodes()) {
    StagePicture picture(code, 8, 2);
    ReadyUnpack ready(picture.record);
    ASSERT_EQ(ready.Run(picture.record), 0u);
    picture.record.bitsPerPixel = 8;
    ASSERT_EQ(ready.Run(picture.record), 0u);
    EXPECT_EQ(IsBlack(*ready.stage.Out()), (code & 0xF000) == 0x2000);
  }
}

TEST(CPUIPUnpack, a_source_of_another_packed_format_is_unpacked_as_what_it_is) {
  const StagePicture prepared(ZYN_PIXEL_MONO10P, 20, 3), other(ZYN_PIXEL_BAYERGB12PACKED, 20, 3);
  ReadyUnpack ready(prepared.record);
  ASSERT_EQ(ready.Run(other.record), 0u);
  EXPECT_EQ(SamplesOf(*ready.stage.Out()), ExpectedSamples(other.record));
  EXPECT_EQ(ready.stage.Out()->pixelType, ZYN_PIXEL_MONO10);
}

// Failures.

TEST(CPUIPUnpack, a_source_that_is_not_packed_fails) {
  const StagePicture picture(ZYN_PIXEL_MONO10P, 8, 4);
  ReadyUnpack ready(picture.record);
  for (uint32_t number = 1; number <= QTD::kPixelRows; ++number) {
    const StagePicture other(QTD::FindPixelRow(number)->code, 8, 4);
    ASSERT_EQ(ready.Run(picture.record), 0u);
    const auto codes = PackedCodes();
    const bool packed = std::count(codes.begin(), codes.end(), other.record.pixelType) != 0;
    EXPECT_EQ(ready.Run(other.record), packed ? 0u : kFailed) << number;
    EXPECT_EQ(ready.stage.Out() != nullptr, packed) << number;
    EXPECT_EQ(ready.stage.LastError(), packed ? 0u : 1u) << number;
  }
}

TEST(CPUIPUnpack, no_source_and_no_preparation_fail) {
  const StagePicture picture(ZYN_PIXEL_MONO12P, 8, 4);
  ReadyUnpack ready(picture.record);
  EXPECT_EQ(ready.stage.ProcessImage(nullptr, nullptr, nullptr), kFailed);
  EXPECT_EQ(ready.stage.LastError(), 1u);
  EXPECT_EQ(ready.stage.Out(), nullptr);
  ASSERT_EQ(ready.Run(picture.record), 0u);
  EXPECT_EQ(ready.stage.LastError(), 0u);
  ready.stage.Release();
  EXPECT_EQ(ready.Run(picture.record), kFailed);
  CPUIPUnpack unprepared(nullptr);
  EXPECT_EQ(unprepared.ProcessImage(&picture.record, nullptr, nullptr), kFailed);
  EXPECT_EQ(unprepared.Out(), nullptr);
}

TEST(CPUIPUnpack, further_arguments_of_a_run_are_ignored) {
  const StagePicture picture(ZYN_PIXEL_MONO12P, 8, 4);
  StagePicture output(ZYN_PIXEL_MONO12, 8, 4);
  const auto before = output.Copy();
  ReadyUnpack ready(picture.record);
  int data = 0;
  EXPECT_EQ(ready.stage.ProcessImage(&picture.record, &output.record, &data), 0u);
  EXPECT_NE(ready.stage.Out(), &output.record);
  EXPECT_EQ(output.Copy(), before);
}

TEST(CPUIPUnpack, any_thread_may_call_anything) {
  const StagePicture picture(ZYN_PIXEL_MONO12P, 64, 48), other(ZYN_PIXEL_BAYERBG10PACKED, 31, 7);
  CPUIPUnpack stage(nullptr);
  std::atomic<bool> stop{false};
  std::atomic<int> failures{0};
  const auto repeat = [&](auto work) {
    return std::thread([&stop, work] {
      while (!stop) work();
    });
  };
  std::thread threads[] = {
      repeat([&] {
        stage.Init(&picture.record, nullptr);
        stage.Init(&other.record, nullptr);
      }),
      repeat([&] {
        const uint32_t code = stage.ProcessImage(&picture.record, nullptr, nullptr);
        failures += code != 0 && code != kFailed;
      }),
      repeat([&] {
        stage.Release();
        stage.Out();
        stage.GetImageInfo(false);
        stage.Enable(false);
        stage.SetParameterBool("image.flip.vert", 1);
        stage.IsReady();
      }),
  };
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

// Bytes and answers that were not made by this library.

TEST(CPUIPUnpackData, hand_made_examples_come_out) {
  ZYN_DATA_OR_SKIP(text, "formats/packed_examples.json");
  const QByteArray json(reinterpret_cast<const char*>(text.data()), static_cast<int>(text.size()));
  const QJsonArray examples = QJsonDocument::fromJson(json).array();
  int checked = 0;
  for (const QJsonValue& value : examples) {
    const QJsonObject example = value.toObject();
    Words expected;
    for (const QJsonValue& pixel : example[QLatin1String("pixels_hex")].toArray()) {
      expected.push_back(pixel.toString().toUShort(nullptr, 16));
    }
    for (const uint32_t code :
         {ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO10PACKED, ZYN_PIXEL_MONO12P, ZYN_PIXEL_MONO12PACKED}) {
      const QString key = QLatin1String(QTD::FindPixelRow(code)->name);
      if (!example.contains(key)) continue;
      const QByteArray bytes = QByteArray::fromHex(example[key].toString().toLatin1());
      EXPECT_EQ(Unpacked(code, static_cast<uint32_t>(expected.size()), {bytes.begin(), bytes.end()}),
                expected)
          << key.toStdString() << ", " << example[QLatin1String("name")].toString().toStdString();
      ++checked;
    }
  }
  EXPECT_GE(checked, 34);
}

void CheckDog(const std::string& name, uint32_t streamCode, uint32_t groupedCode) {
  ZYN_DATA_OR_SKIP(samples, name + ".u16le");
  ZYN_DATA_OR_SKIP(stream, name + ".10p");
  ZYN_DATA_OR_SKIP(grouped, name + ".10Packed");
  Words expected(samples.size() / 2);
  std::memcpy(expected.data(), samples.data(), samples.size());
  ASSERT_EQ(expected.size(), 96u * 64u);
  for (const bool isStream : {true, false}) {
    std::vector<uint8_t> bytes = isStream ? stream : grouped;
    ZynImage source{};
    QTD::ImageCreateHeader(&source, 96, 64, isStream ? streamCode : groupedCode);
    source.imageData = bytes.data();
    source.imageSize = static_cast<uint32_t>(bytes.size());
    ReadyUnpack ready(source);
    ASSERT_EQ(ready.Run(source), 0u);
    EXPECT_EQ(SamplesOf(*ready.stage.Out()), expected) << isStream;
  }
}

TEST(CPUIPUnpackData, a_packed_monochrome_picture_comes_out) {
  CheckDog("formats/dog_mono10_96x64", ZYN_PIXEL_MONO10P, ZYN_PIXEL_MONO10PACKED);
}

TEST(CPUIPUnpackData, a_packed_bayer_picture_comes_out) {
  CheckDog("formats/dog_bayergr10_96x64", ZYN_PIXEL_BAYERGR10P, ZYN_PIXEL_BAYERGR10PACKED);
}

}  // namespace
