// The component itself: checks what hosts hand in, and runs the method that was chosen.
#pragma once

#include <memory>
#include <mutex>

#include "ZynDemosaicing.h"
#include "demosaicing/Formats.h"
#include "demosaicing/Method.h"
#include "demosaicing/Parameters.h"

namespace Demosaicing {

class Bayer final : public ZynBayer {
 public:
  Bayer();
  Bayer(const Bayer&) = delete;
  Bayer& operator=(const Bayer&) = delete;
  // Waits for an operation of another thread that is under way.
  ~Bayer();

  ZynComponent* GetComponent() override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output) override;
  uint32_t Init(const ZynImage* source, ZynImage* output) override;
  void Release() override;

 private:
  uint32_t Prepare(const ZynImage& source, const ZynImage& output);

  Parameters parameters;

  std::recursive_mutex lock;       // guards what follows, and is held for the whole of an operation
  std::unique_ptr<Method> method;  // null before `Init`
  const BayerFormat* bayer = nullptr;
  const ColorFormat* color = nullptr;
  uint32_t width = 0, height = 0;
};

}  // namespace Demosaicing
