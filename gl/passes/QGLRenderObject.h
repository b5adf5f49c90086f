// A shader pass with its program and its table of uniforms.
#pragma once

#include <QOpenGLShaderProgram>
#include <initializer_list>
#include <memory>
#include <optional>

#include "QTD/image/PixelFormat.h"
#include "gl/passes/RenderObject.h"

class QGLImage;

// What tells one pass from another at `Init`.
struct PassPlan {
  const char* vertexShader;
  const char* fragmentShader;
  std::initializer_list<const char*> uniforms;
  uint32_t formatCode;  // decoded into the pass's format
  // For a target that the pass makes itself: the record to make it like, null for none, and the pixel code
  // where that is another one.
  const ZynImage* targetLike;
  std::optional<uint32_t> targetCode;
};

class QGLRenderObject : public QTD::RenderObject {
 public:
  explicit QGLRenderObject(QGLSurface* usedSurface);
  ~QGLRenderObject() override;  // deletes a target that the pass made itself, no other

  void Release() override;
  bool Prepare() override;  // resolves the uniforms' locations, leaves the program bound

 protected:
  // The common part of every pass's `Init`, with `lock` held: takes "output" or makes a target, builds the
  // program.
  bool InitPass(const ZynImage& image, QTD::PROPERTIES* list, const PassPlan& plan);
  bool CanRender(const ZynImage* image);  // there are an image, a surface and a target
  void UseProgram();
  void DrawAndUnbind();  // the pass itself, into the target that is bound

  // The parameter "image.color.coef". Where it is absent or near zero, the factor that brings the format's
  // samples to the full range of 8 bits for a depth of 8, else of 16.
  double ColorCoef();

  void SetInt(const char* uniform, int value);
  void SetFloat(const char* uniform, double value);
  void SetVec2(const char* uniform, double x, double y);
  void SetVec3(const char* uniform, double x, double y, double z);
  // vec4 (width, height, 1 / width, 1 / height), a reciprocal 0 for a size below 1e-7.
  void SetSize(const char* uniform, double width, double height);

  QOpenGLShaderProgram program;
  QTD::PROPERTIES uniforms;  // uniform name to location
  QTD::PixelFormat format;
  QGLImage* target = nullptr;  // the stage's, or `ownTarget`

 private:
  void MakeTarget(const PassPlan& plan, QTD::PROPERTIES* list);
  void BuildProgram(const PassPlan& plan);
  int Location(const char* uniform);

  std::unique_ptr<QGLImage> ownTarget;
};
