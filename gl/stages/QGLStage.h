// What the stages on the card have in common: the surface they work on, their input and their target.
#pragma once

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QPointer>
#include <QThread>
#include <cstdint>
#include <memory>
#include <tuple>
#include <utility>

#include "QTD/frame/ArgumentView.h"
#include "QTD/frame/Text.h"
#include "QTD/image/ImageRecord.h"
#include "QTD/screen/SurfacePass.h"
#include "QTD/stages/Stage.h"
#include "gl/image/QGLImage.h"
#include "gl/image/QGLTexture.h"
#include "gl/stages/StageOwner.h"
#include "gl/surface/LivingObjects.h"
#include "gl/surface/QGLSurface.h"

// The class that derives from it writes `Init`, `ProcessImage` and `Release`, and calls its own `Release` in
// its destructor. What touches the card belongs to the GUI thread: elsewhere there is no surface, since the
// window that it lies on may be closing. Commands belong to any thread. The stage's lock is held meanwhile,
// and the surface is between `begin` and `end`.
template <typename Interface, template <typename> class Base = QTD::Stage>
class QGLStage : public Base<Interface> {
 protected:
  QGLStage(ZynDisplayProcessor* display, ZynComponent* parentComponent, const char* stageName,
           const char* className)
      : Base<Interface>(parentComponent, stageName, className), owner(display) {}

  // For `Init`: the controller's surface as it is now, null when none is ready.
  QGLSurface* TakeSurface() {
    surface = OnGuiThread() ? owner.Surface() : nullptr;
    context = surface ? surface->Context() : nullptr;
    return UsableSurface();
  }

  // Asks the controller as long as there is none.
  QGLSurface* FindSurface() { return surface && OnGuiThread() ? UsableSurface() : TakeSurface(); }

  // Null also once the surface that the stage's objects lie on has gone, or has another context: a host may
  // close the window before it deletes the stage.
  QGLSurface* UsableSurface() const { return Usable(surface, context); }

  // One run with the context current; on another thread it fails. What throws has failed, and after a failure
  // there is no result.
  template <typename Step>
  uint32_t RunOnCard(const Step& step) {
    uint32_t code = ZYN_ERR_FAILED;
    if (OnGuiThread()) {
      QGLSurface* const used = FindSurface();
      const SurfacePass current(used);
      try {
        if (!used || used->isActive()) code = step();
      } catch (...) {  // a parameter that is no number
      }
    }
    QGLImage* const image = Result();
    this->out = code == 0 && image ? image->image() : nullptr;
    return this->Finish(code);
  }

  // Brings the result into its record; a bare code. On another thread it fails.
  uint32_t ReadBack() {
    if (!OnGuiThread()) return ZYN_ERR_FAILED;
    QGLSurface* const used = FindSurface();
    const SurfacePass current(used);
    QGLImage* const image = used ? Result() : nullptr;
    return image && image->readGPU(nullptr) ? 0u : uint32_t{ZYN_ERR_FAILED};
  }

  // "cmd.enable", which answers 0 in any case: a text that is no number changes nothing.
  void EnableByCommand(QTD::ARGUMENTS* args) {
    this->CodeOf([&] {
      this->Enable(QTD::ArgumentView(args).GetInt("enabled", "0") != 0);
      return 0u;
    });
  }

  virtual QGLImage* Result() const { return target.get(); }

  // The size and code of the target, for all that is made for `source`.
  void Describe(const ZynImage& source, QTD::PROPERTIES& list) {
    list.Set("surface", QTD::ToText(static_cast<const void*>(static_cast<QTDSurface*>(surface))))
        .Set("size.y", QTD::ToText(source.height))
        .Set("size.x", QTD::ToText(source.width));
  }

  static void SetTarget(QTD::PROPERTIES& list, const QGLImage* image) {
    list.Set("output", QTD::ToText(static_cast<const void*>(image)));
  }

