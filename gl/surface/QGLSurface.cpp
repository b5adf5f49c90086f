#include "gl/surface/QGLSurface.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <QCoreApplication>
#include <QEvent>
#include <QSurfaceFormat>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <thread>

#include "QTD/frame/Text.h"
#include "gl/screen/QGLSurfaceText.h"
#include "gl/surface/LivingObjects.h"

using QTD::ToText;

namespace {

constexpr std::chrono::milliseconds kCurrentPatience(3000);
constexpr int64_t kSwapInterval = 31;  // milliseconds
constexpr int kUnknownLimit = 1024;    // where the driver tells none

constexpr const char* kErrorNames[] = {
    // from 0x500 on
    "GL_INVALID_ENUM",   "GL_INVALID_VALUE",   "GL_INVALID_OPERATION",
    "GL_STACK_OVERFLOW", "GL_STACK_UNDERFLOW", "GL_OUT_OF_MEMORY",
};
constexpr uint32_t kFirstErrorName = 0x500;

int64_t Milliseconds() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string ErrorText(uint32_t code) {
  const std::string number = "OpenGL error " + ToText(static_cast<int>(code));
  const uint32_t row = code - kFirstErrorName;
  return row < std::size(kErrorNames) ? number + " (" + kErrorNames[row] + ")" : number;
}

std::string LimitText(int limit) {
  return ToText(limit != 0 ? limit : kUnknownLimit);
}

// Fixed pipeline, shaders and framebuffers side by side: all drawing rests on that.
bool IsCompatible(QOpenGLContext& context) {
  const QSurfaceFormat format = context.format();
  if (context.isOpenGLES() || format.profile() == QSurfaceFormat::CoreProfile) return false;
  // From 3.0 on there are contexts without the fixed pipeline that have no profile either.
  if (format.majorVersion() >= 3 && !format.testOption(QSurfaceFormat::DeprecatedFunctions)) return false;
  const QOpenGLFunctions functions(&context);
  return functions.hasOpenGLFeature(QOpenGLFunctions::Shaders) &&
         functions.hasOpenGLFeature(QOpenGLFunctions::Framebuffers);
}

}  // namespace

QGLSurface::QGLSurface() {
  properties.Set("state", "created");
  properties.Set("smoothing", "1");
}

QGLSurface::~QGLSurface() {
  QGLSurface::done();
}

bool QGLSurface::init(QTD::PROPERTIES* list) {
  done();
  const QTD::RMutexLock guard(lock);
  const auto fail = [this] {
    done();
    properties.Set("state", "failed");
    return false;
  };
  QWindow* const found = list ? LivingWindow(list->GetPointer("window")) : nullptr;
  if (!found) return fail();

  const int width = found->width();
  const int height = found->height();
  const QTD::SizeI newSize{list->GetInt("size.x", ToText(width)), list->GetInt("size.y", ToText(height))};
  const QTD::RectD newArea{list->GetDouble("area.pos.x", "0"), list->GetDouble("area.pos.y", "0"),
                           list->GetDouble("area.dim.w", ToText(width)),
                           list->GetDouble("area.dim.h", ToText(height))};

  window = found;
  if (!makeContext() || !begin(nullptr)) return fail();
  if (!IsCompatible(*context)) return fail();
  prepareFunctions();
  size = newSize;
  setArea(newArea);

  properties.Set("window", ToText(static_cast<const void*>(found)));
  properties.Set("context", ToText(static_cast<const void*>(context.data())));
  properties.Set("thread",
                 ToText(static_cast<long long>(reinterpret_cast<intptr_t>(QThread::currentThreadId()))));
  properties.Set("functions", ToText(static_cast<const void*>(static_cast<QOpenGLFunctions*>(this))));
  properties.Set("area", areaText());
  properties.Set("size", sizeText());
  properties.Set("program", "0");
  properties.Set("class", "QGLSurface");
  publishDriver();

  checkError("QGLSurface::init()", 1, 0);  // an error can be asked for only while the context is current
  end(nullptr, false);
  properties.Set("state", "ready");
  return true;
}

// A window that goes first leaves the context to this surface: functions that were resolved on it are still
// called by textures and targets that go later.
bool QGLSurface::makeContext() {
  if (!window->supportsOpenGL()) return false;  // `begin` would try in vain for seconds
  if (!window->handle()) window->create();
  auto made = std::make_unique<QOpenGLContext>(window);
  QOpenGLContext* const orphan = made.get();
  QObject::connect(window, &QObject::destroyed, orphan, [orphan] { orphan->setParent(nullptr); });
  made->setFormat(QSurfaceFormat());
  if (!made->create()) return false;
  context = made.release();
  return true;
}

void QGLSurface::prepareFunctions() {
  initializeOpenGLFunctions();
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  surfaceText = std::make_unique<QGLSurfaceText>();
}

