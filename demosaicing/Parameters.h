// The parameter list of the component: the library stands alone and has its own.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ZynComponent.h"

namespace Demosaicing {

// Named texts in the order in which they were made. Nobody is asked before a value is stored or read. Any
// thread.
class Parameters : public ZynComponent {
 public:
  Parameters() = default;
  Parameters(const Parameters&) = delete;
  Parameters& operator=(const Parameters&) = delete;
  // Waits for a call of another thread that is under way.
  ~Parameters() override;

  uint8_t GetComponentID() override;
  uint32_t GetParameterCount() override;
  uint32_t GetParameterName(uint32_t index, char* buffer, uint32_t* size) override;
  uint32_t GetParameter(const char* name, char* buffer, uint32_t* size) override;
  uint32_t SetParameter(const char* name, const char* value) override;
  uint32_t SetParameterBool(const char* name, uint8_t value) override;
  uint32_t SetParameterInt(const char* name, int64_t value) override;
  uint32_t SetParameterDouble(const char* name, double value) override;
  uint32_t SetParameterString(const char* name, const char* value) override;
  uint32_t SetParameterExtra(const char* name, const void* value) override;
  uint32_t GetParameterBool(const char* name, uint8_t* result) override;
  uint32_t GetParameterInt(const char* name, int64_t* result) override;
  uint32_t GetParameterDouble(const char* name, double* result) override;
  uint32_t GetParameterString(const char* name, char* buffer, uint32_t* size) override;
  uint32_t GetParameterExtra(const char* name, void* result) override;
  uint32_t ExecuteCommand(const char* name) override;

 private:
  uint32_t Store(const char* name, std::string value);
  bool Lookup(const char* name, std::string* value);
  template <typename Value, typename Parse>
  uint32_t Read(const char* name, Value* result, Parse parse);

  std::mutex lock;  // guards `items`
  std::vector<std::pair<std::string, std::string>> items;
};

// The return value of a failure: bit 31, the component's id and the code.
constexpr uint8_t kComponentID = 0xFF;
constexpr uint32_t Failure(uint32_t code) {
  return 0x80000000u | uint32_t{kComponentID} << 16 | code;
}

}  // namespace Demosaicing