  // A header, null when there is no such picture.
  static ZynImage* Header(const ZynImage& size, bool bottomUp, uint32_t pixelType) {
    if (size.height > static_cast<uint32_t>(INT32_MAX)) return nullptr;
    const auto height = static_cast<int32_t>(size.height);
    return QTD::ImageCreateHeader(nullptr, size.width, bottomUp ? -height : height, pixelType);
  }

  // The size of a picture on the card is that of its texture, whatever a copy of its record says.
  bool FitsTarget(const ZynImage* image) const {
    const ZynImage* const made = target ? target->image() : nullptr;
    return image && made && HasSizeOf(*image, made) &&
           (TextureOf(*image) == 0 || HasSizeOf(*image, AttachedImage(image)->image()));
  }

  QGLTexture& MakeInput() { return *(input = std::make_unique<QGLTexture>()); }

  // The picture's texture, where it lies on this stage's context and is not what this run draws into; 0
  // elsewhere.
  uint32_t TextureOf(const ZynImage& image) const {
    QGLImage* const attached = AttachedImage(&image);
    const bool own = attached && attached == target.get();
    return attached && !own && attached->Context() == context ? attached->texture() : 0;
  }

  // Whether the record's pixels are the picture: those of one that lies on another context are what its last
  // read-back left.
  static bool IsInMemory(const ZynImage& image) {
    const QGLImage* const attached = AttachedImage(&image);
    return !attached || attached->IsRead();
  }

  // Binds the picture to texture unit 0: its own texture, or the stage's input, filled from memory. The
  // texture's name, 0 when the picture could not be uploaded.
  uint32_t BindInput(const ZynImage& image) {
    surface->glEnable(GL_TEXTURE_2D);
    surface->glActiveTexture(GL_TEXTURE0);
    uint32_t texture = TextureOf(image);
    if (texture == 0 && input && IsInMemory(image) && input->bind() && input->fill(&image))
      texture = input->texture();
    if (texture != 0) surface->glBindTexture(GL_TEXTURE_2D, texture);
    return texture;
  }

  // The target's record names the picture that it was made from.
  void NameTarget(const ZynImage& image) { target->image()->imageID = image.imageID; }

  // After a pass, on unit 0.
  void BindTarget() {
    surface->glActiveTexture(GL_TEXTURE0);
    surface->glBindTexture(GL_TEXTURE_2D, target->texture());
  }

  // Frees what lies on the card, in this order, and the information records. From another thread all that
  // goes to the GUI thread, whose context it is.
  template <typename... Owned>
  void Discard(std::unique_ptr<Owned>&... owned) {
    this->Reset();
    if (!(... || owned)) return Forget();
    if (OnGuiThread() || !QCoreApplication::instance()) {
      const SurfacePass current(UsableSurface(), SurfacePass::kDeletion);
      (owned.reset(), ...);
      return Forget();
    }
    const auto taken = std::make_shared<std::tuple<std::unique_ptr<Owned>...>>(std::move(owned)...);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [taken, used = surface, usedContext = context] {
          const SurfacePass current(Usable(used, usedContext), SurfacePass::kDeletion);
          std::apply([](auto&... each) { (each.reset(), ...); }, *taken);
        },
        Qt::QueuedConnection);
    Forget();
  }

  const StageOwner owner;
  QGLSurface* surface = nullptr;      // the display's, not owned; ask `UsableSurface` before use
  QPointer<QOpenGLContext> context;   // the surface's at `Init`
  std::unique_ptr<QGLImage> target;   // null before `Init`
  std::unique_ptr<QGLTexture> input;  // for pictures that come in memory

 private:
  static bool OnGuiThread() {
    const QCoreApplication* const application = QCoreApplication::instance();
    return application && application->thread() == QThread::currentThread();
  }

  static bool HasSizeOf(const ZynImage& image, const ZynImage* other) {
    return other && image.width == other->width && image.height == other->height;
  }

  void Forget() {
    surface = nullptr;
    context.clear();
  }

  static QGLSurface* Usable(QGLSurface* used, const QPointer<QOpenGLContext>& usedContext) {
    QGLSurface* const living = usedContext ? LivingSurface(used) : nullptr;
    return living && living->Context() == usedContext ? living : nullptr;
  }
};
