// Construction, initialisation, re-initialisation and destruction of the controller.
#include <QChildEvent>
#include <QHBoxLayout>
#include <QPointer>
#include <QTimer>
#include <thread>

#include "QTD/chain/QTDProcessor.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"

namespace display_test {

using Lifecycle = DisplayTest;

TEST_F(Lifecycle, has_its_parameters_in_order_after_creation) {
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"class", "QTDDisplay"},
      {"system.opengl", "0"},
      {"system.parentWidget", QTD::ToText(static_cast<const void*>(&parent))},
      // The pointer that a host holds.
      {"system.objectID",
       QTD::ToText(static_cast<const void*>(static_cast<ZynDisplayProcessor*>(display.get())))},
      {"system.silent", "1"},
      {"system.timer", "1000"},
      {"display.init.view.fit", "1"},
      {"display.init.view.at.x", "0.500000"},
      {"display.init.view.at.y", "0.500000"},
      {"display.view.fit", "3"},
      {"display.view.bgcolor", "12632256"},
      {"display.overlay.text.font", "default"},
      {"display.overlay.text.clr", "0"},
      {"display.overlay.status.font", "medium"},
      {"display.overlay.status.clr", "15480"},
      {"processing.image.downscale", "0"},
      {"processor", "0"},
      {"display.view.status", "0"},
  };
  ASSERT_EQ(display->GetParameterCount(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(display->Parameters().NameAt(static_cast<int>(i)), expected[i].first);
    EXPECT_EQ(Parameter(expected[i].first.c_str()), expected[i].second) << expected[i].first;
  }
}

TEST_F(Lifecycle, refuses_a_format_without_size_and_makes_no_viewer) {
  HostImage image(ZYN_PIXEL_MONO8, 16, 16);
  image.record.height = 0;
  EXPECT_EQ(display->Initialize(&image.record), Composed(7));
  image.record.height = 16;
  image.record.width = 0;
  EXPECT_EQ(display->Initialize(&image.record), Composed(7));
  EXPECT_EQ(display->Initialize(nullptr), Composed(7));
  EXPECT_EQ(display->Viewer(), nullptr);
  EXPECT_EQ(display->LastError(), 7u);
}

TEST_F(Lifecycle, is_ready_after_initialisation) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  ASSERT_NE(display->Viewer(), nullptr);
  ZynImgProcessingChain* chain = display->GetProcessor();
  ASSERT_NE(chain, nullptr);
  EXPECT_EQ(display->Parameters().GetPointer("processor"), chain);
  EXPECT_EQ(Parameter("strict"), "0");
  EXPECT_EQ(Parameter("surface"),
            QTD::ToText(static_cast<const void*>(display->Viewer()->Window()->Surface())));
  EXPECT_NE(chain->FindProcessor("image.display"), nullptr);
  EXPECT_EQ(display->findChildren<QTimer*>().size(), 1);
  EXPECT_EQ(display->findChildren<QTimer*>().first()->interval(), 1000);
}

TEST_F(Lifecycle, applies_the_initial_fit_and_the_timer_interval) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  display->Parameters().Set("display.init.view.fit", "3");
  display->Parameters().Set("system.timer", "250");
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  EXPECT_EQ(display->Viewer()->Window()->Screen()->properties.GetInt("fit"), 3);
  EXPECT_EQ(display->findChildren<QTimer*>().first()->interval(), 250);
}

TEST_F(Lifecycle, hands_the_downscale_setting_to_the_chain) {
  HostImage image(ZYN_PIXEL_MONO12, 64, 48);
  display->Parameters().Set("processing.image.downscale", "1");
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const ZynImage* info = display->GetProcessor()->FindProcessor("image.unpacked")->GetImageInfo(false);
  EXPECT_EQ(info->pixelType, ZYN_PIXEL_MONO8);
}

TEST_F(Lifecycle, keeps_the_viewer_of_the_same_variant) {
  HostImage small(ZYN_PIXEL_MONO8, 64, 48), other(ZYN_PIXEL_RGB8, 32, 20);
  ASSERT_EQ(display->Initialize(&small.record), 0u);
  const QPointer<QTDViewer> viewer = display->Viewer();
  ASSERT_EQ(display->Initialize(&other.record), 0u);
  EXPECT_EQ(display->Viewer(), viewer.data());
}

TEST_F(Lifecycle, replaces_the_viewer_of_the_other_variant_and_takes_its_bar_along) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const QPointer<QTDViewer> viewer = display->Viewer();
  const auto children = parent.findChildren<QWidget*>().size();
  display->Parameters().Set("system.opengl", "1");
  display->Initialize(&image.record);
  EXPECT_TRUE(viewer.isNull());
  display->Parameters().Set("system.opengl", "0");
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  EXPECT_EQ(parent.findChildren<QWidget*>().size(), children);
}

