// The library's pixel codes by the names that cameras use.
#pragma once

#include <QString>
#include <cstdint>

namespace zynview {

struct PixelName {
  const char* name;
  uint32_t code;
};

uint32_t PixelCode(const QString& name);  // 0: unknown; case does not count
QString PixelNameOf(uint32_t code);

}  // namespace zynview
