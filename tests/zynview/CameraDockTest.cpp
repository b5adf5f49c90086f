// The camera panel, with a camera that only remembers.
#include "apps/zynview/view/CameraDock.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSlider>
#include <QStandardItemModel>
#include <QToolButton>
#include <atomic>
#include <cmath>

#include "apps/zynview/view/FeatureControl.h"

using zynview::Background;
using zynview::CameraControls;
using zynview::CameraDock;
using zynview::CameraEntry;
using zynview::FeatureControl;
using zynview::FeatureScale;

namespace {

// Takes exposure times in steps of 10, and has no frame rate.
struct FakeControls : CameraControls {
  Range exposure{true, 10, 1e6, 1000}, gain{true, 0, 20, 5};
  QString id = QStringLiteral("cam-2"), format = QStringLiteral("Mono12"), refusal;
  std::vector<std::pair<Feature, double>> sets;
  mutable int reads = 0;

  QString ID() const override { return id; }
  Range Read(Feature feature) const override {
    ++reads;
    return feature == Exposure ? exposure : feature == Gain ? gain : Range();
  }
  QString Set(Feature feature, double value) override {
    sets.emplace_back(feature, value);
    if (!refusal.isEmpty()) return refusal;
    if (feature == Exposure) exposure.value = std::round(value / 10) * 10;
    if (feature == Gain) gain.value = value;
    return {};
  }
  QStringList PixelFormats() const override {
    return {QStringLiteral("Mono8"), QStringLiteral("Mono12"), QStringLiteral("Coord3D_ABC32f")};
  }
  QString PixelFormat() const override { return format; }
  QString SetPixelFormat(const QString&) override { return {}; }
};

struct Panel {
  Panel() {
    dock.onCamera = [this](const QString& id) { wantedCameras << id; };
    dock.onFormat = [this](const QString& name) { wantedFormats << name; };
    dock.onProblem = [this](const QString& problem) { problems << problem; };
  }
  void ShowWithCameras() {
    dock.show();
    while (searches == 0 || cameras->count() < 3) QCoreApplication::processEvents();
  }
  // The camera is the test's own, and is asked for all that it is going to be asked for.
  void Open(FakeControls& camera) {
    dock.SetControls(std::shared_ptr<CameraControls>(&camera, [](CameraControls*) {}));
    Settle();
  }
  // What is asked in the background may lead to further questions: one for each choice, and one for what the
  // camera has made of it.
  void Settle() {
    for (int i = 0; i < 5; ++i) {
      bool done = false;
      talk.Do([&done]() -> Background::Answer { return [&done] { done = true; }; });
      while (!done) QCoreApplication::processEvents();
    }
  }
  void Choose(QComboBox* list, int index) {
    list->setCurrentIndex(index);
    Q_EMIT list->activated(index);
  }

  std::atomic<int> searches{0};
  Background search, talk;
  CameraDock dock{[this] {
                    ++searches;
                    return std::vector<CameraEntry>{{QStringLiteral("cam-1"), QStringLiteral("First")},
                                                    {QStringLiteral("cam-2"), QStringLiteral("Second")}};
                  },
                  &search, &talk, nullptr};
  QComboBox* cameras = dock.findChild<QComboBox*>(QStringLiteral("cameras"));
  QComboBox* formats = dock.findChild<QComboBox*>(QStringLiteral("formats"));
  QList<QDoubleSpinBox*> numbers = dock.findChildren<QDoubleSpinBox*>();
  QList<QSlider*> sliders = dock.findChildren<QSlider*>();
  QStringList wantedCameras, wantedFormats, problems;
};

}  // namespace

TEST(CameraDock, lists_the_cameras_with_the_simulator_at_the_end) {
  Panel panel;
  EXPECT_EQ(panel.searches, 0) << "hidden panels look for nothing";
  panel.ShowWithCameras();
  ASSERT_EQ(panel.cameras->count(), 3);
  EXPECT_EQ(panel.cameras->itemText(0), QStringLiteral("First"));
  EXPECT_EQ(panel.cameras->itemText(2), QStringLiteral("Simulator"));
  EXPECT_EQ(panel.cameras->currentIndex(), -1) << "none is open";
  panel.dock.findChild<QToolButton*>()->click();
  while (panel.searches < 2) QCoreApplication::processEvents();
}

TEST(CameraDock, asks_for_the_camera_that_is_chosen) {
  Panel panel;
  FakeControls camera;
  panel.ShowWithCameras();
  panel.Open(camera);
  EXPECT_EQ(panel.cameras->currentIndex(), 1);
  panel.Choose(panel.cameras, 2);
  EXPECT_EQ(panel.wantedCameras, QStringList{QString()}) << "the simulator";
  EXPECT_EQ(panel.cameras->currentIndex(), 1) << "the other one is not open yet";
  panel.Choose(panel.cameras, 1);
  EXPECT_EQ(panel.wantedCameras.size(), 1) << "it is open already";
  panel.dock.SetControls(nullptr);
}

