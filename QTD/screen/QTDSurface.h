// The drawing target: what a screen paints on, and what overlay objects and text go to.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QTD/frame/Properties.h"
#include "QTD/frame/RMutex.h"
#include "QTD/screen/ColorValue.h"
#include "ZynImage.h"

namespace QTD {

class SurfaceText;

struct RectD {
  double x = 0, y = 0, width = 0, height = 0;
};

struct SizeI {
  int32_t width = 0, height = 0;
};

}  // namespace QTD

// All drawing coordinates are surface pixels. The base draws nothing but knows lines and rectangles as
// polylines. GUI thread, except the mapping, `Area` and `setArea` (any thread), and `resize`, which the
// screen calls under its own lock, from another thread only when the size is a new one.
class QTDSurface {
 public:
  using Points = std::vector<std::pair<int, int>>;

  QTDSurface();
  QTDSurface(const QTDSurface&) = delete;
  QTDSurface& operator=(const QTDSurface&) = delete;
  virtual ~QTDSurface();

  virtual bool init(QTD::PROPERTIES* list);  // binds to a window or memory image, makes `surfaceText`
  virtual bool done();
  virtual void resize(int width, int height);
  virtual void text(const char* string, int x, int y, const char* font, const ColorValue* color);
  // Prepares a paint pass; with "deletion" in the list one in which nothing is drawn, only deleted.
  virtual bool begin(QTD::PROPERTIES* list);
  virtual void end(QTD::PROPERTIES* list, bool flush);
  virtual void flush(QTD::PROPERTIES* list);
  virtual bool isValid();
  virtual std::string describe(const char* prefix);
  virtual void polyline(const Points& points, const ColorValue* color, int width, int style);
  virtual void line(int x1, int y1, int x2, int y2, const ColorValue* color, int width, int style);
  virtual void rect(int x, int y, int w, int h, const ColorValue* color, int width, int style);
  // -1 for a position is 0, for a length the surface's; a null colour is "fill" of `defaults`.
  virtual void fill(int x, int y, int w, int h, const ColorValue* color);
  virtual void image(const ZynImage* picture, const QTD::RectD* target, const QTD::RectD* source);
  virtual double toAreaX(int x);
  virtual double toAreaY(int y);
  virtual int fromAreaX(double x);
  virtual int fromAreaY(double y);
  virtual int checkError(const char* where, ...);

  QTD::SurfaceText* Text() const { return surfaceText.get(); }
  // No other surface has or gets it, one in the same place neither. Any thread.
  uint64_t Serial() const { return serial; }

  // `area` under its lock.
  QTD::RectD Area() const;
  void setArea(const QTD::RectD& rectangle);

  QTD::SizeI size;  // pixels of the window or memory image
  // The part that the picture occupies; may reach past the edges. Read and written directly only while no
  // other thread can be at it.
  QTD::RectD area;
  QTD::PROPERTIES properties;

 protected:
  std::string sizeText() const;
  std::string areaText() const;

  bool drawn = false;
  std::string name;
  std::map<std::string, ColorValue> defaults;  // "line" and "fill", both black
  std::unique_ptr<QTD::SurfaceText> surfaceText;
  QTD::RMutex lock;  // for subclasses; the base takes no lock

 private:
  const uint64_t serial;
  mutable std::mutex areaLock;  // guards `area` in Area and setArea
};
