// Code of the host's that the library calls with locks of its own held, and what must not wait for it.
#include <QChildEvent>
#include <chrono>
#include <memory>
#include <thread>

#include "QTD/display/LiveObjects.h"
#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/frame/Receivers.h"
#include "tests/display/HostCodeStage.h"
#include "tests/display/PictureFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

using Clock = std::chrono::steady_clock;

// A host's widget that runs code when a child comes in or goes.
class WatchingParent : public QWidget {
 public:
  std::function<void()> code;

 protected:
  void childEvent(QChildEvent* event) override {
    QWidget::childEvent(event);
    if (!code) return;
    const std::function<void()> once = std::move(code);
    code = nullptr;
    once();
  }
};

}  // namespace

class HostCode : public PictureTest {
 protected:
  // Has the receiver run `waits`, which needs one of the caller's locks, on the messenger thread, and removes
  // it from here meanwhile.
  void RemoveReceiverThat(std::function<void()> waits) {
    std::atomic<bool>& began = entered;
    receiver.OnMessage([this, waits, &began](const std::string& name) {
      if (name != "notification.test") return;
      began = true;
      waits();
      left = true;
    });
    display->AddNotification(&receiver);
    display->GetMessenger()->Post("notification.test", nullptr);
    while (!entered) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // until it waits
    const auto begin = Clock::now();
    display->DelNotification(&receiver);
    waited = Clock::now() - begin;
    leftInTime = left;
  }
  void ExpectBoundedWait() {
    EXPECT_FALSE(leftInTime);
    EXPECT_GE(waited, QTD::Receivers::kPatience);
    EXPECT_LT(waited, 10 * QTD::Receivers::kPatience);
    EXPECT_TRUE(WaitFor([&] { return left.load(); }));  // the lock is free again
  }

  std::atomic<bool> entered{false}, left{false};
  bool leftInTime = true;
  Clock::duration waited{};
};

TEST_F(HostCode, that_runs_while_the_viewer_is_made_may_remove_a_receiver) {
  const Watchdog watchdog("a removal during an initialisation");
  WatchingParent owner;
  owner.resize(200, 150);
  owner.show();
  display = std::make_unique<QTDDisplay>(&owner, false);
  owner.code = [this] {
    RemoveReceiverThat([this] { display->RunCommand("cmd.display.view.zoom.in", nullptr); });
  };
  EXPECT_EQ(display->Initialize(&image.record), 0u);
  ExpectBoundedWait();
  display.reset();
}

TEST_F(HostCode, in_a_stage_may_remove_a_receiver) {
  const Watchdog watchdog("a removal by a stage");
  Show();
  bool once = true;
  auto* const stage = new HostCodeStage([&] {
    if (once) {
      once = false;
      RemoveReceiverThat([this] { display->GetProcessor(); });
    }
    return 0u;
  });
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", stage), 0u);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitFor([&] { return waited != Clock::duration{}; }, 20000));
  ExpectBoundedWait();
}

TEST_F(HostCode, a_rebuild_is_asked_for_without_waiting_for_the_image_that_is_processed) {
  const Watchdog watchdog("a rebuild during an image");
  Show();
  bool ended = false;
  uint32_t result = 0;
  auto* const stage = new HostCodeStage([&] {
    ended = ended || EndsElsewhere([&] { result = Run("cmd.image.rebuild"); });
    return 0u;
  });
  ASSERT_EQ(display->GetProcessor()->InsertProcessor("image.unpacked", "host", stage), 0u);
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  ASSERT_TRUE(WaitForImages(2));
  EXPECT_TRUE(ended);
  EXPECT_EQ(result, 1u);
}

