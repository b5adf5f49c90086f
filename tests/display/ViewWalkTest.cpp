// A whole display under random commands, mouse, wheel, keys, resizes and new pictures: after every step the
// view is where its rules put it, and so are the overlays and the scroll bars.
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>
#include <cstdlib>
#include <optional>

#include "QTD/window/QTDViewer.h"
#include "QTD/window/QTDWindow.h"
#include "tests/display/DisplayFixture.h"
#include "tests/display/Sanitized.h"
#include "tests/screen/ViewChecks.h"

namespace display_test {

using namespace view_walk;

namespace {

// The steps paint, which takes sanitizers several times as long.
constexpr size_t kSteps = kSanitized ? 300 : 1500;
constexpr int kObjects = 16;
constexpr double kAPixel = 1;

std::string Precise(double value) {
  return QTD::ToText(value, "%.17g");
}

// An overlay as the host asked for it.
struct Object {
  std::string id, system;
  bool rect = false;
  int x = 0, y = 0, w = 0, h = 0;
};

// A display with a picture, driven from outside. Every size that reaches its window reaches the model, too.
class Driver : public QObject {
 public:
  explicit Driver(uint32_t seed) : dice(seed + 1000) {
    parent.resize(420, 330);
    parent.show();
    display = std::make_unique<QTDDisplay>(&parent, false);
    display->AddNotification(&receiver);
    display->SetParameterInt("image.notification.flags.set", 1);
    HostImage picture(ZYN_PIXEL_MONO8, 640, 481);
    EXPECT_EQ(display->Initialize(&picture.record), 0u);
    EXPECT_TRUE(WaitFor([this] { return Screen() && Screen()->isReady() && Window()->isExposed(); }));
    Settle(20);
    model.x.window = Window()->width();
    model.y.window = Window()->height();
    Window()->installEventFilter(this);
    ShowPicture(640, 481);
  }
  ~Driver() override { display->DelNotification(&receiver); }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == Window() && event->type() == QEvent::Resize) {
      const QSize size = static_cast<QResizeEvent*>(event)->size();
      model.SetWindow(size.width(), size.height());
    }
    return false;
  }

  // The step, by one of the ways in which a host or a user can make it.
  void Take(const Step& step) {
    const bool way = dice.Whole(0, 1) == 1;
    switch (step.kind) {
      case Kind::ZoomIn:
      case Kind::ZoomOut:
      case Kind::FreeIn:
      case Kind::FreeOut:
        return Zoom(step, way);
      case Kind::Drag:
      case Kind::DragCancelled:
        return Drag(step);
      case Kind::Fit:
        view_walk::Apply(model, step);
        Run("fit", {{"mode", QTD::ToText(step.a)}});
        return;
      case Kind::Scale:
        view_walk::Apply(model, step);
        Run("scale", {{"scale", Precise(step.u)}});
        return;
      case Kind::Center:
        view_walk::Apply(model, step);
        Run("at", {{"pos.x", Precise(step.u)}, {"pos.y", Precise(step.v)}});
        return;
      case Kind::KeepCenter:
        Run("at", {{"pos.x", "-1"}, {"pos.y", "-1"}});
        return;
      case Kind::MoveBy:
        return Arrows(step);
      case Kind::MoveToWindow:
        view_walk::Apply(model, step);
        Mouse(QEvent::MouseButtonDblClick, step.a, step.b);
        return;
      case Kind::Scroll:
        Window()->scrollTo(ScrollValue(model.x, model.scale, step.a),
                           ScrollValue(model.y, model.scale, step.b));
        view_walk::Apply(model, step);
        return;
      case Kind::Window:
        return Resize(step, way);
      case Kind::Image:
        return ShowPicture(step.a, step.b);
      default:
        view_walk::Apply(*Screen(), model, step);
        view_walk::Apply(model, step);
    }
  }

  // One overlay comes or is replaced, at random places of the image, of the zoomed picture, of the window.
  void StoreObject() {
    static constexpr const char* kSystems[] = {"img", "img", "img", "scr", "win", ""};
    Object object;
    object.id = "object" + std::to_string(dice.Whole(1, kObjects));
    object.system = kSystems[dice.Whole(0, 5)];
    object.rect = dice.Whole(0, 1) == 1;
    object.x = dice.Whole(0, 2000);
    object.y = dice.Whole(0, 2000);
    object.w = dice.Whole(1, 900);
    object.h = dice.Whole(1, 900);
    QTD::ARGUMENTS args{{"objectID", object.id}, {"cs", object.system}};
    if (object.rect) {
      args.insert({{"rect.x", QTD::ToText(object.x)},
                   {"rect.y", QTD::ToText(object.y)},
                   {"rect.w", QTD::ToText(object.w)},
                   {"rect.h", QTD::ToText(object.h)}});
    } else {
      args.insert({{"text.pos.x", QTD::ToText(object.x)},
                   {"text.pos.y", QTD::ToText(object.y)},
                   {"text.text", "text " + object.id}});
    }
    const char* name = object.rect ? "cmd.display.overlay.rect.add" : "cmd.display.overlay.text.add";
    EXPECT_EQ(display->RunCommand(name, &args), 1u);
    objects[object.id] = object;
  }

