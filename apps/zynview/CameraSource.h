// Live frames from a GigE Vision or USB3 Vision camera, or from a simulated one on loopback.
#pragma once

#include <QString>
#include <memory>

#include "FrameSource.h"
#include "Options.h"

namespace zynview {

class CameraSource : public FrameSource {
 public:
  explicit CameraSource(const Options& options);
  ~CameraSource() override;

  bool Open(QString* error) override;
  ZynImage Format() const override;
  QString Description() const override;
  void Run(const Sink& sink) override;

 private:
  struct Camera;
  std::unique_ptr<Camera> camera;
};

}  // namespace zynview
