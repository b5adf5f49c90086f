// What can be set on a live camera.
#pragma once

#include <QString>
#include <QStringList>
#include <array>

namespace zynview {

// Any thread may call any operation, also while frames come. All but `ID` may wait for the camera's answer,
// and for seconds where the camera has gone: they are not for the GUI thread.
class CameraControls {
 public:
  enum Feature { Exposure, Gain, FrameRate };
  static constexpr int kFeatures = 3;

  struct Range {
    bool available = false;  // the camera has it, and it can be set now
    double least = 0, most = 0, value = 0;
  };

  virtual ~CameraControls() = default;

  // Which camera this is, as in a `CameraEntry`.
  virtual QString ID() const = 0;

  // Exposure in microseconds, gain in the camera's own unit, rate in frames per second.
  virtual Range Read(Feature feature) const = 0;
  // Answers an empty text, or why it cannot be done. The camera may take the nearest value that it knows.
  virtual QString Set(Feature feature, double value) = 0;

  // The names that the camera offers, in its order, and the present one.
  virtual QStringList PixelFormats() const = 0;
  virtual QString PixelFormat() const = 0;
  // Waits until no frames come, for buffers and packets are made anew. Then as `Set`.
  virtual QString SetPixelFormat(const QString& name) = 0;

  // All that a panel shows.
  struct State {
    std::array<Range, kFeatures> ranges;
    QStringList formats;
    QString format;
  };
  State ReadAll() const {
    return {{Read(Exposure), Read(Gain), Read(FrameRate)}, PixelFormats(), PixelFormat()};
  }
};

// A camera that was found, or the simulator.
struct CameraEntry {
  QString id;    // what opens it; empty: the simulator
  QString name;  // for people
};

}  // namespace zynview
