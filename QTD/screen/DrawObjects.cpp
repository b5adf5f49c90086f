#include "QTD/screen/DrawObjects.h"

#include <cstdio>
#include <iterator>

#include "QTD/frame/RMutex.h"
#include "QTD/frame/Text.h"
#include "QTD/image/QTDImageParser.h"

namespace QTD {

namespace {

constexpr int kSerialEnd = 1000000;  // the serial behind 999999 is 1

constexpr Default kDefaults[] = {
    {"back.mode", "0"}, {"line.clr", "0"}, {"line.width", "1"}, {"text.clr", "0"}, {"text.font", "default"},
};

// Both locks of a store, in their order. They are recursive: what is called under them takes them again.
class BothLocks {
 public:
  BothLocks(std::recursive_mutex& lock, std::recursive_mutex& drawLock)
      : guard(lock), drawGuard(SpinLock(drawLock)) {}

 private:
  std::lock_guard<std::recursive_mutex> guard;
  std::unique_lock<std::recursive_mutex> drawGuard;
};

}  // namespace

DrawObjects::DrawObjects() : parser(new QTDImageParser), color(116, 12, 24) {
  defaults.SetAll(kDefaults);
}

DrawObjects::~DrawObjects() {
  WaitUntilFree(lock);
  WaitUntilFree(drawLock);
  if (parser && parser->name == "QTDImageParser") delete parser;
  objects.clear();
}

void DrawObjects::reset() {
  const BothLocks locks(lock, drawLock);
  objects.clear();
  color = ColorValue(196, 0, 0);
}

void DrawObjects::clear() {
  const BothLocks locks(lock, drawLock);
  objects.clear();
}

void DrawObjects::setViewport(int x, int y, int width, int height) {
  const BothLocks locks(lock, drawLock);
  viewX = x;
  viewY = y;
  viewWidth = width;
  viewHeight = height;
  place(nullptr, true);
}

void DrawObjects::setSurface(QTDSurface* target) {
  const BothLocks locks(lock, drawLock);
  surface = target;
}

void DrawObjects::setImage(const ZynImage* picture) {
  const BothLocks locks(lock, drawLock);
  shownImage = picture ? *picture : ZynImage{};
  shownImage.attachments = nullptr;
  shownImage.imageData = nullptr;
  shownImage.ownedData = nullptr;
  if (parser)
    parser->variables.Set("image", ToText(picture ? static_cast<const void*>(&shownImage) : nullptr));
}

bool DrawObjects::add(PROPERTIES* object, bool replace) {
  if (!object) return false;
  std::lock_guard<std::recursive_mutex> guard(lock);
  place(object, false);
  return store(object, replace, true);
}

bool DrawObjects::remove(const std::string& id) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  return erase(id);
}

void DrawObjects::update(const std::string& id, PROPERTIES* list) {
  const BothLocks locks(lock, drawLock);
  if (merge(id, list)) place(find(id, false), false);
}

bool DrawObjects::store(PROPERTIES* object, bool replace, bool) {
  if (!object) return false;
  const std::string id = object->GetString("objectID");
  const BothLocks locks(lock, drawLock);
  const auto present = objects.find(id);
  if (present != objects.end()) {
    if (!replace) return false;
    if (&present->second == object) return !id.empty();  // the stored list itself: it replaces itself
    objects.erase(present);
  }
  objects.emplace(id, *object);
  return !id.empty();
}

bool DrawObjects::erase(const std::string& id) {
  if (id.empty()) return false;
  const BothLocks locks(lock, drawLock);
  return objects.erase(id) > 0;
}

// An identifier that is given stays. Made ones carry the store's address, so that no two stores share them.
std::string DrawObjects::newId(const std::string& id) {
  if (!id.empty()) return id;
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (++serial >= kSerialEnd) serial = 1;
  char number[16];
  std::snprintf(number, sizeof number, "%05ld", static_cast<long>(serial));
  return std::string(number) + "@" + ToText(static_cast<const void*>(this));
}

bool DrawObjects::setPlacedText(std::string& id, int placement, const char* text, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (!text) return erase(id);
  return setObject(id, "text", list, [&](PROPERTIES& object) {
    object.Set("placement", ToText(placement));
    object.Set("text", text);
  });
}

bool DrawObjects::setText(std::string& id, int x, int y, const char* text, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (!text) return erase(id);
  return setObject(id, "text", list, [&](PROPERTIES& object) {
    object.Set("x", ToText(x));
    object.Set("y", ToText(y));
    object.Set("text", text);
  });
}

bool DrawObjects::setRect(std::string& id, const RectI* rect, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (!rect) return erase(id);
  return setObject(id, "rect", list, [&](PROPERTIES& object) {
    object.Set("x", ToText(rect->x));
    object.Set("y", ToText(rect->y));
    object.Set("w", ToText(rect->width));
    object.Set("h", ToText(rect->height));
  });
}

bool DrawObjects::setLine(std::string& id, int x1, int y1, int x2, int y2, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (x1 < 0 && y1 < 0) return erase(id);
  return setObject(id, "line", list, [&](PROPERTIES& object) {
    object.Set("x", ToText(x1));
    object.Set("y", ToText(y1));
    object.Set("x2", ToText(x2));
    object.Set("y2", ToText(y2));
  });
}

bool DrawObjects::setMarker(std::string& id, int x, int y, PROPERTIES* list) {
  std::lock_guard<std::recursive_mutex> guard(lock);
  if (x < 0 && y < 0) return erase(id);
  return setObject(id, "marker", list, [&](PROPERTIES& object) {
    object.Set("x", ToText(x));
    object.Set("y", ToText(y));
  });
}

// What the set... operations have in common; the caller holds `lock`.
bool DrawObjects::setObject(std::string& id, const char* type, PROPERTIES* list,
                            const std::function<void(PROPERTIES&)>& fill) {
  PROPERTIES object;
  if (list) object.Merge(list);
  fill(object);
  const std::string resulting = newId(id);
  object.Set("objectID", resulting);
  object.Set("type", type);
  if (object.GetString("type") == "text") layout(&object, nullptr, nullptr);
  store(&object, true, false);
  id = resulting;
  return !id.empty();
}

PROPERTIES* DrawObjects::find(const std::string& id, bool) {
  const BothLocks locks(lock, drawLock);
  const auto found = objects.find(id);
  return found == objects.end() ? nullptr : &found->second;
}

bool DrawObjects::get(const std::string& id, PROPERTIES* list) {
  const BothLocks locks(lock, drawLock);
  const PROPERTIES* object = find(id, false);
  if (object && list) *list = *object;
  return object;
}

bool DrawObjects::merge(const std::string& id, PROPERTIES* list) {
  const BothLocks locks(lock, drawLock);
  PROPERTIES* object = find(id, false);
  if (object && list) object->Merge(list);
  return object;
}

int DrawObjects::count() {
  const BothLocks locks(lock, drawLock);
  return static_cast<int>(objects.size());
}

bool DrawObjects::getAt(int index, PROPERTIES* list) {
  const BothLocks locks(lock, drawLock);
  if (index < 0 || index >= count()) return false;
  if (list) *list = std::next(objects.begin(), index)->second;
  return true;
}

std::vector<std::string> DrawObjects::ids() {
  const BothLocks locks(lock, drawLock);
  std::vector<std::string> all;
  all.reserve(objects.size());
  for (const auto& entry : objects) all.push_back(entry.first);
  return all;
}

std::string DrawObjects::idAt(int index) {
  const BothLocks locks(lock, drawLock);
  return index < 0 || index >= count() ? "" : std::next(objects.begin(), index)->first;
}

}  // namespace QTD
