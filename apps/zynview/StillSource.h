// Sources whose frames are computed beforehand and then repeated at a rate: pictures, raw dumps, the test
// scene.
#pragma once

#include <QImage>
#include <QString>
#include <cstdint>
#include <vector>

#include "FrameSource.h"
#include "Options.h"

namespace zynview {

class StillSource : public FrameSource {
 public:
  explicit StillSource(double framesPerSecond) : rate(framesPerSecond) {}

  ZynImage Format() const override;
  QString Description() const override { return description; }
  void Run(const Sink& sink) override;

 protected:
  uint32_t pixelType = 0, width = 0, height = 0;
  uint32_t pitch = 0;  // 0: lines without padding
  std::vector<std::vector<uint8_t>> frames;
  QString description;

 private:
  double rate;
};

// A picture that Qt reads. Without a format asked for, grey ones become Mono8 or Mono16, all others RGB8.
class PictureSource : public StillSource {
 public:
  explicit PictureSource(const Options& options);
  bool Open(QString* error) override;

 private:
  void Take(QImage image);
  bool Encode(const QImage& image, QString* error);

  QString file;
};

// A file of camera bytes: one frame, or several after each other.
class RawSource : public StillSource {
 public:
  explicit RawSource(const Options& options);
  bool Open(QString* error) override;

 private:
  QString file;
};

// The test scene, one round of its moving part.
class SceneSource : public StillSource {
 public:
  explicit SceneSource(const Options& options);
  bool Open(QString* error) override;
};

}  // namespace zynview
