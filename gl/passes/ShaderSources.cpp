#include "gl/passes/ShaderSources.h"

#include <cstring>

namespace {

struct ShaderSource {
  const char* name;
  const char* text;
};

constexpr ShaderSource ShaderSources[] = {
#include "ShaderTexts.inc"
};

}  // namespace

const char* FindShaderSource(const char* name) {
  if (!name) return nullptr;
  for (const ShaderSource& row : ShaderSources) {
    if (std::strcmp(name, row.name) == 0) return row.text;
  }
  return nullptr;
}
