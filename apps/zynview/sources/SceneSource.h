// The test scene as a source: one round of its moving part, computed beforehand and then repeated at a rate.
#pragma once

#include <QString>
#include <cstdint>
#include <vector>

#include "Options.h"
#include "sources/FrameSource.h"

namespace zynview {

class SceneSource : public FrameSource {
 public:
  explicit SceneSource(const Options& options);

  bool Open(QString* error) override;
  ZynImage Format() const override;
  QString Description() const override { return QStringLiteral("test scene"); }
  void Run(const Sink& sink) override;

 private:
  const double rate;
  uint32_t pixelType, width, height;
  std::vector<std::vector<uint8_t>> frames;
};

}  // namespace zynview
