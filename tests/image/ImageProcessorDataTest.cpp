#include "QTD/image/ImageProcessorData.h"

#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <vector>

#include "QTD/frame/ComponentImpl.h"
#include "QTD/image/ImageRecord.h"
#include "ZynPixelFormat.h"

namespace {

// Opens what stages use.
class Stage : public QTD::ImageProcessorData {
 public:
  using ImageProcessorData::enableCount;
  using ImageProcessorData::ImageProcessorData;
  using ImageProcessorData::lastError;
  using ImageProcessorData::lock;
  using ImageProcessorData::name;
  using ImageProcessorData::out;
  using ImageProcessorData::outputInfo;
  using ImageProcessorData::ready;
  using ImageProcessorData::sourceInfo;
};

ZynImage* Header() {
  return QTD::ImageCreateHeader(nullptr, 4, 4, ZYN_PIXEL_MONO8);
}

TEST(ImageProcessorData, starts_empty_enabled_and_not_ready) {
  QTD::ComponentImpl parent;
  Stage stage(&parent);
  EXPECT_EQ(stage.name, "");
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.GetImageInfo(true), nullptr);
  EXPECT_EQ(stage.GetImageInfo(false), nullptr);
  EXPECT_EQ(stage.lastError, 0u);
  EXPECT_EQ(stage.enableCount, 1);
  EXPECT_TRUE(stage.IsEnabled());
  EXPECT_FALSE(stage.IsReady());
  EXPECT_EQ(stage.GetParent(), &parent);
  EXPECT_EQ(Stage().GetParent(), nullptr);
}

TEST(ImageProcessorData, gives_the_source_information_where_there_is_no_output_information) {
  Stage stage;
  stage.sourceInfo = Header();
  EXPECT_EQ(stage.GetImageInfo(true), stage.sourceInfo);
  EXPECT_EQ(stage.GetImageInfo(false), stage.sourceInfo);
  stage.outputInfo = Header();
  EXPECT_EQ(stage.GetImageInfo(true), stage.sourceInfo);
  EXPECT_EQ(stage.GetImageInfo(false), stage.outputInfo);
}

TEST(ImageProcessorData, enables_by_counting) {
  Stage stage;
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_TRUE(stage.Enable(false));
  EXPECT_FALSE(stage.Enable(false));
  EXPECT_FALSE(stage.IsEnabled());
}

TEST(ImageProcessorData, never_counts_below_0) {
  Stage stage;
  EXPECT_FALSE(stage.Enable(false));
  EXPECT_FALSE(stage.Enable(false));
  EXPECT_EQ(stage.enableCount, 0);
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_TRUE(stage.IsEnabled());
}

TEST(ImageProcessorData, keeps_a_full_count) {
  Stage stage;
  stage.enableCount = INT_MAX;
  EXPECT_TRUE(stage.Enable(true));
  EXPECT_EQ(stage.enableCount, INT_MAX);
}

TEST(ImageProcessorData, counts_exactly_from_several_threads) {
  Stage stage;
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&stage] {
      for (int turn = 0; turn < 5000; ++turn) stage.Enable(true);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(stage.enableCount, 20001);
}

TEST(ImageProcessorData, reset_frees_the_records_and_restores_the_start) {
  Stage stage;
  stage.sourceInfo = Header();
  stage.outputInfo = Header();
  ZynImage picture{};
  stage.out = &picture;
  stage.ready = true;
  stage.Enable(false);
  EXPECT_EQ(stage.Reset(), 0u);
  EXPECT_EQ(stage.sourceInfo, nullptr);
  EXPECT_EQ(stage.outputInfo, nullptr);
  EXPECT_EQ(stage.Out(), nullptr);
  EXPECT_EQ(stage.enableCount, 1);
  EXPECT_FALSE(stage.IsReady());
}

TEST(ImageProcessorData, reset_keeps_name_and_last_error) {
  Stage stage;
  stage.name = "image.cpu";
  stage.lastError = 9;
  stage.Reset();
  EXPECT_EQ(stage.name, "image.cpu");
  EXPECT_EQ(stage.lastError, 9u);
}

TEST(ImageProcessorData, reset_frees_a_shared_record_once) {
  Stage stage;
  stage.sourceInfo = stage.outputInfo = Header();
  EXPECT_EQ(stage.Reset(), 0u);  // a second free would abort
  EXPECT_EQ(stage.sourceInfo, nullptr);
  EXPECT_EQ(stage.outputInfo, nullptr);
  EXPECT_EQ(stage.Reset(), 0u);
}

TEST(ImageProcessorData, reset_works_within_the_lock) {
  Stage stage;
  const QTD::RMutexLock guard(stage.lock);
  EXPECT_EQ(stage.Reset(), 0u);
}

TEST(ImageProcessorData, the_destructor_frees_the_records) {
  Stage stage;  // the leak check sees the records if they stay
  stage.sourceInfo = Header();
  stage.outputInfo = Header();
}

}  // namespace
