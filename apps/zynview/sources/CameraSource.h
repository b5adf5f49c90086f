// Live frames from a GigE Vision or USB3 Vision camera, or from a simulated one on loopback.
#pragma once

#include <QString>
#include <memory>
#include <vector>

#include "Options.h"
#include "sources/CameraControls.h"
#include "sources/FrameSource.h"

namespace zynview {

class CameraSource : public FrameSource, public CameraControls {
 public:
  explicit CameraSource(const Options& options);
  ~CameraSource() override;

  // Asks the network and the buses, which takes a second or two; any thread.
  static std::vector<CameraEntry> FindCameras();

  bool Open(QString* error) override;
  ZynImage Format() const override;
  QString Description() const override;
  void Run(const Sink& sink) override;
  CameraControls* Controls() override { return this; }
  bool IsLost() const override;
  QStringList TakeProblems() override;

  QString ID() const override;
  Range Read(Feature feature) const override;
  QString Set(Feature feature, double value) override;
  QStringList PixelFormats() const override;
  QString PixelFormat() const override;
  QString SetPixelFormat(const QString& name) override;

 private:
  struct Camera;
  std::unique_ptr<Camera> camera;
};

}  // namespace zynview