  // Everything that must hold once the window has painted.
  std::string Trouble() {
    for (int i = 0; i < 3; ++i) {
      QCoreApplication::sendPostedEvents();
      QCoreApplication::processEvents();
    }
    Window()->render();
    Checks checks;
    for (const auto& [id, object] : objects) CheckObject(checks, object);
    CheckBars(checks);
    CheckTranslate(checks);
    return Problem(*Screen(), model, dice) + checks.problem;
  }

  std::map<std::string, Object> objects;
  Dice dice;
  Model model;

 private:
  QTDWindow* Window() const { return display->Viewer() ? display->Viewer()->Window() : nullptr; }
  QTDScreen* Screen() const { return Window() ? Window()->Screen() : nullptr; }
  uint32_t Run(const char* name, QTD::ARGUMENTS args) {
    return display->RunCommand((std::string("cmd.display.view.") + name).c_str(), &args);
  }

  void Zoom(const Step& step, bool way) {
    const bool in = step.kind == Kind::ZoomIn || step.kind == Kind::FreeIn;
    const bool ladder = step.kind == Kind::ZoomIn || step.kind == Kind::ZoomOut;
    view_walk::Apply(model, step);
    Screen()->properties.Set("zoom.align", ladder ? "1" : "0");
    if (!ladder) {
      Run(in ? "zoom.in" : "zoom.out", {{"zoom.coef", Precise(step.u)}});
    } else if (way) {
      Key(in ? Qt::Key_Plus : Qt::Key_Minus);
    } else {
      QWheelEvent event(QPointF(20, 15), QPointF(20, 15), QPoint(), QPoint(0, in ? 120 : -120), Qt::NoButton,
                        Qt::NoModifier, Qt::NoScrollPhase, false);
      QCoreApplication::sendEvent(Window(), &event);
    }
  }

  // A pan by mouse frees the view of its fit mode at the press, also where it is undone.
  void Drag(const Step& step) {
    model.fit = 0;
    view_walk::Apply(model, step);
    const int x = std::abs(step.a), y = step.b;
    Mouse(QEvent::MouseButtonPress, x, y);
    Mouse(QEvent::MouseMove, x + step.d, y - step.c);
    Mouse(QEvent::MouseMove, x + step.c, y + step.d);
    if (step.kind == Kind::Drag) return Mouse(QEvent::MouseButtonRelease, x + step.c, y + step.d);
    QFocusEvent lost(QEvent::FocusOut);
    QCoreApplication::sendEvent(Window(), &lost);
  }

  void Arrows(const Step& step) {
    const bool forth = step.b > 0;
    for (int i = 0; i < std::abs(step.b); ++i) {
      model.MoveBy(step.a != 0, forth ? 1 : -1);
      Key(step.a != 0 ? (forth ? Qt::Key_Right : Qt::Key_Left) : (forth ? Qt::Key_Down : Qt::Key_Up));
    }
  }

  // By the host's widget, or by an event with a size that no window system would give.
  void Resize(const Step& step, bool way) {
    if (way) {
      parent.resize(step.a, step.b);
    } else {
      QResizeEvent event(QSize(step.a, step.b), QSize());
      QCoreApplication::sendEvent(Window(), &event);
    }
  }

