// The geometry of one display window: scale, centre, scroll range, and the map between coordinate systems.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "QTD/frame/Properties.h"
#include "QTD/frame/RMutex.h"
#include "QTD/screen/CoordinateMap.h"
#include "QTD/screen/QTDSurface.h"
#include "ZynImage.h"

namespace QTD {

class CommandProcessor;

// The modes of `setFit`, and the values of "fit".
enum FitMode : int { kFitFree = 0, kFitWhole = 1, kFitFill = 2, kFitOneToOne = 3 };

struct RectI {
  int32_t x = 0, y = 0, width = 0, height = 0;
};

using PairI = std::pair<int, int>;
using PairD = std::pair<double, double>;

}  // namespace QTD

// The scale is image pixels per window pixel. Coordinate systems: "win" window pixels, "img" image pixels,
// "scr" pixels of the zoomed picture. Owns no pixels and no surface.
//
// Any thread may call any operation but the painting ones (`clear`, `flush`, `begin`, `prepare`, `end`,
// `draw`: GUI thread); `lock` guards each, whoever calls. The owner is told "view.changed" at the end of an
// operation that moved the view, on the caller's thread and with `lock` given up, so that it may take locks
// of its own; operations that call each other tell it once.
class QTDScreen {
 public:
  explicit QTDScreen(QTDSurface* targetSurface);
  QTDScreen(const QTDScreen&) = delete;
  QTDScreen& operator=(const QTDScreen&) = delete;
  virtual ~QTDScreen();

  // `owner` receives "view.changed"; not owned, may be null.
  virtual bool init(QTD::CommandProcessor* owner, int width, int height, int fit);
  virtual bool done(bool takeLock);  // forgets the image size; takes the lock in any case
  virtual void clear(bool flush);
  virtual void flush();
  virtual bool begin(QTD::PROPERTIES* list);
  virtual bool prepare(QTD::PROPERTIES* list);
  virtual void end(QTD::PROPERTIES* list, bool flush);
  virtual bool draw(const ZynImage* image, QTD::PROPERTIES* list);
  virtual void setWindowSize(int width, int height);  // a size of 0 or below is ignored
  virtual void setImageSize(int width, int height);   // likewise
  // Carries a point (`position`) or a length from one system to another; `clamp` holds the result in bounds.
  // True when it lay on the picture. An unknown target leaves fractions of the picture in `x` and `y`.
  virtual bool transform(double* x, double* y, const char* csSrc, const char* csDst, bool position,
                         bool clamp);
  virtual void setFit(int mode, bool apply);  // a FitMode; other numbers count as the nearest one
  virtual bool isReady();                     // the window has a size

  // Device pixels to one window pixel, 1 at first; values that no window can have are ignored. One to one,
  // and 100 per cent, are one image pixel on one device pixel: a scale of this ratio. Everything else is
  // counted in window pixels.
  void setPixelRatio(double ratio);

  // Held in the limits that "screen.min" and "screen.max" set. Tells nobody; the operations that a step, a
  // rectangle or a centre is given to do.
  void setScale(double newScale);
  // One step. A probe changes nothing and answers whether the step would change the scale.
  bool zoom(bool in, double coef, bool probe);
  void zoomToRect(const QTD::RectI& rect, bool in);
  int zoomPercent();
  // Fractions of the picture; -1, -1 keeps the present ones. Before the window and the picture have a size
  // they are remembered and applied as soon as there is one, unless a later operation that sets a centre
  // comes before.
  void setCenter(double fx, double fy);
  bool moveBy(bool horizontal, int steps);
  void moveTo(int x, int y, const char* cs);
  void setScrollPos(int x, int y);  // a negative value leaves that axis alone
  QTD::PairI scrollPage();
  bool dragMove(int x, int y);
  // Keeps them on the picture; true when the size moved, or, without a size, the point.
  bool clampPoint(QTD::PairD* point, QTD::PairD* size);

  // A pan: starting stores the centre and the mouse position, ending forgets them, cancelling puts the centre
  // back. None of the three tells anybody.
  void dragStart(int x, int y);
  void dragEnd();
  void dragCancel();

  // Snapshots for readers on other threads.
  double Scale();
  QTD::PairD Center();
  QTD::PairI ScrollPos();
  QTD::PairI ScrollRange();
  QTD::RectD Picture();

  QTD::PROPERTIES properties;  // "fit", "screen.min", ...: each with its default and meaning in `kDefaults`

 protected:
  bool update();

  QTD::CommandProcessor* window = nullptr;
  QTDSurface* surface;
  QTD::RMutex lock;  // guards all fields below
  double centerFractionX = 0.5, centerFractionY = 0.5;
  double scale = 1.0;
  double pixelRatio = 1.0;
  int32_t imageWidth = 0, imageHeight = 0;
  double pictureX = 0, pictureY = 0, pictureWidth = 0, pictureHeight = 0;
  double windowCenterX = 0, windowCenterY = 0;
  double windowWidth = 0, windowHeight = 0;
  int32_t scrollPosX = 0, scrollPosY = 0;
  int32_t scrollRangeX = 0, scrollRangeY = 0;
  bool notify = true;
  double dragFractionX = 0, dragFractionY = 0;
  int32_t dragX = -1, dragY = -1;

 private:
  // Runs one operation under `lock`, and sends a pending "view.changed" behind the outermost one.
  void perform(const std::function<void()>& operation);
  void savePosition(QTD::PROPERTIES& record);
  bool notifyChanged(QTD::PROPERTIES& record);

  void takeSizes(const std::function<bool()>& store);
  bool settle();
  void foldScrollRange();
  void centerAt(double fx, double fy);
  bool hasPicture() const { return imageWidth > 0 && imageHeight > 0; }
  QTD::ViewAxis axisX() const { return {pictureX, pictureWidth, static_cast<double>(imageWidth), scale}; }
  QTD::ViewAxis axisY() const { return {pictureY, pictureHeight, static_cast<double>(imageHeight), scale}; }

  // The centre that was asked for before there was a window size; kept until window and picture have one,
  // because `update` centres a picture without a size.
  std::optional<QTD::PairD> initialCenter;
  int nesting = 0;       // operations that the lock's holder is inside of
  bool pending = false;  // "view.changed" is to be sent
};
