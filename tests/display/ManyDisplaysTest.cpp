// Several displays in one process, and very many one after the other.
#include <malloc.h>

#include <QMouseEvent>
#include <array>
#include <fstream>
#include <thread>

#include "QTD/display/ZynDisplayImpl.h"
#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/Sanitized.h"

namespace display_test {

namespace {

constexpr const char* kOwner = "test.display";  // goes with every message of a display

// Notes by name what it is told, and whose messages those were.
class Listener : public ZynDisplayCommand {
 public:
  explicit Listener(int number) : own(QTD::ToText(number)) {}
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    std::lock_guard<std::mutex> guard(lock);
    ++counts[name];
    const bool mine = args && (*args)[kOwner] == own;
    if (!mine) ++foreign;
    if (args && args->count("result") && (*args)["result"] != "0") ++failed;
    return 0;
  }
  int Count(const char* name) {
    std::lock_guard<std::mutex> guard(lock);
    return counts[name];
  }
  int Foreign() {
    std::lock_guard<std::mutex> guard(lock);
    return foreign;
  }
  int Failed() {
    std::lock_guard<std::mutex> guard(lock);
    return failed;
  }
  void Clear() {
    std::lock_guard<std::mutex> guard(lock);
    counts.clear();
  }

 private:
  const std::string own;
  std::mutex lock;  // guards what follows
  std::map<std::string, int> counts;
  int foreign = 0, failed = 0;
};

struct Format {
  uint32_t pixelType, width, height;
};

constexpr Format kFormats[] = {{ZYN_PIXEL_MONO8, 320, 240},
                               {ZYN_PIXEL_MONO12, 101, 77},
                               {ZYN_PIXEL_RGB8, 33, 210},
                               {ZYN_PIXEL_MONO16, 640, 31}};

// One of the displays, with a host of its own around it.
struct One {
  explicit One(int index)
      : number(index),
        image(kFormats[index].pixelType, kFormats[index].width, kFormats[index].height),
        listener(index) {
    parent.resize(150 + 20 * index, 120 + 10 * index);
    parent.show();
    display = ZynDisplay_CreateComponent();
    Controller().GetMessenger()->GetCommonProperties()->Set(kOwner, QTD::ToText(index));
    Controller().AddNotification(&listener);
    Controller().SetParameterInt("image.notification.flags.set", 1);
    EXPECT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  }
  ~One() { ZynDisplay_DeleteComponent(display); }
  One(const One&) = delete;
  One& operator=(const One&) = delete;

  QTDDisplay& Controller() const { return *static_cast<ZynDisplayImpl*>(display)->Controller(); }
  QTDWindow& Window() const { return *Controller().Viewer()->Window(); }
  QTDScreen& Screen() const { return *Window().Screen(); }
  uint32_t Run(const char* name, QTD::ARGUMENTS args) const { return Controller().RunCommand(name, &args); }
  std::string Object(const char* id, const char* key) const {
    QTD::PROPERTIES list;
    return Window().Objects().get(id, &list) ? list.GetString(key) : "no object";
  }
  double Width() const { return Screen().Picture().width * Screen().Scale(); }
  double Height() const { return Screen().Picture().height * Screen().Scale(); }

  const int number;
  HostImage image;
  Listener listener;
  QWidget parent;
  ZynDisplay* display = nullptr;
};

class FourDisplays : public testing::Test {
 protected:
  FourDisplays() {
    for (int i = 0; i < 4; ++i) all[static_cast<size_t>(i)] = std::make_unique<One>(i);
  }

  // What one display is told reaches its own listener and no other one.
  void ExpectHeardByOneAlone(const char* name, const std::function<void(One&)>& act) {
    for (const auto& acting : all) {
      Settle(30);  // what is still on its way
      for (const auto& one : all) one->listener.Clear();
      act(*acting);
      EXPECT_TRUE(WaitFor([&] { return acting->listener.Count(name) > 0; })) << acting->number;
      Settle(30);
      for (const auto& one : all) {
        const int heard = one == acting ? 0 : one->listener.Count(name);
        EXPECT_EQ(heard, 0) << one->number << " of " << acting->number << ": " << name;
      }
    }
  }

