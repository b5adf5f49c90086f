// Construction of the chain, and the composition of its list for a format.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "QTD/chain/QTDProcessor.h"
#include "ZynPixelFormat.h"
#include "chain/ChainFakes.h"

using chain_test::ByteOf;
using chain_test::FakeDisplay;
using chain_test::FakeStage;
using chain_test::Journal;
using chain_test::Picture;

namespace {

constexpr uint32_t kFailed = 0x80FF0001, kBadArgument = 0x80FF0007, kNoMemory = 0x80FF0009;

std::string Names(QTDProcessor& chain) {
  std::string names;
  for (int index = 0; index < chain.GetProcessorCount(); ++index) {
    names += std::string(chain.Stages().NameAt(index)) + " ";
  }
  return names;
}

}  // namespace

TEST(QTDProcessor, has_its_parameters_from_the_start) {
  FakeDisplay display;
  QTDProcessor chain(&display, true);
  QTD::PROPERTIES& list = chain.Parameters();
  EXPECT_EQ(list.GetString("class"), "QTDProcessor");
  EXPECT_EQ(list.GetPointer("display"), static_cast<ZynDisplayProcessor*>(&display));
  EXPECT_EQ(list.GetString("opengl"), "1");
  EXPECT_EQ(list.GetString("image.downscale"), "0");
  for (const char* later : {"@source.image", "@output.image", "time", "flip"})
    EXPECT_FALSE(list.Has(later)) << later;
  EXPECT_EQ(chain.GetParent(), display.GetComponent());
  EXPECT_EQ(chain.GetComponent(), static_cast<ZynComponent*>(&chain));
}

TEST(QTDProcessor, needs_no_owner) {
  QTDProcessor chain(nullptr, false);
  EXPECT_EQ(chain.Parameters().GetString("display"), "(nil)");
  EXPECT_EQ(chain.Parameters().GetString("opengl"), "0");
  EXPECT_EQ(chain.GetParent(), nullptr);
  EXPECT_EQ(chain.GetSurface(), nullptr);
}

TEST(QTDProcessor, knows_no_commands) {
  QTDProcessor chain(nullptr, false);
  EXPECT_EQ(chain.GetCommandTarget("any"), static_cast<ZynDisplayCommand*>(&chain));
  EXPECT_EQ(chain.RunCommand("any", nullptr), 0u);
}

TEST(QTDProcessorInit, refuses_null_and_leaves_the_list_empty) {
  Journal journal;
  QTDProcessor chain(nullptr, false);
  chain.AddProcessor("a", new FakeStage("a", &journal));
  EXPECT_EQ(chain.Init(nullptr), kBadArgument);
  EXPECT_EQ(chain.LastError(), 7u);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_FALSE(chain.IsReady());
  EXPECT_EQ(journal, (Journal{"a.release", "a.delete"}));
}

TEST(QTDProcessorInit, makes_the_stages_that_every_format_has) {
  QTDProcessor chain(nullptr, false);
  const Picture format(5, 3, ZYN_PIXEL_MONO12);
  EXPECT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(chain.LastError(), 0u);
  EXPECT_TRUE(chain.IsReady());
  EXPECT_EQ(Names(chain), "image.unpacked image.colorcorrection image.overlay image.output ");
  EXPECT_FALSE(chain.FindProcessor("image.unpacked")->IsEnabled());
  EXPECT_TRUE(chain.FindProcessor("image.output")->IsEnabled());
  ASSERT_NE(chain.GetImageInfo(true), nullptr);
  EXPECT_EQ(chain.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO12);
  ASSERT_NE(chain.GetImageInfo(false), nullptr);
  EXPECT_EQ(chain.GetImageInfo(false)->pixelType, ZYN_PIXEL_MONO12);
}

