// The store of overlay objects of one drawing target: lists by identifier, painted after the picture.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QTD/frame/Properties.h"
#include "QTD/image/TextParser.h"
#include "QTD/screen/ColorValue.h"
#include "QTD/screen/QTDScreen.h"
#include "ZynImage.h"

class QTDSurface;

namespace QTD {

// Any thread may call any operation but `draw`, which belongs to the thread that paints the surface. Order of
// locks: `lock`, then `drawLock`; both are recursive, and each operation takes what it needs even where its
// `takeLock` is false. An object is a property list; its keys are "objectID", "type", "x", "y", "w", "h",
// "text", "placement", "adjust", the same positions in the caller's system "cs" as "x.cs" and so on (an
// absent or empty "cs" is "win"), and any key of `defaults`.
class DrawObjects {
 public:
  DrawObjects();
  DrawObjects(const DrawObjects&) = delete;
  DrawObjects& operator=(const DrawObjects&) = delete;
  virtual ~DrawObjects();

  virtual void reset();
  virtual void clear();
  virtual void setViewport(int x, int y, int width, int height);
  // Paints "text" and "rect" objects in the order of their identifiers; a null target is the store's own. Of
  // `list` "color.depth" counts. Throws nothing.
  virtual void draw(QTDSurface* target, PROPERTIES* list);
  virtual bool add(PROPERTIES* object, bool replace);
  virtual bool remove(const std::string& id);
  // Merges `list` into the object and lays it out again.
  virtual void update(const std::string& id, PROPERTIES* list);
  // Lays out one object, or all for null. Throws nothing.
  virtual void place(PROPERTIES* object, bool takeLock);
  // The set... operations store an object of one kind: `list` merged with what they are given. Without a
  // payload (a null text or rectangle; for lines and markers a position with both parts negative) they delete
  // the object `id`. An empty `id` asks for a new one; `id` becomes the identifier of the stored object.
  virtual bool setPlacedText(std::string& id, int placement, const char* text, PROPERTIES* list);
  virtual bool setText(std::string& id, int x, int y, const char* text, PROPERTIES* list);
  virtual bool setRect(std::string& id, const RectI* rect, PROPERTIES* list);
  virtual bool setLine(std::string& id, int x1, int y1, int x2, int y2, PROPERTIES* list);
  virtual bool setMarker(std::string& id, int x, int y, PROPERTIES* list);
  // False for a known identifier unless `replace`. A list without an identifier is kept under the empty one,
  // and answers false.
  virtual bool store(PROPERTIES* object, bool replace, bool takeLock);
  virtual bool erase(const std::string& id);
  virtual bool layout(PROPERTIES* object, int* x, int* y);
  virtual std::string newId(const std::string& id);

  // The stored list itself: good only as long as the caller keeps every other thread away from the store.
  // Others use the copies below.
  PROPERTIES* find(const std::string& id, bool takeLock);
  bool get(const std::string& id, PROPERTIES* list);  // copies an object out
  // Merges `list` into the object as it then is, and leaves its place alone. False for an unknown identifier:
  // an object that was deleted meanwhile does not come back.
  bool merge(const std::string& id, PROPERTIES* list);
  int count();
  // Copies of the object at a position of the map's order; false past its end.
  bool getAt(int index, PROPERTIES* list);
  std::string idAt(int index);
  std::vector<std::string> ids();  // of all objects, in the order of the map

  void setSurface(QTDSurface* target);
  // The picture whose values text templates show, null for none. The store keeps a copy of the record,
  // without its pixels, so that the owner may write a new one into it while any thread lays texts out.
  void setImage(const ZynImage* picture);
  TextParser* Parser() const { return parser; }
  PROPERTIES& Defaults() { return defaults; }

 protected:
  PROPERTIES defaults;
  std::string name;
  std::recursive_mutex lock;  // guards the store's operations
  std::map<std::string, PROPERTIES> objects;
  std::recursive_mutex drawLock;  // guards `objects` while they are drawn; taken by trying and yielding
  QTDSurface* surface = nullptr;  // not owned
  // Owned while it is a QTDImageParser. Expands under `lock` and `drawLock` only.
  TextParser* parser;
  ZynImage shownImage{};  // what the parser's variable "image" points at; guarded by `lock` and `drawLock`
  int32_t viewX = 0, viewY = 0, viewWidth = 0, viewHeight = 0;
  ColorValue color;
  int32_t mono = 0;
  int32_t serial = 1000;

 private:
  bool setObject(std::string& id, const char* type, PROPERTIES* list,
                 const std::function<void(PROPERTIES&)>& fill);
  void drawObject(QTDSurface& target, const PROPERTIES& stored, int depth);
  ColorValue colorAt(int64_t number, int depth) const;  // brought to a depth, and to grey where `mono` is set
  std::string expanded(const std::string& text);        // through `parser`, if there is one
};

}  // namespace QTD
