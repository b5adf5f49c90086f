#include "QTD/display/StatusText.h"

#include "QTD/frame/Text.h"
#include "QTD/screen/QTDScreen.h"
#include "QTD/screen/QTDSurface.h"

namespace QTD {

namespace {

std::string Size(const StatusSource& source) {
  return source.hasFormat ? std::to_string(source.width) + "x" + std::to_string(source.height) : "";
}

std::string LastImage(const StatusSource& source) {
  return ToText(source.hasFormat ? static_cast<long long>(source.imageID & 0xFFFFFFFF) : 0LL, "%06lld");
}

std::string Totals(const StatusSource& source) {
  return std::to_string(source.received) + "/" + std::to_string(source.processed);
}

std::string Rate(const StatusSource& source) {
  return WithoutTrailingZeros(ToText(source.rate, "%.1f"));
}

std::string ProcessingTime(const StatusSource& source) {
  return source.chain ? source.chain->GetString("time") : "-";
}

std::string Zoom(const StatusSource& source) {
  return std::to_string(source.screen ? source.screen->zoomPercent() : 0) + "%";
}

std::string Center(const StatusSource& source) {
  if (!source.screen) return "-";
  const PairD center = source.screen->Center();
  return ToText(center.first, "%.2f") + ";" + ToText(center.second, "%.2f");
}

struct Item {
  const char* name;
  std::string (*value)(const StatusSource& source);
};

constexpr Item kItems[] = {
    {"size", Size},           {"last", LastImage}, {"in/p", Totals}, {"fps", Rate},
    {"proc", ProcessingTime}, {"zoom", Zoom},      {"at", Center},
};

}  // namespace

void RefreshStatus(PROPERTIES& items, const StatusSource& source) {
  for (const Item& item : kItems) items.Set(item.name, item.value(source));
}

PROPERTIES InfoItems(const std::string& objectID, bool opengl, QTDSurface* surface) {
  PROPERTIES items;
  items.Set("ID", objectID);
  items.Set("type", opengl ? "GPU" : "CPU");
  if (opengl && surface) {
    items.Set("vendor", surface->properties.GetString("gl.vendor"));
    items.Set("opengl", surface->properties.GetString("gl.version"));
  }
  return items;
}

std::string StatusText(PROPERTIES& items) {
  std::string text;
  for (int index = 0;; ++index) {
    const std::string name = items.NameAt(index);
    if (name.empty()) return text;
    if (!text.empty()) text += ' ';
    text += name + "=\"" + items.GetString(name) + '"';
  }
}

std::string WithoutTrailingZeros(std::string text) {
  const std::size_t point = text.find('.');
  if (text.size() < 2 || point == std::string::npos) return text;
  while (text.back() == '0' && text.size() > point + 2) text.pop_back();
  return text;
}

}  // namespace QTD
