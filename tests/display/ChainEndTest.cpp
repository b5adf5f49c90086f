// The end of a chain runs code of the host's stages: it waits for the library's locks to be free, and for the
// stages of a chain that the host runs by itself.
#include <thread>

#include "QTD/display/LiveObjects.h"
#include "tests/display/HostCodeStage.h"
#include "tests/display/PictureFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

class ChainEnd : public PictureTest {
 protected:
  struct End {
    const char* name;
    std::function<void()> ask;
  };
  const End kEnds[2] = {
      {"Uninitialize", [this] { display->Uninitialize(); }},
      {"Initialize", [this] { EXPECT_EQ(display->Initialize(&image.record), 0u); }},
  };

  // Its end waits for two calls on another thread, and counts those that came to an end.
  void AddPartingStage() {
    ended = calls = 0;
    auto* const stage = new PartingStage([this, shown = display.get()] {
      ++calls;
      ended += EndsElsewhere([this, shown] { shown->DisplayVideo(&image.record); });
      ended += EndsElsewhere([shown] { shown->GetProcessor(); });
    });
    ASSERT_EQ(display->GetProcessor()->AddProcessor("parting", stage), 0u);
  }

  int calls = 0, ended = 0;
};

}  // namespace

TEST_F(ChainEnd, that_a_notification_asks_for_comes_without_the_locks_of_the_image) {
  Start(image);
  for (const End& end : kEnds) {
    for (const bool runsEvents : {false, true}) {
      SCOPED_TRACE(std::string(end.name) + (runsEvents ? " and the event loop" : ""));
      const Watchdog watchdog(end.name);
      ASSERT_EQ(display->Initialize(&image.record), 0u);
      AddPartingStage();
      bool asked = false;
      int inside = 0;
      receiver.OnMessage([&](const std::string& name) {
        if (name != "notification.image" || asked) return;
        asked = true;
        end.ask();
        if (runsEvents) Settle(20);
        inside = calls;
      });
      ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
      ASSERT_TRUE(WaitFor([&] { return asked; }));
      EXPECT_TRUE(WaitFor([&] { return calls == 1 && ended == 2; }));
      EXPECT_EQ(inside, 0);
      receiver.OnMessage(nullptr);
    }
  }
}

TEST_F(ChainEnd, that_was_put_off_comes_with_the_display_at_the_latest) {
  Start(image);
  const Watchdog watchdog("a display that goes before the chain's end");
  AddPartingStage();
  bool asked = false;
  receiver.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || asked) return;
    display->Uninitialize();
    asked = true;
    QCoreApplication::removePostedEvents(display.get());
  });
  ASSERT_EQ(display->DisplayVideo(&image.record), 0u);
  display->slotCheckIncomingBuffer();
  ASSERT_TRUE(asked);
  EXPECT_EQ(calls, 0);
  display.reset();
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(ended, 2);
}

// A chain that the host runs by itself, on the GUI thread.
namespace {

class HostRunsChain : public testing::Test {
 protected:
  void SetUp() override {
    owner = std::make_unique<QWidget>();
    owner->resize(100, 80);
    owner->show();
    display = ZynDisplayCPU::CreateComponent(owner.get());
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    chain = display->GetProcessor();
  }
  void TearDown() override { ZynDisplayCPU::DeleteComponent(display); }

  // Runs the chain with `code` in a stage, once.
  void RunWith(std::function<void()> code) {
    auto* const stage = new HostCodeStage([code = std::move(code)]() mutable {
      if (code) std::exchange(code, nullptr)();
      return 0u;
    });
    ASSERT_EQ(chain->InsertProcessor("image.unpacked", "host", stage), 0u);
    chain->ProcessImage(&image.record, nullptr, nullptr);
  }
  void AddPartingStage() {
    ASSERT_EQ(chain->AddProcessor("parting", new PartingStage([this] { ++parted; })), 0u);
  }
  bool IsAlive() { return static_cast<bool>(QTD::LiveCall(QTD::LiveObjects::Controllers(), display)); }

