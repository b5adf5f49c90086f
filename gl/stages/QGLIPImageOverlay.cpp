#include "gl/stages/QGLIPImageOverlay.h"

#include <GL/gl.h>

#include <stdexcept>

#include "QTD/frame/Logging.h"
#include "QTD/image/PixelFormats.h"
#include "QTD/screen/Numbers.h"

namespace {

// What is drawn counts in pixels of the picture. A copied texture leaves it so; an upload does not.
void CountInPixels(QGLSurface& surface, const ZynImage& picture) {
  surface.glViewport(0, 0, static_cast<GLsizei>(picture.width), static_cast<GLsizei>(picture.height));
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0, picture.width, 0, picture.height, -1, 1);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

// Drawing goes into the target, and text templates see the picture, as long as this lives.
class PaintPass {
 public:
  PaintPass(QGLImage& usedTarget, QTD::DrawObjects& usedStore, const ZynImage& picture)
      : target(usedTarget), store(usedStore) {
    store.setImage(&picture);
    target.bind();
  }
  ~PaintPass() {
    target.unbind();
    try {
      store.setImage(nullptr);
    } catch (...) {  // short of memory for a text; the store's own copy of the record stays valid
    }
  }
  PaintPass(const PaintPass&) = delete;
  PaintPass& operator=(const PaintPass&) = delete;

 private:
  QGLImage& target;
  QTD::DrawObjects& store;
};

}  // namespace

ZynImgProcessor* ZynDisplayQGL::ImageOverlay::CreateComponent(ZynDisplayProcessor* display) {
  return new QGLIPImageOverlay(display);
}

void ZynDisplayQGL::ImageOverlay::DeleteComponent(ZynImgProcessor* stage) {
  delete stage;
}

QGLIPImageOverlay::QGLIPImageOverlay(ZynDisplayProcessor* display)
    : QGLStage(display, nullptr, "image.overlay.gpu", "QGLIPImageOverlay") {}

QGLIPImageOverlay::~QGLIPImageOverlay() {
  EndParameterCalls();
  QGLIPImageOverlay::Release();
}

void QGLIPImageOverlay::Release() {
  const QTD::RMutexLock guard(lock);
  store.setSurface(nullptr);  // commands of other threads may be measuring text on it until now
  Discard(target, input, ownSurface);
  store.clear();
}

uint32_t QGLIPImageOverlay::Init(const ZynImage* source, const ZynImage*) {
  const QTD::RMutexLock guard(lock);
  // A copy, since the caller may hand in a record of this stage, which goes now.
  const ZynImage format = source ? *source : ZynImage{};
  Release();
  if (format.width == 0 || format.height == 0) return Finish(ZYN_ERR_BAD_ARGUMENT);
  if (format.pixelType == 0 || !QTD::IsPictureFormat(format.pixelType)) return Finish(QTD::kStageFormat);
  const SurfacePass current(TakeSurface());
  try {
    const uint32_t code = Prepare(format);
    if (code != 0) Release();
    Finish(code);
    // A surface or texture that can't be had is told by the next run.
    return code == ZYN_ERR_NOT_READY ? 0 : Compose(code);
  } catch (...) {  // a parameter that is no number
    Release();
    return Finish(ZYN_ERR_FAILED);
  }
}

uint32_t QGLIPImageOverlay::Prepare(const ZynImage& source) {
  QTD::PROPERTIES list;
  list.Set("size.y", QTD::ToText(source.height)).Set("size.x", QTD::ToText(source.width));
  ownSurface = std::make_unique<QGLSurfaceRef>(surface);
  if (!ownSurface->init(&list)) return ZYN_ERR_NOT_READY;
  list.Set("surface", QTD::ToText(static_cast<const void*>(ownSurface.get())));
  if (!MakeInput().init(&source, &list)) return ZYN_ERR_NOT_READY;
  parameters.Set("color.depth", QTD::ToText(source.bitDepth));

  target = std::make_unique<QGLImage>(ownSurface.get());
  list.Set("pixeltype", QTD::ToText(source.pixelType))
      .Set("image.flip.vert", QTD::ToText(Flip()))
      .Set("image.color.coef", Factor())
      .Set("image.color.high", QTD::ToText(1.0));
  const bool made = target->init(nullptr, &list);

  store.setSurface(ownSurface.get());
  store.setViewport(0, 0, static_cast<int>(source.width), static_cast<int>(source.height));
  sourceInfo = Header(source, source.origin == 1, source.pixelType);
  outputInfo = sourceInfo;  // one record for both
  if (!sourceInfo) return QTD::kStageNoMemory;
  out = target->image();
  ready = made && out;
  return 0;
}

