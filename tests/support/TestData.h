// The data set that lies beside the source tree. Tests that use it skip where it is absent.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

// Where `name`, such as "formats/dog_mono10_96x64.10p", lies: in the folder that the environment variable
// ZYN_TEST_DATA names and nowhere else, or, where it is not set, in "../shared/data" seen from the source
// tree (ZYN_SOURCE_DIR), from the working directory or from one of its parents. Nothing when it is not there.
inline std::optional<std::string> TestDataPath(const std::string& name) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const auto in = [&](const fs::path& folder) -> std::optional<std::string> {
    const fs::path path = folder / name;
    if (!fs::exists(path, ignored)) return std::nullopt;
    return path.lexically_normal().string();
  };
  if (const char* const folder = std::getenv("ZYN_TEST_DATA")) return in(folder);
#ifdef ZYN_SOURCE_DIR
  if (auto path = in(fs::path(ZYN_SOURCE_DIR) / "../shared/data")) return path;
#endif
  fs::path base = fs::current_path(ignored);
  while (!base.empty()) {
    if (auto path = in(base / "../shared/data")) return path;
    if (base == base.root_path()) break;
    base = base.parent_path();
  }
  return std::nullopt;
}

// The bytes of a file, or nothing when it cannot be read.
inline std::optional<std::vector<uint8_t>> ReadTestData(const std::string& name) {
  const auto path = TestDataPath(name);
  if (!path) return std::nullopt;
  std::ifstream file(*path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// ZYN_DATA_OR_SKIP(bytes, "formats/dog_mono10_96x64.10p"): declares `bytes` as the file's content, or skips
// the test.
#define ZYN_DATA_OR_SKIP(bytes, name)                                    \
  const auto bytes##Found = ReadTestData(name);                          \
  if (!bytes##Found) GTEST_SKIP() << "there is no test data " << (name); \
  const std::vector<uint8_t>& bytes = *bytes##Found