  HostImage image{ZYN_PIXEL_MONO8, 64, 48, 0, 7};
  HostImage output{ZYN_PIXEL_RGB8, 64, 48};
  std::unique_ptr<QWidget> owner;
  ZynDisplayProcessor* display = nullptr;
  ZynImgProcessingChain* chain = nullptr;
  int parted = 0;
};

}  // namespace

TEST_F(HostRunsChain, and_a_stage_may_end_it) {
  const struct {
    const char* name;
    std::function<void()> ask;
  } kEnds[] = {
      {"Uninitialize", [this] { display->Uninitialize(); }},
      {"Initialize", [this] { EXPECT_EQ(display->Initialize(&image.record), 0u); }},
      {"the event loop",
       [this] {
         display->Uninitialize();
         Settle(20);
       }},
      {"widget", [this] { owner.reset(); }},
  };
  for (const auto& end : kEnds) {
    SCOPED_TRACE(end.name);
    const Watchdog watchdog(end.name);
    ASSERT_EQ(display->Initialize(&image.record), 0u);
    chain = display->GetProcessor();
    parted = 0;
    AddPartingStage();
    int inside = 0;
    RunWith([&] {
      end.ask();
      inside = parted;
    });
    EXPECT_EQ(inside, 0);
    EXPECT_TRUE(WaitFor([&] { return parted == 1; }));
  }
}

TEST_F(HostRunsChain, and_a_stage_may_delete_the_display) {
  const Watchdog watchdog("a display that is deleted in a stage");
  AddPartingStage();
  bool alive = false;
  RunWith([&] {
    ZynDisplayCPU::DeleteComponent(display);
    Settle(20);
    alive = parted == 0;
  });
  EXPECT_TRUE(alive);
  EXPECT_TRUE(WaitFor([&] { return !IsAlive(); }));
  Settle(20);
  EXPECT_EQ(parted, 1);
}

// A stage that asks for the display's locks has the chain's: who has the former must not wait for the latter.
TEST_F(HostRunsChain, and_a_stage_may_delete_the_window_while_another_thread_wants_the_chain) {
  const struct {
    const char* name;
    std::function<void()> want;
  } kWants[] = {
      {"InitConverter", [this] { display->InitConverter(&output.record); }},
      {"ConvertImage", [this] { display->ConvertImage(&image.record, &output.record); }},
      {"Uninitialize", [this] { display->Uninitialize(); }},
  };
  for (const auto& other : kWants) {
    for (const bool deletes : {false, true}) {
      SCOPED_TRACE(std::string(other.name) + (deletes ? " and a deletion" : " and a command"));
      const Watchdog watchdog(other.name);
      QWidget another;
      another.resize(100, 80);
      another.show();
      display->GetComponent()->SetParameterString("system.parentWidget",
                                                  QTD::ToText(static_cast<const void*>(&another)).c_str());
      display->GetComponent()->SetParameterBool("system.opengl", false);
      owner.reset();
      ASSERT_EQ(display->Initialize(&image.record), 0u);
      display->ReleaseConverter();
      chain = display->GetProcessor();
      std::atomic<bool> done{false};
      std::thread thread;
      RunWith([&] {
        thread = std::thread([&] {
          other.want();
          done = true;
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(60));  // until it waits
        if (deletes) {
          for (QWindow* window : QGuiApplication::allWindows()) {
            if (window->inherits("QTDWindow")) return delete window;
          }
        }
        QTD::ARGUMENTS args{{"name", "system.silent"}};
        display->RunCommand("cmd.parameter.get", &args);
        EXPECT_EQ(args["value"], "1");
      });
      EXPECT_TRUE(WaitFor([&] { return done.load(); }));
      thread.join();
      display->Uninitialize();
      Settle(10);
    }
  }
}

}  // namespace display_test