TEST_F(Lifecycle, without_a_parent_there_is_no_window_and_the_answer_is_1) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  QTDDisplay alone(nullptr, false);
  EXPECT_EQ(alone.Initialize(&image.record), Composed(1));
  EXPECT_EQ(alone.LastError(), 1u);
  EXPECT_EQ(alone.GetProcessor(), nullptr);
  EXPECT_TRUE(alone.findChildren<QTimer*>().isEmpty());
}

TEST_F(Lifecycle, a_parent_pointer_that_is_no_widget_counts_as_none) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  display->Parameters().Set("system.parentWidget", "0x1234");
  EXPECT_EQ(display->Initialize(&image.record), Composed(1));
}

TEST_F(Lifecycle, a_format_that_no_stage_takes_fails_silently_by_default) {
  HostImage unknown(ZYN_PIXEL_MONO8, 64, 48);
  unknown.record.pixelType = 0x010801FF;  // no such row
  EXPECT_EQ(display->Initialize(&unknown.record), 0u);
  EXPECT_NE(display->GetProcessor(), nullptr);  // the chain stays, without a format
  EXPECT_EQ(Parameter("processor"), "0");
  EXPECT_EQ(display->DisplayVideo(&unknown.record), 0u);
  EXPECT_TRUE(WaitFor([this] { return display->LastError() == 8; }));
}

TEST_F(Lifecycle, a_refused_format_fails_when_silence_is_off_and_only_the_viewer_stays) {
  HostImage unknown(ZYN_PIXEL_MONO8, 64, 48);
  unknown.record.pixelType = 0x010801FF;
  display->Parameters().Set("system.silent", "0");
  EXPECT_EQ(display->Initialize(&unknown.record), Composed(1));
  EXPECT_EQ(display->LastError(), 1u);
  EXPECT_EQ(display->GetProcessor(), nullptr);
  EXPECT_NE(display->Viewer(), nullptr);
  EXPECT_TRUE(display->findChildren<QTimer*>().isEmpty());
}

TEST_F(Lifecycle, a_picture_beyond_the_buffers_is_a_failed_build) {
  HostImage image(ZYN_PIXEL_MONO8, 1, 1);
  image.record.width = image.record.height = 0xFFFFFFFFu;
  display->Parameters().Set("system.silent", "0");
  EXPECT_EQ(display->Initialize(&image.record), Composed(1));
  image.record.width = image.record.height = 50000;  // 2.5 GB
  EXPECT_EQ(display->Initialize(&image.record), Composed(1));
}

TEST_F(Lifecycle, a_parameter_that_is_no_number_fails_the_initialisation) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  display->Parameters().Set("system.timer", "soon");
  EXPECT_EQ(display->Initialize(&image.record), Composed(1));
  display->Parameters().Set("system.timer", "1000");
  EXPECT_EQ(display->Initialize(&image.record), 0u);
}

TEST_F(Lifecycle, uninitialize_frees_all_but_the_viewer) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  display->Uninitialize();
  EXPECT_EQ(display->GetProcessor(), nullptr);
  EXPECT_EQ(Parameter("processor"), "0");
  EXPECT_TRUE(display->findChildren<QTimer*>().isEmpty());
  EXPECT_NE(display->Viewer(), nullptr);
}

TEST_F(Lifecycle, initialises_from_another_thread_while_the_gui_thread_runs) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  std::atomic<int64_t> result{-1};
  std::thread host([&] { result = display->Initialize(&image.record); });
  EXPECT_TRUE(WaitFor([&] { return result >= 0; }));
  host.join();
  EXPECT_EQ(result, 0);
}

TEST_F(Lifecycle, deleting_the_parent_first_closes_the_display) {
  auto owner = std::make_unique<QWidget>();
  owner->resize(100, 80);
  owner->show();
  QTDDisplay other(owner.get(), false);
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(other.Initialize(&image.record), 0u);
  ASSERT_EQ(other.DisplayVideo(&image.record), 0u);
  Settle();
  owner.reset();
  EXPECT_EQ(other.Viewer(), nullptr);
  EXPECT_EQ(other.DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return other.LastError() == 8; }));
  EXPECT_EQ(other.Initialize(&image.record), Composed(1));  // its widget is gone
}

TEST_F(Lifecycle, uses_a_layout_that_the_parent_has) {
  auto* layout = new QHBoxLayout(&parent);
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  EXPECT_EQ(parent.layout(), layout);
  display.reset();
  EXPECT_EQ(parent.layout(), layout);
  EXPECT_TRUE(parent.findChildren<QWidget*>().isEmpty());
}

TEST_F(Lifecycle, a_message_of_another_name_has_no_effect) {
  EXPECT_EQ(display->RunCommand("@something", nullptr), 0u);
  EXPECT_EQ(display->Viewer(), nullptr);
}

TEST_F(Lifecycle, initialises_by_message) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  QTD::ARGUMENTS args{{"inputImageFormat", QTD::ToText(static_cast<const void*>(&image.record))}};
  EXPECT_EQ(display->RunCommand("@init.display", &args), 0u);
  EXPECT_NE(display->GetProcessor(), nullptr);
}