  // A new format begins at the initial view, the whole picture, before the first image is there.
  void ShowPicture(int width, int height) {
    const HostImage picture(ZYN_PIXEL_MONO8, static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    const size_t before = receiver.Images();
    EXPECT_EQ(display->Initialize(&picture.record), 0u);
    if (model.x.image > 0) model.SetFit(1);
    model.fit = 1;
    EXPECT_EQ(display->DisplayVideo(&picture.record), 0u);
    EXPECT_TRUE(WaitFor([&] { return receiver.Images() > before; }));
    model.SetImage(width, height);
  }

  void Mouse(QEvent::Type type, int x, int y) {
    const bool move = type == QEvent::MouseMove;
    QMouseEvent event(type, QPointF(x, y), QPointF(x, y), move ? Qt::NoButton : Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(Window(), &event);
  }
  void Key(int code) {
    QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
    QCoreApplication::sendEvent(Window(), &event);
  }

  // Rounding takes half a pixel; the far edge of a rectangle is rounded on its own.
  void CheckObject(Checks& checks, const Object& object) {
    QTD::PROPERTIES list;
    if (!Window()->Objects().get(object.id, &list)) return checks.True(("no " + object.id).c_str(), false);
    QTD::PairD at{object.x, object.y};
    QTD::PairD size{object.w, object.h};
    if (object.system == "img") {
      at = InWindow(model, object.x, object.y);
      size = {object.w / model.scale, object.h / model.scale};
    } else if (object.system == "scr") {
      at = {model.x.Start(model.scale) + object.x, model.y.Start(model.scale) + object.y};
    }
    const std::string what = object.id + " in " + object.system;
    checks.Near((what + ": x").c_str(), list.GetInt("x"), at.first, 0.5 + kBound);
    checks.Near((what + ": y").c_str(), list.GetInt("y"), at.second, 0.5 + kBound);
    if (!object.rect) return;
    // Lengths are held in the window while the whole picture is in it.
    const bool inside =
        model.x.window > model.x.Length(model.scale) && model.y.window > model.y.Length(model.scale);
    if (inside && (object.system == "img" || object.system == "scr")) {
      size = {std::min(size.first, model.x.window), std::min(size.second, model.y.window)};
    }
    checks.Near((what + ": right edge").c_str(), list.GetInt("x") + list.GetInt("w"), at.first + size.first,
                kAPixel);
    checks.Near((what + ": lower edge").c_str(), list.GetInt("y") + list.GetInt("h"), at.second + size.second,
                kAPixel);
  }

  void CheckBars(Checks& checks) {
    // Bars are enabled and disabled by a queued call; nothing else is to run, such as a painting that would
    // bring in what was forgotten.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::User);
    const QTD::PairI range = Screen()->ScrollRange(), position = Screen()->ScrollPos();
    for (const QScrollBar* bar : parent.findChildren<QScrollBar*>()) {
      const bool across = bar->orientation() == Qt::Horizontal;
      const int most = std::max(0, across ? range.first : range.second);
      const int at = across ? position.first : position.second;
      checks.Near("a bar's range", bar->maximum(), most, 0);
      checks.Near("a bar's value", bar->value(), most > 0 ? at : 0, 0);
      checks.True("a bar's state", bar->isEnabled() == (most > 0));
    }
  }

  // The same point by the command, whose numbers have six decimals.
  void CheckTranslate(Checks& checks) {
    const double x = dice.Real(0, model.x.image), y = dice.Real(0, model.y.image);
    QTD::ARGUMENTS args{{"pos.x", Precise(x)}, {"pos.y", Precise(y)}, {"cs.src", "img"}, {"cs.dst", "win"}};
    checks.True("translate", display->RunCommand("cmd.display.view.translate", &args) == 1);
    const QTD::PairD expected = InWindow(model, x, y);
    checks.Near("a translated x", std::atof(args["pos.x"].c_str()), expected.first, 5e-7 + kBound);
    checks.Near("a translated y", std::atof(args["pos.y"].c_str()), expected.second, 5e-7 + kBound);
  }

  QWidget parent;
  Receiver receiver;
  std::unique_ptr<QTDDisplay> display;
};

struct Failure {
  size_t step;
  std::string problem;
};

std::optional<Failure> Walk(const Steps& steps, uint32_t seed) {
  Driver driver(seed);
  for (int i = 0; i < kObjects; ++i) driver.StoreObject();
  for (size_t i = 0; i < steps.size(); ++i) {
    driver.Take(steps[i]);
    if (i % 7 == 0) driver.StoreObject();
    const std::string problem = driver.Trouble();
    if (!problem.empty()) return Failure{i, problem};
  }
  return std::nullopt;
}

class DisplayWalk : public testing::TestWithParam<uint32_t> {};

}  // namespace

TEST_P(DisplayWalk, keeps_view_overlays_and_bars_in_their_places) {
  constexpr Limits kLimits{801, 200000};
  Steps steps = RollSteps(GetParam(), kSteps, kLimits);
  const std::optional<Failure> failure = Walk(steps, GetParam());
  if (!failure) return;
  ADD_FAILURE() << "seed " << GetParam() << ", step " << failure->step << ": " << failure->problem
                << "\nthe steps:\n"
                << Told(steps, failure->step + 1);
}

INSTANTIATE_TEST_SUITE_P(seeds, DisplayWalk, testing::Range(1u, 4u));

}  // namespace display_test