// A factor of 0 counts as not set, which is 1 here: the target's own default would go to the full range.
std::string QGLIPImageOverlay::Factor() {
  const std::string plain = QTD::ToText(1.0);
  const std::string wanted = parameters.GetString("image.color.coef", plain);
  try {
    return QTD::IsNearZero(QTD::ParseDouble(wanted)) ? plain : wanted;
  } catch (const std::logic_error&) {  // no number: told by the next run
    return wanted;
  }
}

uint32_t QGLIPImageOverlay::ProcessImage(const ZynImage* source, ZynImage*, void*) {
  ZYN_TRACE(log, "QGLIPImageOverlay::ProcessImage()");
  const QTD::RMutexLock guard(lock);
  return RunOnCard([&] { return Run(source); });
}

uint32_t QGLIPImageOverlay::Run(const ZynImage* source) {
  if (!source || source->width == 0) return ZYN_ERR_BAD_ARGUMENT;
  if (!ready || !UsableSurface()) return ZYN_ERR_NOT_READY;
  if (!FitsTarget(source)) return ZYN_ERR_BAD_ARGUMENT;
  if (!TakePicture(*source)) return ZYN_ERR_FAILED;
  NameTarget(*source);
  if (IsEnabled() && store.count() > 0) DrawStore(*source);
  return 0;
}

bool QGLIPImageOverlay::TakePicture(const ZynImage& source) {
  surface->glActiveTexture(GL_TEXTURE0);
  if (const uint32_t texture = TextureOf(source)) {
    surface->glBindTexture(GL_TEXTURE_2D, texture);
    target->copyTexture(texture, nullptr);
    return true;
  }
  surface->glBindTexture(GL_TEXTURE_2D, target->texture());
  return IsInMemory(source) && target->fillGPU(&source);
}

void QGLIPImageOverlay::DrawStore(const ZynImage& source) {
  drawArguments.Set("color.depth", parameters.GetString("color.depth"));
  const PaintPass pass(*target, store, source);
  CountInPixels(*surface, source);
  store.place(nullptr, true);  // templates may have become longer or shorter with this image
  store.draw(ownSurface.get(), &drawArguments);
}

// The objects. Their store has locks of its own; this one keeps a run's picture as it began.

std::string QGLIPImageOverlay::AddText(const char* text, int x, int y, QTD::PROPERTIES* properties) {
  const QTD::RMutexLock guard(lock);
  if (!ownSurface || !text || !*text) return {};
  return OverlayStage::AddText(text, x, y, properties);
}

std::string QGLIPImageOverlay::AddRect(int x, int y, int width, int height, QTD::PROPERTIES* properties) {
  const QTD::RMutexLock guard(lock);
  return OverlayStage::AddRect(x, y, width, height, properties);
}

bool QGLIPImageOverlay::DeleteObject(const std::string& id) {
  const QTD::RMutexLock guard(lock);
  return OverlayStage::DeleteObject(id);
}

bool QGLIPImageOverlay::SetDefaults(QTD::PROPERTIES* properties) {
  const QTD::RMutexLock guard(lock);
  return OverlayStage::SetDefaults(properties);
}

bool QGLIPImageOverlay::SetTextVariables(QTD::PROPERTIES* properties) {
  const QTD::RMutexLock guard(lock);
  return OverlayStage::SetTextVariables(properties);
}