TEST_F(Lifecycle, a_message_without_a_format_is_refused_and_leaves_the_display_as_it_is) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  ZynImgProcessingChain* const chain = display->GetProcessor();
  HostImage flat(ZYN_PIXEL_MONO8, 64, 48), narrow(ZYN_PIXEL_MONO8, 64, 48);
  flat.record.height = 0;
  narrow.record.width = 0;
  const QTD::ARGUMENTS wrong[] = {
      {},
      {{"inputImageFormat", ""}},
      {{"inputImageFormat", "(nil)"}},
      {{"inputImageFormat", "none"}},
      {{"inputImageFormat", QTD::ToText(static_cast<const void*>(&flat.record))}},
      {{"inputImageFormat", QTD::ToText(static_cast<const void*>(&narrow.record))}},
  };
  for (QTD::ARGUMENTS args : wrong) {
    display->DisplayVideo(nullptr);  // clears the error
    EXPECT_EQ(display->RunCommand("@init.display", &args), 0u);
    EXPECT_EQ(display->LastError(), 7u);
    EXPECT_EQ(display->GetProcessor(), chain);
    EXPECT_EQ(Parameter("processor"), QTD::ToText(static_cast<const void*>(chain)));
  }
  EXPECT_EQ(display->RunCommand("@init.display", nullptr), 0u);
  EXPECT_EQ(display->LastError(), 7u);
  EXPECT_EQ(display->GetProcessor(), chain);
  EXPECT_EQ(display->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([this] { return display->OutputRate().Total() == 1; }));
}

TEST_F(Lifecycle, may_be_initialised_with_a_record_of_its_own_chain) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  const ZynImage* const own = display->GetProcessor()->GetImageInfo(true);
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(display->Initialize(own), 0u);
  const ZynImage* const made = display->GetProcessor()->GetImageInfo(true);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->width, 64u);
  EXPECT_EQ(made->height, 48u);
  EXPECT_EQ(made->pixelType, ZYN_PIXEL_MONO8);
}

TEST_F(Lifecycle, the_status_timer_runs_after_a_change_of_variant) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  display->Parameters().Set("system.opengl", "1");
  display->Initialize(&image.record);
  display->Parameters().Set("system.opengl", "0");
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  EXPECT_EQ(display->findChildren<QTimer*>().size(), 1);
}

TEST_F(Lifecycle, a_display_without_a_window_gets_one_when_a_parent_is_given) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  QTDDisplay late(nullptr, false);
  EXPECT_EQ(late.Initialize(&image.record), Composed(1));
  late.Parameters().Set("system.parentWidget", QTD::ToText(static_cast<const void*>(&parent)));
  EXPECT_EQ(late.Initialize(&image.record), 0u);
}

// A host's widget that runs code when a child comes in.
class MeddlingParent : public QWidget {
 public:
  std::function<void()> onChild;

 protected:
  void childEvent(QChildEvent* event) override {
    if (event->added() && onChild) onChild();
    QWidget::childEvent(event);
  }
};

TEST_F(Lifecycle, host_code_that_uninitialises_while_the_viewer_is_made_leaves_the_display_its_timer) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  MeddlingParent owner;
  QTDDisplay other(&owner, false);
  int meddled = 0;
  owner.onChild = [&] {
    ++meddled;
    other.Uninitialize();
  };
  EXPECT_EQ(other.Initialize(&image.record), 0u);
  EXPECT_GT(meddled, 0);
  EXPECT_NE(other.GetProcessor(), nullptr);
  EXPECT_EQ(other.findChildren<QTimer*>().size(), 1);
  owner.onChild = nullptr;
  other.Uninitialize();
  EXPECT_EQ(other.GetProcessor(), nullptr);
}

TEST_F(Lifecycle, pictures_of_more_than_12_megapixels_are_strict_where_the_surface_is) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  display->Viewer()->Window()->Surface()->properties.Set("gl.strict", "1");
  ZynImage large = image.record;
  large.width = 4000;
  large.height = 3000;  // exactly 12 megapixels
  ASSERT_EQ(display->Initialize(&large), 0u);
  EXPECT_EQ(Parameter("strict"), "0");
  large.height = 3001;
  ASSERT_EQ(display->Initialize(&large), 0u);
  EXPECT_EQ(Parameter("strict"), "1");
  display->Viewer()->Window()->Surface()->properties.Set("gl.strict", "0");
  ASSERT_EQ(display->Initialize(&large), 0u);
  EXPECT_EQ(Parameter("strict"), "0");
}

TEST_F(Lifecycle, a_message_from_another_thread_waits_for_the_gui_thread_and_clears_the_error) {
  HostImage image(ZYN_PIXEL_MONO8, 64, 48);
  image.record.width = 0;
  display->Initialize(&image.record);
  ASSERT_EQ(display->LastError(), 7u);
  std::atomic<bool> answered{false};
  std::thread host([&] {
    display->RunCommand("@something", nullptr);
    answered = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(answered);
  EXPECT_TRUE(WaitFor([&] { return answered.load(); }));
  host.join();
  EXPECT_EQ(display->LastError(), 0u);
}

}  // namespace display_test
