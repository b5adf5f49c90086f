// The overlay stage on the card: draws text and rectangles into the picture that passes the chain.
#pragma once

#include <memory>
#include <string>

#include "QTD/stages/OverlayStage.h"
#include "ZynDisplay.h"
#include "gl/stages/QGLStage.h"
#include "gl/surface/QGLSurfaceRef.h"

// Further parameters, read by `Init`: "image.flip.vert" (1 turns the picture), "image.color.coef" (factor);
// "color.depth" is written by it. Parameters and threads of the objects: see QTD::OverlayStage.
class QGLIPImageOverlay : public QGLStage<ZynDisplayQGL::ImageOverlay, QTD::OverlayStage> {
 public:
  explicit QGLIPImageOverlay(ZynDisplayProcessor* display);
  ~QGLIPImageOverlay() override;

  // Objects live until the next `Init` or `Release`.
  uint32_t Init(const ZynImage* source, const ZynImage* output) override;
  uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) override;
  void Release() override;
  // An empty identifier also before `Init` and for an empty text.
  std::string AddText(const char* text, int x, int y, QTD::PROPERTIES* properties) override;
  // These wait for a run, too.
  std::string AddRect(int x, int y, int width, int height, QTD::PROPERTIES* properties) override;
  bool DeleteObject(const std::string& id) override;
  bool SetDefaults(QTD::PROPERTIES* properties) override;
  bool SetTextVariables(QTD::PROPERTIES* properties) override;

 private:
  uint32_t Prepare(const ZynImage& source);
  std::string Factor();
  uint32_t Run(const ZynImage* source);
  bool TakePicture(const ZynImage& source);
  void DrawStore(const ZynImage& source);

  std::unique_ptr<QGLSurfaceRef> ownSurface;  // null before `Init`
  QTD::PROPERTIES drawArguments;
};