  std::array<std::unique_ptr<One>, 4> all;
};

}  // namespace

TEST_F(FourDisplays, show_their_own_streams_and_obey_their_own_commands) {
  std::atomic<bool> stop{false};
  std::atomic<int> refused{0};
  std::vector<std::thread> hosts;
  for (const auto& one : all) {
    hosts.emplace_back([&stop, &refused, &host = *one] {
      for (uint64_t id = 0; !stop; ++id) {
        host.image.record.imageID = 1000000 * static_cast<uint64_t>(host.number) + id;
        refused += ZynDisplay_DisplayVideo(host.display, &host.image.record) != 0;
        // Now and then, as cameras that stand still for a moment.
        if (id % 16 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
  }
  const auto shown = [&] {
    return std::all_of(all.begin(), all.end(), [](const auto& one) {
      return one->listener.Count("notification.image") >= 20 && one->Screen().isReady();
    });
  };
  EXPECT_TRUE(WaitFor(shown));
  // Commands of each display from a thread of its own, while all stream.
  std::vector<std::thread> senders;
  std::atomic<int> done{0};
  for (const auto& one : all) {
    senders.emplace_back([&done, &refused, &host = *one] {
      const std::string number = QTD::ToText(host.number);
      for (int i = 0; i < 200; ++i) {
        refused += host.Run("cmd.display.overlay.text.add", {{"objectID", "mine"},
                                                             {"text.text", "display " + number},
                                                             {"text.pos.x", number},
                                                             {"text.pos.y", "7"}}) != 1;
        refused += host.Run("cmd.display.view.fit", {{"mode", QTD::ToText((host.number + i) % 4)}}) != 1;
        host.Run("cmd.parameter.set", {{"name", "host.word"}, {"value", "word " + number}});
      }
      // Each ends with a scale that the others do not have.
      host.Run("cmd.display.view.fit", {{"mode", "0"}});
      host.Run("cmd.display.view.scale", {{"scale", "0.2" + number}});
      ++done;
    });
  }
  EXPECT_TRUE(WaitFor([&] { return done == 4; }, 60000));
  for (std::thread& sender : senders) sender.join();
  stop = true;
  for (std::thread& host : hosts) host.join();
  Settle();
  EXPECT_EQ(refused, 0);
  for (const auto& one : all) {
    const std::string number = QTD::ToText(one->number);
    EXPECT_EQ(one->Object("mine", "text"), "display " + number);
    EXPECT_EQ(one->Object("mine", "x"), number);
    EXPECT_EQ(one->Controller().Parameters().GetString("host.word"), "word " + number);
    EXPECT_NEAR(one->Screen().Scale(), 0.2 + 0.01 * one->number, 1e-9);
    EXPECT_NEAR(one->Width(), one->image.record.width, 1e-6);
    EXPECT_NEAR(one->Height(), one->image.record.height, 1e-6);
    EXPECT_EQ(one->listener.Foreign(), 0) << number;
    EXPECT_EQ(one->listener.Failed(), 0) << number;
  }
}

TEST_F(FourDisplays, notify_their_own_receivers_alone) {
  for (const auto& one : all) {
    ASSERT_EQ(ZynDisplay_DisplayVideo(one->display, &one->image.record), 0u);
    ASSERT_TRUE(
        WaitFor([&] { return one->listener.Count("notification.image") > 0 && one->Screen().isReady(); }));
  }
  ExpectHeardByOneAlone("notification.view", [](One& one) {
    one.Run("cmd.display.view.zoom.in", {{"zoom.coef", "-1"}});
  });
  ExpectHeardByOneAlone("notification.mouse", [](One& one) {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
      QMouseEvent event(type, QPointF(9, 9), QPointF(9, 9), Qt::LeftButton,
                        type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(&one.Window(), &event);
    }
  });
  ExpectHeardByOneAlone("notification.image", [](One& one) {
    EXPECT_EQ(ZynDisplay_DisplayVideo(one.display, &one.image.record), 0u);
  });
  for (const auto& one : all) EXPECT_EQ(one->listener.Foreign(), 0) << one->number;
}

TEST_F(FourDisplays, go_on_when_one_of_them_is_deleted) {
  for (size_t gone = 0; gone < 3; ++gone) {
    all[gone].reset();
    Settle(10);
    for (size_t i = gone + 1; i < all.size(); ++i) {
      const int before = all[i]->listener.Count("notification.image");
      EXPECT_EQ(ZynDisplay_DisplayVideo(all[i]->display, &all[i]->image.record), 0u);
      EXPECT_TRUE(WaitFor([&] { return all[i]->listener.Count("notification.image") > before; }));
      EXPECT_EQ(all[i]->Run("cmd.display.view.fit", {{"mode", "1"}}), 1u);
    }
  }
}

namespace {

// Under sanitizers fewer rounds: each takes them many times as long, and what is leaked they find in one.
// Memory that was freed they keep aside, so that its size says nothing there.
constexpr int kWarmUp = kSanitized ? 5 : 100;
constexpr int kRounds = kSanitized ? 40 : 1000;

// One kilobyte a round would be seen. One display holds hundreds of them: two frame buffers, the chain's
// picture and the window's, so that a display of which anything sizable stayed would be far beyond this.
constexpr double kTolerance = 1000.0 * kRounds;

double ResidentBytes() {
  malloc_trim(0);  // what is free is given back: only what is held counts
  std::ifstream status("/proc/self/statm");
  double total = 0, resident = 0;
  status >> total >> resident;
  return resident * 4096;
}

// A host's whole use of a display, from creation to deletion.
void UseOnce(QWidget& parent, const HostImage& image, int round) {
  ZynDisplay* display = ZynDisplay_CreateComponent();
  ASSERT_NE(display, nullptr);
  QTDDisplay& controller = *static_cast<ZynDisplayImpl*>(display)->Controller();
  Receiver receiver;
  controller.AddNotification(&receiver);
  controller.SetParameterInt("image.notification.flags.set", 1);
  ASSERT_EQ(ZynDisplay_Initialize(display, &parent, nullptr, &image.record), 0u);
  ASSERT_EQ(ZynDisplay_DisplayVideo(display, &image.record), 0u);
  ASSERT_TRUE(WaitFor([&] { return receiver.Images() > 0; }));
  EXPECT_EQ(receiver.LastResult(), "0");
  // A window system gives the window its size when it likes.
  ASSERT_TRUE(WaitFor([&] { return controller.Viewer()->Window()->Screen()->isReady(); }));
  QTD::ARGUMENTS text{{"text.text", "round " + QTD::ToText(round)}, {"cs", "img"}};
  EXPECT_EQ(controller.RunCommand("cmd.display.overlay.text.add", &text), 1u);
  EXPECT_EQ(controller.RunCommand("cmd.display.view.zoom.in", nullptr), 1u);
  EXPECT_EQ(controller.RunCommand("cmd.display.view.status", nullptr), 1u);
  for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
  controller.DelNotification(&receiver);
  ZynDisplay_DeleteComponent(display);
  for (int i = 0; i < 3; ++i) {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
  }
}

}  // namespace

TEST(ManyDisplays, one_after_the_other_leave_nothing_behind) {
  QWidget parent;
  parent.resize(120, 90);
  parent.show();
  const HostImage image(ZYN_PIXEL_MONO12, 160, 120);
  for (int round = 0; round < kWarmUp; ++round) UseOnce(parent, image, round);
  const auto children = parent.findChildren<QObject*>().size();
  const double before = ResidentBytes();
  for (int round = 0; round < kRounds; ++round) {
    UseOnce(parent, image, round);
    if (HasFatalFailure()) return;
  }
  EXPECT_EQ(parent.findChildren<QObject*>().size(), children);
  const double growth = ResidentBytes() - before;
  RecordProperty("growth_bytes", QTD::ToText(static_cast<long long>(growth)));
  if (!kSanitized) {
    EXPECT_LT(growth, kTolerance);
  }
}

}  // namespace display_test