TEST(QTDProcessorInit, keeps_a_record_of_source_and_result) {
  struct OpenProcessor : QTDProcessor {
    using QTDProcessor::QTDProcessor;
    const ZynImage* Result() const { return outputInfo; }
  } chain(nullptr, false);
  EXPECT_EQ(chain.SourceRecord(), nullptr);
  chain.Parameters().Set("image.downscale", "1");
  const Picture format(6, 4, ZYN_PIXEL_MONO10);
  ASSERT_EQ(chain.Init(format), 0u);
  ASSERT_NE(chain.SourceRecord(), nullptr);
  EXPECT_EQ(chain.SourceRecord()->width, 6u);
  EXPECT_EQ(chain.SourceRecord()->height, 4u);
  EXPECT_EQ(chain.SourceRecord()->pixelType, ZYN_PIXEL_MONO10);
  ASSERT_NE(chain.Result(), nullptr);
  EXPECT_EQ(chain.Result()->width, 6u);
  EXPECT_EQ(chain.Result()->height, 4u);
  EXPECT_EQ(chain.Result()->pixelType, ZYN_PIXEL_MONO8);
  chain.Release();
  EXPECT_EQ(chain.SourceRecord(), nullptr);
  EXPECT_EQ(chain.Result(), nullptr);
  EXPECT_FALSE(chain.IsReady());
}

TEST(QTDProcessorInit, keeps_the_depth_of_the_source) {
  QTDProcessor chain(nullptr, false);
  const Picture image(3, 2, ZYN_PIXEL_MONO12);
  image.SetWord(2, 1, 0xABC);
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(out->pixelType, ZYN_PIXEL_MONO12);
  EXPECT_EQ(ByteOf(out, 4, 1), 0xBC);
  EXPECT_EQ(ByteOf(out, 5, 1), 0x0A);
}

