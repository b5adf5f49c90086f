#include "sources/MakeSource.h"

#include "sources/CameraSource.h"
#include "sources/FileSource.h"
#include "sources/SceneSource.h"

namespace zynview {

std::unique_ptr<FrameSource> MakeSource(const Options& options) {
  switch (options.source) {
    case Options::File:
    case Options::Raw:
      return std::make_unique<FileSource>(
          options.files, FileFormat{options.pixelType, options.size, options.pitch}, options.rate);
    case Options::Scene:
      return std::make_unique<SceneSource>(options);
    case Options::Camera:
    case Options::Simulator:
      break;
  }
  return std::make_unique<CameraSource>(options);
}

}  // namespace zynview