TEST(CameraDock, shows_limits_and_values_of_the_camera) {
  Panel panel;
  FakeControls camera;
  panel.ShowWithCameras();
  panel.Open(camera);
  ASSERT_EQ(panel.numbers.size(), 3);
  EXPECT_EQ(panel.numbers[CameraControls::Exposure]->value(), 1000);
  EXPECT_EQ(panel.numbers[CameraControls::Exposure]->toolTip(), QStringLiteral("10 to 1000000 µs"));
  // On a logarithmic scale of five decades 1000 stands behind the second one; on a linear one, 5 of 20.
  EXPECT_EQ(panel.sliders[CameraControls::Exposure]->value(), 400);
  EXPECT_EQ(panel.sliders[CameraControls::Gain]->value(), 250);
  EXPECT_TRUE(panel.numbers[CameraControls::Gain]->isEnabled());
  EXPECT_FALSE(panel.numbers[CameraControls::FrameRate]->isEnabled()) << "the camera has none";
  EXPECT_TRUE(camera.sets.empty()) << "showing is not setting";
  panel.dock.SetControls(nullptr);
  EXPECT_FALSE(panel.numbers[CameraControls::Gain]->isEnabled());
  EXPECT_FALSE(panel.formats->isEnabled());
}

TEST(CameraDock, sets_what_is_chosen_and_shows_what_the_camera_made_of_it) {
  Panel panel;
  FakeControls camera;
  panel.ShowWithCameras();
  panel.Open(camera);
  panel.numbers[CameraControls::Exposure]->setValue(1234);
  panel.Settle();
  ASSERT_EQ(camera.sets.size(), 1u);
  EXPECT_EQ(camera.sets[0], std::make_pair(CameraControls::Exposure, 1234.0));
  EXPECT_EQ(panel.numbers[CameraControls::Exposure]->value(), 1230);
  panel.sliders[CameraControls::Gain]->setValue(FeatureScale::kPlaces / 2);
  panel.Settle();
  ASSERT_EQ(camera.sets.size(), 2u);
  EXPECT_EQ(camera.sets[1], std::make_pair(CameraControls::Gain, 10.0));
  EXPECT_EQ(panel.numbers[CameraControls::Gain]->value(), 10);
  camera.refusal = QStringLiteral("not now");
  panel.numbers[CameraControls::Gain]->setValue(20);
  panel.Settle();
  EXPECT_EQ(panel.problems, QStringList{QStringLiteral("not now")});
  EXPECT_EQ(panel.numbers[CameraControls::Gain]->value(), 10) << "as the camera still has it";
  panel.dock.SetControls(nullptr);
}

// A slider that is drawn along tells each place; the camera hears of the last one, and of few before it.
TEST(CameraDock, does_not_keep_a_slow_camera_busy_with_what_is_over) {
  Panel panel;
  FakeControls camera;
  panel.ShowWithCameras();
  panel.Open(camera);
  for (int place = 0; place <= FeatureScale::kPlaces; ++place)
    panel.sliders[CameraControls::Gain]->setValue(place);
  panel.Settle();
  EXPECT_LE(camera.sets.size(), 2u);
  EXPECT_EQ(camera.gain.value, 20);
  EXPECT_EQ(panel.numbers[CameraControls::Gain]->value(), 20);
  panel.dock.SetControls(nullptr);
}

// Answers when it is allowed to, as a camera that has gone.
struct SilentControls : FakeControls {
  std::atomic<bool> mayAnswer{false};
  Range Read(Feature feature) const override {
    while (!mayAnswer) std::this_thread::yield();
    return FakeControls::Read(feature);
  }
};

TEST(CameraDock, does_not_wait_for_a_camera_that_does_not_answer) {
  Panel panel;
  panel.ShowWithCameras();
  const auto silent = std::make_shared<SilentControls>();
  panel.dock.SetControls(silent);
  QCoreApplication::processEvents();
  EXPECT_FALSE(panel.numbers[CameraControls::Gain]->isEnabled()) << "nothing is known of it";
  panel.dock.Update();
  panel.dock.SetControls(nullptr);
  silent->mayAnswer = true;
  panel.Settle();
  EXPECT_FALSE(panel.numbers[CameraControls::Gain]->isEnabled()) << "the answer comes too late";
  EXPECT_TRUE(panel.problems.isEmpty());
}