// The end of a chain runs code of the host's stages, and no lock of the display's is held meanwhile: others
// who need one come to their end.
TEST_F(HostCode, in_a_stage_that_goes_holds_up_nobody) {
  const struct {
    const char* name;
    std::function<void()> end;
  } kEnds[] = {
      {"RemoveProcessor", [this] { display->GetProcessor()->RemoveProcessor("host"); }},
      {"Uninitialize", [this] { display->Uninitialize(); }},
      {"Uninitialize on another thread", [this] { EndsElsewhere([this] { display->Uninitialize(); }); }},
      {"Initialize", [this] { display->Initialize(&image.record); }},
      {"deletion", [this] { display.reset(); }},
  };
  for (const auto& end : kEnds) {
    SCOPED_TRACE(end.name);
    const Watchdog watchdog(end.name);
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    int views = 0, chains = 0, calls = 0;
    QTDDisplay* const shown = display.get();
    ZynImgProcessingChain* const chain = shown->GetProcessor();
    auto* const stage = new PartingStage([&, shown] {
      ++calls;
      // As long as the object is there at all; its calls are refused when it goes.
      views += EndsElsewhere([shown] { shown->SetFit(1, false); });
      chains += EndsElsewhere([chain] { chain->FindProcessor("host"); });
    });
    ASSERT_EQ(chain->AddProcessor("host", stage), 0u);
    end.end();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(views, 1);
    EXPECT_EQ(chains, 1);
  }
}

// What the host deletes goes when the code that it is deleted from has returned.
TEST_F(HostCode, in_a_stage_may_delete_the_display_that_runs_it) {
  const Watchdog watchdog("a display that is deleted in a stage");
  ZynDisplay* const host = ZynDisplay_CreateComponent();
  ASSERT_EQ(ZynDisplay_Initialize(host, &parent, nullptr, &image.record), 0u);
  bool asked = false, gone = false, goneInside = false;
  class Last : public HostCodeStage {
   public:
    Last(std::function<uint32_t()> hostCode, bool* destroyed)
        : HostCodeStage(std::move(hostCode)), flag(destroyed) {}
    ~Last() override { *flag = true; }

   private:
    bool* flag;
  };
  auto* const stage = new Last(
      [&] {
        ZynDisplay_DeleteComponent(host);
        asked = true;
        QCoreApplication::processEvents();  // a retirement that is queued meanwhile waits as well
        goneInside = gone;
        return 0u;
      },
      &gone);
  ASSERT_EQ(static_cast<ZynDisplayImpl*>(host)->Controller()->GetProcessor()->AddProcessor("host", stage),
            0u);
  ASSERT_EQ(ZynDisplay_DisplayVideo(host, &image.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return gone; }));
  EXPECT_TRUE(asked);
  EXPECT_FALSE(goneInside);
  EXPECT_EQ(ZynDisplay_GetComponent(host), nullptr);
}

TEST_F(HostCode, in_a_stage_that_goes_with_the_hosts_widget_may_delete_the_display) {
  const Watchdog watchdog("a display that is deleted while its widget goes");
  auto owner = std::make_unique<QWidget>();
  owner->show();
  ZynDisplayProcessor* const host = ZynDisplayCPU::CreateComponent(owner.get());
  ASSERT_EQ(host->Initialize(&image.record), 0u);
  bool ended = false;
  auto* const stage = new PartingStage([&] {
    ZynDisplayCPU::DeleteComponent(host);
    ended = true;
  });
  ASSERT_EQ(host->GetProcessor()->AddProcessor("host", stage), 0u);
  owner.reset();
  EXPECT_TRUE(ended);
  EXPECT_TRUE(WaitFor([&] { return QTD::LiveCall(QTD::LiveObjects::Controllers(), host) ? false : true; }));
  Settle(20);
}

TEST_F(HostCode, in_a_stage_that_goes_with_the_hosts_widget_holds_up_nobody) {
  const Watchdog watchdog("a widget that goes with a display in it");
  auto owner = std::make_unique<QWidget>();
  owner->show();
  display = std::make_unique<QTDDisplay>(owner.get(), false);
  ASSERT_EQ(display->Initialize(&image.record), 0u);
  bool ended = false;
  auto* const stage = new PartingStage([&] { ended = EndsElsewhere([&] { display->GetProcessor(); }); });
  ASSERT_EQ(display->GetProcessor()->AddProcessor("host", stage), 0u);
  owner.reset();
  EXPECT_TRUE(ended);
  display.reset();
}

}  // namespace display_test
