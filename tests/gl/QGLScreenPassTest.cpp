// Passes of a screen: each that is begun is ended, once.
#include <stdexcept>
#include <string>

#include "GLFixture.h"
#include "PlacedGLScreen.h"

namespace {

// Writes down what it is told to do.
class OrderedSurface : public QTDSurface {
 public:
  bool begin(QTD::PROPERTIES*) override {
    order += 'b';
    return canBegin;
  }
  void end(QTD::PROPERTIES*, bool) override { order += 'e'; }
  void flush(QTD::PROPERTIES*) override {
    order += 'F';
    if (cannotFlush) throw std::invalid_argument("force");
  }
  bool canBegin = true;
  bool cannotFlush = false;
  std::string order;
};

struct Screen : PlacedGLScreen {
  explicit Screen(QTDSurface* target) : PlacedGLScreen(target) {
    setWindow(200, 150);
    place(0, 0, 200, 150);
  }
  bool prepare(QTD::PROPERTIES* list) override {
    if (cannotPrepare) throw std::invalid_argument("some attribute");
    return PlacedGLScreen::prepare(list);
  }
  bool cannotPrepare = false;
};

TEST(QGLScreenPass, passes_nest) {
  OrderedSurface surface;
  Screen screen(&surface);
  screen.begin(nullptr);
  screen.begin(nullptr);
  screen.end(nullptr, false);
  screen.end(nullptr, true);
  EXPECT_EQ(surface.order, "bbeFe");
  screen.end(nullptr, false);
  EXPECT_EQ(surface.order, "bbeFe");
}

TEST(QGLScreenPass, each_end_belongs_to_its_begin) {
  OrderedSurface surface;
  Screen screen(&surface);
  screen.begin(nullptr);
  surface.canBegin = false;
  screen.begin(nullptr);
  screen.end(nullptr, false);
  EXPECT_EQ(surface.order, "bb") << "the inner one has not begun";
  screen.setWindow(0, 0);
  EXPECT_FALSE(screen.begin(nullptr));
  screen.end(nullptr, false);
  EXPECT_EQ(surface.order, "bb");
  screen.end(nullptr, false);
  EXPECT_EQ(surface.order, "bbe");
}

TEST(QGLScreenPass, a_begin_that_throws_leaves_no_pass) {
  OrderedSurface surface;
  Screen screen(&surface);
  screen.cannotPrepare = true;
  EXPECT_THROW(screen.begin(nullptr), std::invalid_argument);
  EXPECT_EQ(surface.order, "be");
  screen.end(nullptr, false);
  EXPECT_EQ(surface.order, "be");
}

TEST(QGLScreenPass, a_flush_that_throws_ends_the_pass) {
  OrderedSurface surface;
  Screen screen(&surface);
  surface.cannotFlush = true;
  screen.begin(nullptr);
  EXPECT_THROW(screen.end(nullptr, true), std::invalid_argument);
  EXPECT_EQ(surface.order, "bFe");
}

using QGLScreenPassOnWindow = GLFixture;

TEST_F(QGLScreenPassOnWindow, nested_passes_leave_no_context_current) {
  Screen screen(surface.get());
  surface->end(nullptr, false);
  EXPECT_TRUE(screen.begin(nullptr));
  EXPECT_TRUE(screen.begin(nullptr));
  screen.end(nullptr, false);
  EXPECT_TRUE(surface->isActive());
  screen.end(nullptr, true);
  EXPECT_FALSE(surface->isActive());
}

TEST_F(QGLScreenPassOnWindow, passes_that_throw_leave_no_context_current) {
  Screen screen(surface.get());
  surface->end(nullptr, false);
  screen.cannotPrepare = true;
  EXPECT_THROW(screen.begin(nullptr), std::invalid_argument);
  EXPECT_FALSE(surface->isActive());
  screen.cannotPrepare = false;
  QTD::PROPERTIES soon;
  soon.Set("force", "soon");
  EXPECT_TRUE(screen.begin(nullptr));
  EXPECT_THROW(screen.end(&soon, true), std::invalid_argument);
  EXPECT_FALSE(surface->isActive());
}

}  // namespace