TEST(QTDProcessorInit, reduces_to_eight_bits_at_the_head_with_downscale_1) {
  QTDProcessor chain(nullptr, false);
  chain.Parameters().Set("image.downscale", "1");
  const Picture image(3, 2, ZYN_PIXEL_MONO12);
  image.SetWord(0, 0, 0x123);
  image.SetWord(2, 1, 0xABC);
  ASSERT_EQ(chain.Init(image), 0u);
  EXPECT_EQ(chain.FindProcessor("image.unpacked")->GetImageInfo(false)->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(chain.FindProcessor("image.output")->GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  EXPECT_EQ(ByteOf(chain.Out(), 0, 0), 0x12);
  EXPECT_EQ(ByteOf(chain.Out(), 2, 1), 0xAB);
}

TEST(QTDProcessorInit, keeps_the_depth_with_any_other_downscale) {
  for (const char* value : {"0", "2", ""}) {
    QTDProcessor chain(nullptr, false);
    chain.Parameters().Set("image.downscale", value);
    const Picture format(3, 2, ZYN_PIXEL_MONO12);
    ASSERT_EQ(chain.Init(format), 0u);
    EXPECT_EQ(chain.GetImageInfo(false)->pixelType, ZYN_PIXEL_MONO12) << value;
  }
}

TEST(QTDProcessorInit, copies_the_picture_once) {
  QTDProcessor chain(nullptr, false);
  const Picture image(4, 2, ZYN_PIXEL_RGB8);
  for (uint32_t byte = 0; byte < 12; ++byte) image.Byte(byte, 1) = static_cast<uint8_t>(byte + 1);
  image->imageID = 42;
  ASSERT_EQ(chain.Init(image), 0u);
  ASSERT_EQ(chain.ProcessImage(image, nullptr, nullptr), 0u);
  // The disabled first stage hands the camera's image on; the last one has a picture of its own.
  EXPECT_EQ(chain.FindProcessor("image.unpacked")->Out(), static_cast<ZynImage*>(image));
  const ZynImage* const out = chain.Out();
  ASSERT_NE(out, nullptr);
  EXPECT_NE(out, static_cast<ZynImage*>(image));
  EXPECT_EQ(out->imageID, 42u);
  for (uint32_t byte = 0; byte < 12; ++byte) EXPECT_EQ(ByteOf(out, byte, 1), byte + 1);
}

TEST(QTDProcessorInit, fails_for_an_empty_picture_and_for_one_that_is_too_large) {
  for (const auto& size :
       {std::pair<uint32_t, uint32_t>{0, 4}, {4, 0}, {0x7FFFFFFF, 0x7FFFFFFF}, {4, 0xFFFFFFFF}}) {
    QTDProcessor chain(nullptr, false);
    ZynImage format{};
    QTD::ImageCreateHeader(&format, 4, 4, ZYN_PIXEL_MONO16);
    format.width = size.first;
    format.height = size.second;
    EXPECT_EQ(chain.Init(&format), kFailed);
    EXPECT_EQ(chain.LastError(), 1u);
    EXPECT_EQ(chain.GetProcessorCount(), 0);
    EXPECT_FALSE(chain.IsReady());
    EXPECT_EQ(chain.ProcessImage(&format, nullptr, nullptr), kFailed);
  }
}

TEST(QTDProcessorInit, rebuilds_everything_for_another_format) {
  Journal journal;
  QTDProcessor chain(nullptr, false);
  const Picture mono(4, 4, ZYN_PIXEL_MONO8), rgb(6, 2, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(mono), 0u);
  ASSERT_EQ(chain.AddProcessor("host", new FakeStage("host", &journal)), 0u);
  ASSERT_EQ(chain.ProcessImage(mono, nullptr, nullptr), 0u);
  EXPECT_EQ(chain.Timer().Count(), 1);
  ASSERT_EQ(chain.Init(rgb), 0u);
  EXPECT_EQ(Names(chain), "image.unpacked image.colorcorrection image.overlay image.output ");
  EXPECT_EQ(journal, (Journal{"host.run", "host.release", "host.delete"}));
  EXPECT_EQ(chain.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(chain.Timer().Count(), 0);
}

TEST(QTDProcessorInit, takes_a_record_of_its_own_stages) {
  QTDProcessor chain(nullptr, false);
  const Picture format(4, 4, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(format), 0u);
  EXPECT_EQ(chain.Init(chain.GetImageInfo(true)), 0u);
  EXPECT_EQ(chain.GetImageInfo(true)->width, 4u);
}

TEST(QTDProcessorInit, cannot_build_an_opengl_chain) {
  FakeDisplay display;
  QTDProcessor chain(&display, true);
  const Picture format(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_EQ(chain.Init(format), kFailed);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
}

TEST(QTDProcessorInit, reads_the_variant_each_time) {
  QTDProcessor chain(nullptr, true);
  const Picture format(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_EQ(chain.Init(format), kFailed);
  chain.Parameters().Set("opengl", "0");
  EXPECT_EQ(chain.Init(format), 0u);
}

TEST(QTDProcessorInit, leaves_no_stages_behind_when_a_parameter_is_no_number) {
  QTDProcessor chain(nullptr, false);
  const Picture format(4, 4, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(format), 0u);
  chain.Parameters().Set("image.downscale", "abc");
  EXPECT_THROW(chain.Init(format), std::invalid_argument);
  EXPECT_EQ(chain.GetProcessorCount(), 0);
  EXPECT_FALSE(chain.IsReady());
  chain.Parameters().Set("image.downscale", "0");
  EXPECT_EQ(chain.Init(format), 0u);
}

TEST(QTDProcessorInit, fails_with_9_when_the_format_has_no_header) {
  struct EmptyComposition : QTDProcessor {
    using QTDProcessor::QTDProcessor;
    uint32_t initCPU(const ZynImage*, const ZynImage*) override { return 0; }
  } chain(nullptr, false);
  Picture format(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_EQ(chain.Init(format), 0u);  // the last format is the source's own
  EXPECT_TRUE(chain.IsReady());
  format->pixelType = 0;
  EXPECT_EQ(chain.Init(format), kNoMemory);
  EXPECT_EQ(chain.LastError(), 9u);
  EXPECT_FALSE(chain.IsReady());
}