TEST(CameraDock, offers_the_formats_of_the_camera_and_greys_unknown_ones) {
  Panel panel;
  FakeControls camera;
  panel.ShowWithCameras();
  panel.Open(camera);
  ASSERT_EQ(panel.formats->count(), 3);
  EXPECT_EQ(panel.formats->currentText(), QStringLiteral("Mono12"));
  const auto* model = qobject_cast<QStandardItemModel*>(panel.formats->model());
  EXPECT_TRUE(model->item(0)->isEnabled() && model->item(1)->isEnabled());
  EXPECT_FALSE(model->item(2)->isEnabled());
  panel.Choose(panel.formats, 0);
  EXPECT_EQ(panel.wantedFormats, QStringList{QStringLiteral("Mono8")});
  panel.Choose(panel.formats, 1);
  EXPECT_EQ(panel.wantedFormats.size(), 1) << "it has this one already";
  panel.dock.SetControls(nullptr);
}

TEST(CameraDock, leaves_a_list_that_is_open_as_it_is_when_the_camera_answers_the_same) {
  FakeControls camera;
  Panel panel;
  panel.dock.show();
  panel.Open(camera);
  panel.formats->showPopup();
  panel.formats->view()->setCurrentIndex(panel.formats->model()->index(0, 0));  // where the mouse is
  panel.dock.Update();
  panel.Settle();
  EXPECT_TRUE(panel.formats->view()->isVisible());
  EXPECT_EQ(panel.formats->view()->currentIndex().row(), 0);
  EXPECT_EQ(panel.formats->currentText(), QStringLiteral("Mono12"));
}

TEST(CameraDock, leaves_the_camera_alone_while_it_is_hidden) {
  Panel panel;
  FakeControls camera;
  panel.Open(camera);
  EXPECT_EQ(camera.reads, 0);
  panel.dock.show();
  panel.Settle();
  EXPECT_GT(camera.reads, 0);
  panel.dock.SetControls(nullptr);
}

TEST(FeatureControl, takes_no_range_that_is_none) {
  FeatureControl control(QString(), true, nullptr);
  int chosen = 0;
  control.onChosen = [&chosen](double) { ++chosen; };
  for (const CameraControls::Range& range :
       {CameraControls::Range{true, 5, 4, 4}, CameraControls::Range{true, NAN, 4, 4},
        CameraControls::Range{true, 0, INFINITY, 4}, CameraControls::Range{false, 0, 4, 4}}) {
    control.Show(range);
    EXPECT_FALSE(control.isEnabled());
  }
  control.Show({true, 3, 3, 3});
  EXPECT_TRUE(control.isEnabled());
  EXPECT_EQ(chosen, 0);
}

TEST(FeatureControl, takes_a_number_beyond_the_limits_for_the_limit) {
  FeatureControl control(QString(), false, nullptr);
  std::vector<double> chosen;
  control.onChosen = [&chosen](double value) { chosen.push_back(value); };
  control.Show({true, 1, 10, 5});
  auto* const number = control.findChild<QDoubleSpinBox*>();
  auto* const line = control.findChild<QLineEdit*>();
  const auto type = [&](const char* text) {
    line->selectAll();
    for (const char* letter = text; *letter; ++letter) {
      QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, QString(QLatin1Char(*letter)));
      QCoreApplication::sendEvent(number, &key);
    }
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(number, &enter);
  };
  type("12");
  EXPECT_EQ(number->value(), 10);
  type("-4");
  EXPECT_EQ(number->value(), 1);
  type("7");
  EXPECT_EQ(number->value(), 7);
  EXPECT_EQ(chosen, (std::vector<double>{10, 1, 7}));
}

TEST(FeatureScale, goes_by_factors_or_by_differences) {
  const FeatureScale linear(-10, 10, false), logarithmic(1, 10000, true);
  EXPECT_DOUBLE_EQ(linear.ValueAt(500), 0);
  EXPECT_DOUBLE_EQ(linear.ValueAt(750), 5);
  EXPECT_NEAR(logarithmic.ValueAt(250), 10, 1e-9);
  EXPECT_NEAR(logarithmic.ValueAt(500), 100, 1e-9);
  for (const FeatureScale& scale : {linear, logarithmic}) {
    for (int place = 0; place <= FeatureScale::kPlaces; ++place)
      EXPECT_EQ(scale.PlaceOf(scale.ValueAt(place)), place);
  }
}

TEST(FeatureScale, reaches_both_ends_of_every_range) {
  for (const auto& [least, most] :
       {std::pair<double, double>{0, 1e7}, {-4, 4}, {-5, -1}, {0, 0}, {7, 7}, {1e-9, 1e9}, {5, 1}}) {
    for (const bool logarithmic : {false, true}) {
      const FeatureScale scale(least, most, logarithmic);
      EXPECT_EQ(scale.ValueAt(0), least);
      EXPECT_EQ(scale.ValueAt(FeatureScale::kPlaces), std::max(least, most));
      EXPECT_EQ(scale.PlaceOf(least), 0);
      for (int place = 0; place <= FeatureScale::kPlaces; ++place) {
        EXPECT_TRUE(std::isfinite(scale.ValueAt(place)));
        EXPECT_GE(scale.ValueAt(place), least);
      }
    }
  }
}
