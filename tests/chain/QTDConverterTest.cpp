// Preparing a converter, and its gate.
#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "chain/ConverterFixture.h"

using namespace chain_test;
using QTDConverterTest = ConverterFixture;

TEST_F(QTDConverterTest, has_its_parameters_from_the_start) {
  QTD::PROPERTIES& list = converter.Parameters();
  EXPECT_EQ(list.GetString("class"), "QTDConverter");
  EXPECT_EQ(list.GetPointer("parent"), static_cast<ZynDisplayProcessor*>(&display));
  EXPECT_EQ(list.GetString("opengl"), "0");
  for (const char* later : {"@src", "@out", "@data"}) EXPECT_FALSE(list.Has(later)) << later;
  EXPECT_EQ(QTDConverter(nullptr, true).Parameters().GetString("opengl"), "1");
}

TEST_F(QTDConverterTest, starts_idle_and_closed) {
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_FALSE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_EQ(converter.Out(), nullptr);
}

TEST_F(QTDConverterTest, is_never_enabled) {
  EXPECT_FALSE(converter.Enable(true));
  EXPECT_FALSE(converter.IsEnabled());
  EXPECT_FALSE(converter.Enable(false));
}

// Preparing.

TEST_F(QTDConverterTest, prepares_for_the_picture_of_the_chain) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.GetState(), 1u);
  EXPECT_TRUE(converter.IsReady());
  ASSERT_NE(converter.GetImageInfo(true), nullptr);
  EXPECT_EQ(converter.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
  EXPECT_EQ(converter.GetImageInfo(true)->width, 4u);
  EXPECT_EQ(converter.GetImageInfo(true)->height, 3u);
  ASSERT_NE(converter.GetImageInfo(false), nullptr);
  EXPECT_EQ(converter.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QTDConverterTest, keeps_the_code_that_the_chain_ends_with_as_its_source) {
  chain.Parameters().Set("image.downscale", "1");
  Prepare(ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.GetImageInfo(true)->pixelType, ZYN_PIXEL_MONO8);
}

TEST_F(QTDConverterTest, refuses_to_prepare_for_null) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  const Picture output(4, 3, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.Init(nullptr, output), kBadArgument);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_EQ(converter.GetImageInfo(true), nullptr);
}

TEST_F(QTDConverterTest, cannot_prepare_without_an_output_format) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  EXPECT_EQ(converter.Init(source, nullptr), kNoMemory);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, cannot_prepare_for_an_output_code_that_does_not_exist) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  output->pixelType = 0x010801FF;
  EXPECT_NE(converter.Init(source, output), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, needs_a_parent_and_a_chain) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  QTDConverter orphan(nullptr, false);
  EXPECT_EQ(orphan.Init(source, output), kNotReady);
  EXPECT_EQ(converter.Init(source, output), kNotReady);  // "processor" is absent
  Publish(nullptr);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  display.Publish("processor", &source);  // a text that a host has overwritten
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  Publish(&chain);
  converter.Parameters().Set("parent", "0");
  EXPECT_EQ(converter.Init(source, output), kNotReady);
}

TEST_F(QTDConverterTest, does_not_follow_the_pointer_of_a_chain_that_is_gone) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  {
    QTDProcessor gone(nullptr, false);
    ASSERT_EQ(gone.Init(source), 0u);
    Publish(&gone);
    ASSERT_EQ(converter.Init(source, output), 0u);
  }
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kFailed);
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
}

TEST_F(QTDConverterTest, needs_a_chain_with_an_output_stage) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  ASSERT_EQ(chain.RemoveProcessor("image.output"), 0u);
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  Insert(nullptr, "image.output");  // one that is not prepared
  EXPECT_EQ(converter.Init(source, output), kNotReady);
  EXPECT_EQ(converter.GetState(), 0u);
}

TEST_F(QTDConverterTest, needs_a_source_of_the_size_of_the_chains_picture) {
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_RGB8);
  ASSERT_EQ(chain.Init(source), 0u);
  Publish(&chain);
  const Picture wide(5, 3, ZYN_PIXEL_MONO8), high(4, 4, ZYN_PIXEL_MONO8);
  const ZynImage empty{};
  EXPECT_EQ(converter.Init(wide, output), kNotReady);
  EXPECT_EQ(converter.Init(high, output), kNotReady);
  EXPECT_EQ(converter.Init(&empty, output), kNotReady);
}

TEST_F(QTDConverterTest, takes_its_own_records_to_prepare_anew) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_EQ(converter.Init(converter.GetImageInfo(true), converter.GetImageInfo(false)), 0u);
  EXPECT_EQ(converter.GetImageInfo(false)->pixelType, ZYN_PIXEL_RGB8);
}

TEST_F(QTDConverterTest, is_back_at_its_start_after_a_release) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  converter.Release();
  EXPECT_EQ(converter.GetState(), 0u);
  EXPECT_FALSE(converter.IsReady());
  EXPECT_EQ(converter.Out(), nullptr);
  EXPECT_EQ(converter.GetImageInfo(true), nullptr);
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), kBadArgument);
}

// The gate.

TEST_F(QTDConverterTest, grants_itself_to_one_caller_at_a_time) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  EXPECT_TRUE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 2u);
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 2u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
  EXPECT_TRUE(converter.OpenGate());
}

TEST_F(QTDConverterTest, keeps_a_finished_run_until_its_caller_closes_the_gate) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  ASSERT_TRUE(converter.OpenGate());
  ASSERT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_FALSE(converter.OpenGate());
  EXPECT_EQ(converter.GetState(), 8u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
}

TEST_F(QTDConverterTest, grants_itself_once_when_many_threads_ask) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::future<int>> askers;
    for (int thread = 0; thread < 4; ++thread) {
      askers.push_back(std::async(std::launch::async, [this] {
        int granted = 0;
        for (int attempt = 0; attempt < 20; ++attempt) granted += converter.OpenGate() ? 1 : 0;
        return granted;
      }));
    }
    int granted = 0;
    for (auto& asker : askers) granted += asker.get();
    EXPECT_EQ(granted, 1);
    converter.CloseGate();
  }
}

TEST_F(QTDConverterTest, answers_at_the_gate_without_waiting_for_a_run) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO8);
  const Picture source(4, 3, ZYN_PIXEL_MONO8), output(4, 3, ZYN_PIXEL_MONO8);
  Insert("image.output", "host")->onRun = [this] {
    EXPECT_EQ(converter.GetState(), 4u);
    EXPECT_FALSE(std::async(std::launch::async, [this] { return converter.OpenGate(); }).get());
  };
  EXPECT_EQ(converter.ProcessImage(source, output, nullptr), 0u);
  EXPECT_EQ(converter.GetState(), 8u);
}

TEST_F(QTDConverterTest, can_be_failed_from_outside) {
  Prepare(ZYN_PIXEL_MONO8, ZYN_PIXEL_RGB8);
  ASSERT_TRUE(converter.OpenGate());
  converter.Fail();
  EXPECT_EQ(converter.GetState(), 32u);
  EXPECT_TRUE(converter.CloseGate());
  EXPECT_EQ(converter.GetState(), 1u);
}
