// Host code calls every command from its receivers, on the messenger thread and on the GUI thread at once,
// while other threads of the host's set parameters and stream images.
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "QTD/display/ZynDisplayImpl.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/Watchdog.h"

namespace display_test {
namespace {

constexpr int kPasses = 8;  // of each receiver

struct Command {
  const char* name;
  QTD::ARGUMENTS args;
};

// Views change with each pass, so that a notification of the view follows.
std::vector<Command> Commands(int pass) {
  const std::string odd = std::to_string(pass % 2);
  return {
      {"cmd.display.view.zoom.in", {}},
      {"cmd.display.view.zoom.out", {{"zoom.coef", "1.5"}}},
      {"cmd.display.view.fit", {{"mode", odd}}},
      {"cmd.display.view.scale", {{"scale", pass % 2 ? "2.0" : "3.0"}}},
      {"cmd.display.view.translate", {{"pos.x", "3"}, {"pos.y", "4"}, {"cs.src", "win"}, {"cs.dst", "img"}}},
      {"cmd.display.view.at", {{"pos.x", "0.5"}, {"pos.y", "0." + odd}}},
      {"cmd.display.view.status", {}},
      {"cmd.display.view.info", {}},
      {"cmd.display.view.image", {}},
      {"cmd.display.view.nofication", {{"flags", "-1"}}},
      {"cmd.display.overlay.params", {{"text.clr", "255"}}},
      {"cmd.display.overlay.text.add",
       {{"text.text", "text"}, {"text.pos.x", "5"}, {"text.pos.y", "5"}, {"cs", "img"}}},
      {"cmd.display.overlay.rect.add",
       {{"rect.x", "1"}, {"rect.y", "1"}, {"rect.w", "9"}, {"rect.h", "9"}, {"objectID", "rect"}}},
      {"cmd.display.overlay.rect.del", {{"objectID", "rect"}}},
      {"cmd.display.overlay.del", {{"objectID", "nobody"}}},
      {"cmd.display.overlay.add", {{"type", "text"}, {"text.text", "text"}}},
      {"cmd.parameter.set", {{"name", "display.view.bgcolor"}, {"value", "5"}}},
      {"cmd.parameter.get", {{"name", "display.view.scale"}}},
      {"cmd.parameter.get", {{"name", "display.view.fit"}}},
      {"cmd.image.rebuild", {}},
      {"@anything", {}},
  };
}

}  // namespace

class EveryCommand : public testing::Test {
 protected:
  EveryCommand() {
    parent.resize(200, 150);
    parent.show();
    host = std::make_unique<ZynDisplayImpl>();
    controller = host->Controller();
  }

  uint32_t Run(const char* name, QTD::ARGUMENTS* args) {
    {
      const std::lock_guard<std::mutex> guard(lock);
      ran.insert(name);
    }
    return controller->RunCommand(name, args);
  }

  // All that a receiver may do, in a row.
  void RunAll(int pass, ZynDisplayCommand& other) {
    for (Command& command : Commands(pass)) {
      Run(command.name, &command.args);
      // The text that was just added.
      if (std::string(command.name) == "cmd.display.overlay.text.add") {
        QTD::ARGUMENTS added{{"objectID", command.args["objectID"]}};
        Run("cmd.display.overlay.text.del", &added);
      }
    }
    // A menu that is deleted before it is shown: nobody is there to close it.
    QTD::ARGUMENTS menu;
    Run("cmd.system.menu.create", &menu);
    Run("cmd.system.menu.delete", &menu);
    Run("cmd.system.menu.exec", &menu);
    ZynComponent& component = *controller->GetComponent();
    int64_t fit = 0;
    component.GetParameterInt("display.view.fit", &fit);
    component.SetParameterInt("display.view.bgcolor", 7);
    component.SetParameterString("text.text", "text");
    component.SetParameterInt("text.pos.x", 1);
    component.SetParameterInt("text.pos.y", 1);
    component.ExecuteCommand("text.add");
    ZynComponent& front = *host->GetComponent();
    front.SetParameterString("display.fit", "1");
    front.ExecuteCommand("display.zoom.in");
    front.ExecuteCommand("display.atcenter");

    HostImage output(ZYN_PIXEL_RGB8, kWidth, kHeight);
    host->ConvertImage(&image.record, &output.record);

    QTD::ARGUMENTS proc{{"proc", QTD::ToText(static_cast<const void*>(&other))}};
    Run("cmd.system.notification.add", &proc);
    Run("cmd.system.notification.del", &proc);
    controller->GetProcessor();
  }

  static constexpr uint32_t kWidth = 120, kHeight = 80;
  QWidget parent;
  HostImage image{ZYN_PIXEL_MONO8, kWidth, kHeight};
  Receiver onView, onImage, others;
  std::unique_ptr<ZynDisplayImpl> host;
  QTDDisplay* controller = nullptr;
  std::mutex lock;            // guards `ran`
  std::set<std::string> ran;  // names of commands
};

TEST_F(EveryCommand, runs_from_receivers_on_both_threads_at_once) {
  const Watchdog watchdog("commands from receivers on both threads", std::chrono::seconds(300));
  ASSERT_EQ(host->Initialize(&parent, nullptr, &image.record), 0u);
  std::atomic<int> viewPasses{0}, imagePasses{0};
  std::atomic<bool> stop{false};
  const std::thread::id gui = std::this_thread::get_id();
  onView.OnMessage([&](const std::string& name) {
    if (name != "notification.view" || stop || std::this_thread::get_id() == gui) return;
    RunAll(viewPasses, others);
    ++viewPasses;
  });
  onImage.OnMessage([&](const std::string& name) {
    if (name != "notification.image" || stop || std::this_thread::get_id() != gui) return;
    static thread_local bool inside = false;
    if (inside) return;  // an image inside of an image's own notification
    inside = true;
    RunAll(imagePasses, others);
    inside = false;
    ++imagePasses;
  });
  controller->AddNotification(&onView);
  controller->AddNotification(&onImage);
  controller->SetParameterInt("image.notification.flags.set", 1);

  std::atomic<int> finished{0};
  std::thread setter([&] {
    for (int round = 0; !stop; ++round) {
      host->SetParameterString("display.fit", std::to_string(round % 3).c_str());
      host->SetParameterInt("display.bg.color", round % 100);
      int64_t color = 0;
      host->GetParameterInt("display.bg.color", &color);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ++finished;
  });
  std::thread streamer([&] {
    HostImage streamed(ZYN_PIXEL_MONO8, kWidth, kHeight, 0, 100);
    while (!stop) {
      ++streamed.record.imageID;
      host->DisplayVideo(&streamed.record);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ++finished;
  });
  EXPECT_TRUE(WaitFor([&] { return viewPasses >= kPasses && imagePasses >= kPasses; }, 200000))
      << viewPasses << " and " << imagePasses;
  stop = true;
  EXPECT_TRUE(WaitFor([&] { return finished == 2; }, 60000));
  setter.join();
  streamer.join();
  controller->DelNotification(&onView);
  controller->DelNotification(&onImage);
  EXPECT_EQ(host->DisplayVideo(&image.record), 0u);
  EXPECT_TRUE(WaitFor([&] { return controller->LastError() == 0; }));
  for (const std::string& name : QTDDisplay::CommandNames())
    EXPECT_EQ(ran.count(name), 1u) << name << " was left out";
  host.reset();
}

}  // namespace display_test