void QGLSurface::publishDriver() {
  const auto number = [this](GLenum limit) {
    GLint values[2] = {0, 0};
    glGetIntegerv(limit, values);
    return values[0];
  };
  const auto answer = [this](GLenum question) {
    const GLubyte* const text = glGetString(question);
    return std::string(text ? reinterpret_cast<const char*>(text) : "");
  };
  GLint viewport[2] = {0, 0};
  glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);

  properties.Set("gl.renderbuffer", LimitText(number(GL_MAX_RENDERBUFFER_SIZE)));
  properties.Set("gl.texture", LimitText(number(GL_MAX_TEXTURE_SIZE)));
  properties.Set("gl.viewport", LimitText(std::min(viewport[0], viewport[1])));
  if (const std::string vendor = answer(GL_VENDOR); !vendor.empty()) properties.Set("gl.vendor", vendor);
  properties.Set("gl.strict", "1");
  if (glGetString(GL_VERSION)) properties.Set("gl.version", answer(GL_VERSION));
}

bool QGLSurface::done() {
  const QTD::RMutexLock guard(lock);
  late.reset();
  surfaceText.reset();
  // Once the application is gone, so is the connection that the context was made on: then it is left alone.
  if (context && QCoreApplication::instance()) {
    if (isCurrent) context->doneCurrent();
    delete context;
  }
  context.clear();
  d_ptr = nullptr;  // the functions went with the context
  window.clear();
  lastFlushTime = 0;
  isCurrent = false;
  depth = 0;
  properties.Set("state", "deleted");
  return true;
}

bool QGLSurface::begin(QTD::PROPERTIES*) {
  const QTD::RMutexLock guard(lock);
  if (!window || !window->handle()) return false;
  if (context && !(isCurrent && isActive())) {
    if (!onContextThread()) return false;  // Qt ends the process
    const auto start = std::chrono::steady_clock::now();
    while (!context->makeCurrent(window)) {
      if (std::chrono::steady_clock::now() - start >= kCurrentPatience) return false;
      std::this_thread::yield();
    }
    isCurrent = true;
  }
  ++depth;
  checkError("QGLSurface::begin()", 1, 0);
  return true;
}

void QGLSurface::end(QTD::PROPERTIES*, bool) {
  const QTD::RMutexLock guard(lock);
  if (context && !onContextThread()) return;  // the pass is another thread's
  checkError("QGLSurface::end()", 1, 0);
  if (depth > 1) {
    --depth;
    return;
  }
  depth = 0;
  if (isCurrent && isActive()) context->doneCurrent();
  isCurrent = false;
}

void QGLSurface::flush(QTD::PROPERTIES* list) {
  const std::unique_lock<QTD::RMutex> guard(lock, std::try_to_lock);
  if (!guard || !window || !context || !onContextThread()) return;
  const bool force = list && list->GetInt("force") != 0;
  QSurface* const target = context->surface();
  if (!target) return;
  const int64_t passed = Milliseconds() - lastFlushTime;
  if (!force && passed < kSwapInterval) {
    swapLater(kSwapInterval - passed);
    return;
  }
  if (late) late->stop();
  context->swapBuffers(target);
  lastFlushTime = Milliseconds();
  checkError("QGLSurface::flush()", 1, 0);
}

// The picture that was not shown is painted again when its swap is due.
void QGLSurface::swapLater(int64_t delay) {
  if (!late) {
    late = std::make_unique<QTimer>();
    late->setSingleShot(true);
    late->setTimerType(Qt::PreciseTimer);
    QObject::connect(late.get(), &QTimer::timeout, late.get(), [this] {
      if (window) QCoreApplication::postEvent(window, new QEvent(QEvent::UpdateRequest));
    });
  }
  if (!late->isActive()) late->start(static_cast<int>(delay));
}

bool QGLSurface::isValid() {
  return !context.isNull();
}

bool QGLSurface::isActive() const {
  return context && d_ptr && QOpenGLContext::currentContext() == context;
}

bool QGLSurface::onContextThread() const {
  return context->thread() == QThread::currentThread();
}

double QGLSurface::pixelRatio() const {
  return window ? window->devicePixelRatio() : 1.0;
}

std::string QGLSurface::describe(const char* prefix) {
  const QTD::RMutexLock guard(lock);
  return QTDSurface::describe(prefix) + " [" + ToText(static_cast<const void*>(context.data())) + "/" +
         properties.GetString("thread") + "]";
}

int QGLSurface::checkError(const char* where, ...) {
  va_list arguments;
  va_start(arguments, where);
  const bool withWhere = va_arg(arguments, int) != 0;
  const bool strict = va_arg(arguments, int) != 0;
  va_end(arguments);

  lastError = isActive() ? glGetError() : uint32_t{GL_NO_ERROR};
  // The answer alone is cleared, not `lastError`.
  if (!strict && lastError == GL_INVALID_OPERATION) return 0;
  if (lastError == GL_NO_ERROR) return 0;
  std::string text;
  if (withWhere) text = where ? std::string(where) + " " + ErrorText(lastError) : ErrorText(lastError);
  properties.Set("error", text);
  return static_cast<int>(lastError);
}
