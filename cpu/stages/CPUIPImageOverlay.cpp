#include "cpu/stages/CPUIPImageOverlay.h"

#include <QGuiApplication>
#include <algorithm>
#include <limits>
#include <new>

#include "QTD/frame/Logging.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/image/PixelFormats.h"

namespace {

constexpr uint32_t kMostLines = std::numeric_limits<int32_t>::max();

// The surface and the text templates see a picture as long as this lives.
class PaintPass {
 public:
  PaintPass(MEMSurface& usedSurface, QTD::DrawObjects& usedStore, ZynImage& picture)
      : surface(usedSurface), store(usedStore) {
    list.Set("image", QTD::ToText(static_cast<const void*>(&picture)));
    store.setImage(&picture);
    surface.begin(&list);
  }
  ~PaintPass() {
    try {
      store.setImage(nullptr);
    } catch (...) {  // short of memory for a text; the store's own copy of the record stays valid
    }
    surface.end(&list, false);
  }
  PaintPass(const PaintPass&) = delete;
  PaintPass& operator=(const PaintPass&) = delete;

  QTD::PROPERTIES* List() { return &list; }

 private:
  MEMSurface& surface;
  QTD::DrawObjects& store;
  QTD::PROPERTIES list;
};

}  // namespace

ZynImgProcessor* ZynDisplayCPU::ImageOverlay::CreateComponent(ZynComponent* parent) {
  return new CPUIPImageOverlay(parent);
}

void ZynDisplayCPU::ImageOverlay::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

CPUIPImageOverlay::CPUIPImageOverlay(ZynComponent* parentComponent)
    : OverlayStage(parentComponent, "image.overlay.cpu", "CPUIPImageOverlay") {}

CPUIPImageOverlay::~CPUIPImageOverlay() {
  EndParameterCalls();
  CPUIPImageOverlay::Release();
}

void CPUIPImageOverlay::Release() {
  const QTD::RMutexLock guard(lock);
  Reset();
  store.setSurface(nullptr);  // commands of other threads may be measuring text on it until now
  surface.reset();
  store.clear();
}

// Preparing.

uint32_t CPUIPImageOverlay::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if (!QTD::IsPictureFormat(format.pixelType)) return Finish(QTD::kStageFormat);
  uint32_t code = QTD::kStageNoMemory;
  try {
    code = Prepare(format);
  } catch (const std::bad_alloc&) {
  }
  if (code != 0) Release();
  ready = code == 0;
  return Finish(code);
}

uint32_t CPUIPImageOverlay::Prepare(const ZynImage& format) {
  if (format.height > kMostLines) return QTD::kStageNoMemory;
  const auto height = static_cast<int32_t>(format.height);
  sourceInfo =
      QTD::ImageCreateHeader(nullptr, format.width, format.origin == 1 ? -height : height, format.pixelType);
  if (!sourceInfo) return QTD::kStageNoMemory;
  outputInfo = sourceInfo;  // in place: one record for both

  // Without it there are no fonts, and asking for one ends the process.
  if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return ZYN_ERR_FAILED;
  QTD::PROPERTIES empty;
  surface = std::make_unique<MEMSurface>();
  if (!surface->init(&empty)) return ZYN_ERR_FAILED;
  const auto width = static_cast<int32_t>(std::min(format.width, kMostLines));
  surface->resize(width, height);
  store.setSurface(surface.get());
  store.setViewport(0, 0, width, height);
  return 0;
}

// Running.

uint32_t CPUIPImageOverlay::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  const QTD::RMutexLock guard(lock);
  out = nullptr;
  try {
    ZYN_TRACE(log, "CPUIPImageOverlay::ProcessImage()");
    return Finish(Run(source));
  } catch (...) {
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t CPUIPImageOverlay::Run(const ZynImage* source) {
  if (!surface) return ZYN_ERR_NOT_READY;
  if (!source || !source->imageData) return ZYN_ERR_BAD_ARGUMENT;
  const bool takesText = QTD::IsMonoFormat(source->pixelType) || QTD::IsRgbFormat(source->pixelType);
  if (takesText && store.count() > 0) Draw(*source);
  out = const_cast<ZynImage*>(source);
  return 0;
}

void CPUIPImageOverlay::Draw(const ZynImage& source) {
  ZynImage picture = source;  // what is checked is what is drawn into, whatever a host does to its record
  PaintPass pass(*surface, store, picture);
  store.place(nullptr, true);  // templates may have become longer or shorter with this image
  store.draw(surface.get(), pass.List());
}
