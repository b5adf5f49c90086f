#include "gl/passes/QGLRenderObject.h"

#include "QTD/frame/Text.h"
#include "QTD/screen/Numbers.h"
#include "gl/image/GLPixels.h"
#include "gl/image/QGLImage.h"
#include "gl/passes/ShaderSources.h"
#include "gl/surface/LivingObjects.h"
#include "gl/surface/QGLSurface.h"

QGLRenderObject::QGLRenderObject(QGLSurface* usedSurface) : RenderObject(usedSurface), format(0) {}

QGLRenderObject::~QGLRenderObject() = default;

bool QGLRenderObject::Prepare() {
  const uint32_t name = program.programId();
  if (name == 0 || !surface) return false;
  program.bind();
  // A uniform that the linker dropped has location -1; setting it has no effect.
  for (int i = 0; i < uniforms.Count(); ++i) {
    const std::string uniform = uniforms.NameAt(i);
    uniforms.Set(uniform, QTD::ToText(surface->glGetUniformLocation(name, uniform.c_str())));
  }
  return true;
}

bool QGLRenderObject::InitPass(const ZynImage& image, QTD::PROPERTIES* list, const PassPlan& plan) {
  out = nullptr;
  ownTarget.reset();  // of an earlier `Init`
  QTD::PROPERTIES local;
  local.Set("surface", QTD::ToText(static_cast<const void*>(surface)));
  local.Set("size.y", QTD::ToText(image.height));
  local.Set("size.x", QTD::ToText(image.width));
  if (plan.targetCode) local.Set("pixeltype", QTD::ToText(*plan.targetCode));

  target = list ? static_cast<QGLImage*>(list->GetPointer("output")) : nullptr;
  parameters.Set("output", QTD::ToText(static_cast<const void*>(target)));
  if (!target) MakeTarget(plan, &local);

  format.Decode(plan.formatCode);
  if (list) parameters.Merge(list);
  parameters.Merge(&local);

  BuildProgram(plan);
  for (const char* const uniform : plan.uniforms) uniforms.Set(uniform, "0");
  if (!Prepare()) return false;
  program.release();
  out = target->image();
  return true;
}

void QGLRenderObject::MakeTarget(const PassPlan& plan, QTD::PROPERTIES* list) {
  ownTarget = std::make_unique<QGLImage>(surface);
  ownTarget->init(plan.targetLike, list);
  target = ownTarget.get();
}

// A shader that a driver does not take shows itself by its pictures and by OpenGL's errors alone.
void QGLRenderObject::BuildProgram(const PassPlan& plan) {
  program.removeAllShaders();  // of an earlier `Init`
  program.addShaderFromSourceCode(QOpenGLShader::Vertex, FindShaderSource(plan.vertexShader));
  program.addShaderFromSourceCode(QOpenGLShader::Fragment, FindShaderSource(plan.fragmentShader));
  program.link();
  program.bind();
}

// A target whose `init` failed counts as none, and so does a surface that is not between its `begin` and
// `end`: what is drawn then would land in the window, or in a context of the host's.
bool QGLRenderObject::CanRender(const ZynImage* image) {
  const QGLSurface* const living = LivingSurface(surface);
  return image && living && living->isActive() && target && target->isValid();
}

void QGLRenderObject::Release() {
  const QTD::RMutexLock guard(lock);
  RenderObject::Release();
  target = nullptr;  // the owner may delete it from now on
}

void QGLRenderObject::UseProgram() {
  surface->glUseProgram(program.programId());
}

void QGLRenderObject::DrawAndUnbind() {
  target->render();
  surface->glUseProgram(0);
  target->unbind();
}

double QGLRenderObject::ColorCoef() {
  const double fullRange = DefaultColorCoef(format);
  const double coef = parameters.GetDouble("image.color.coef", QTD::ToText(fullRange));
  return QTD::IsNearZero(coef) ? fullRange : coef;
}

int QGLRenderObject::Location(const char* uniform) {
  return uniforms.GetInt(uniform, "-1");
}

void QGLRenderObject::SetInt(const char* uniform, int value) {
  surface->glUniform1i(Location(uniform), value);
}

void QGLRenderObject::SetFloat(const char* uniform, double value) {
  surface->glUniform1f(Location(uniform), static_cast<float>(value));
}

void QGLRenderObject::SetVec2(const char* uniform, double x, double y) {
  surface->glUniform2f(Location(uniform), static_cast<float>(x), static_cast<float>(y));
}

void QGLRenderObject::SetVec3(const char* uniform, double x, double y, double z) {
  surface->glUniform3f(Location(uniform), static_cast<float>(x), static_cast<float>(y),
                       static_cast<float>(z));
}

void QGLRenderObject::SetSize(const char* uniform, double width, double height) {
  surface->glUniform4f(Location(uniform), static_cast<float>(width), static_cast<float>(height),
                       static_cast<float>(QTD::GuardedDivide(1.0, width)),
                       static_cast<float>(QTD::GuardedDivide(1.0, height)));
}
