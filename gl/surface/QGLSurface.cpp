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

#include "QTD/frame/LivePointers.h"
#include "QTD/frame/Text.h"
#include "gl/screen/QGLSurfaceText.h"
#include "gl/surface/LivingObjects.h"

using QTD::ToText;

namespace {

constexpr std::chrono::milliseconds kCurrentPatience(3000);
constexpr std::chrono::milliseconds kCurrentPause(10);  // between two tries
constexpr int64_t kSwapInterval = 31;                   // milliseconds
constexpr int kUnknownLimit = 1024;                     // where the driver tells none

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
  QTD::LivePointers<QGLSurface>::Instance().Add(this);
}

QGLSurface::~QGLSurface() {
  QTD::LivePointers<QGLSurface>::Instance().Remove(this);
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
  leave();
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
    if (isCurrent && isActive()) context->doneCurrent();  // not another one, of a stage of the host's
    delete context;
  }
  context.clear();
  spare.reset();
  d_ptr = nullptr;  // the functions went with the context
  window.clear();
  lastFlushTime = 0;
  isCurrent = false;
  waitedInVain = false;
  depth = 0;
  properties.Set("state", "deleted");
  return true;
}

bool QGLSurface::begin(QTD::PROPERTIES* list) {
  const QTD::RMutexLock guard(lock);
  // First of all: on another thread Qt ends the process, and the window may be closing meanwhile.
  if (context && !onContextThread()) return false;
  // Once the application is gone, so is the connection that the context was made on.
  if (!QCoreApplication::instance()) return false;
  const bool canDraw = window && window->handle();
  const bool deleting = context && list && list->GetInt("deletion") != 0;
  if (!canDraw && !deleting) return false;
  const bool isAtHand = isCurrent && isActive() && !(spare && canDraw);  // the window is back: draw there
  if (context && !isAtHand && !(canDraw && makeCurrent()) && !(deleting && makeCurrentElsewhere()))
    return false;
  // An error is told to whom it happened: a pass within a pass finds those of the code around it.
  if (depth == 0) checkError("QGLSurface::begin()", 1, 0);
  ++depth;
  return true;
}

// A wait in vain is not repeated: a run of the chain asks many times, and the user interface stands still
// meanwhile. Each later call asks once, until the context is to be had again.
bool QGLSurface::makeCurrent() {
  const auto start = std::chrono::steady_clock::now();
  while (!context->makeCurrent(window)) {
    waitedInVain = waitedInVain || std::chrono::steady_clock::now() - start >= kCurrentPatience;
    if (waitedInVain) return false;
    std::this_thread::sleep_for(kCurrentPause);
  }
  waitedInVain = false;
  isCurrent = true;
  return true;
}

// Not where another context is current, which code around this goes on using.
bool QGLSurface::makeCurrentElsewhere() {
  if (QOpenGLContext::currentContext()) return false;
  spare = std::make_unique<QOffscreenSurface>();
  spare->setFormat(context->format());
  spare->create();
  if (!spare->isValid() || !context->makeCurrent(spare.get())) {
    spare.reset();
    return false;
  }
  isCurrent = true;
  return true;
}

void QGLSurface::end(QTD::PROPERTIES*, bool) {
  const QTD::RMutexLock guard(lock);
  if (context && !onContextThread()) return;  // the pass is another thread's
  if (depth > 1) {
    --depth;
    return;
  }
  checkError("QGLSurface::end()", 1, 0);
  leave();
}

void QGLSurface::leave() {
  depth = 0;
  if (isCurrent && isActive()) context->doneCurrent();
  isCurrent = false;
  spare.reset();
}

void QGLSurface::flush(QTD::PROPERTIES* list) {
  const std::unique_lock<QTD::RMutex> guard(lock, std::try_to_lock);
  if (!guard) {
    paintAgain();
    return;
  }
  if (!context || !onContextThread() || !window) return;
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

// For a swap that was skipped because another thread is inside. Nothing of this surface may be touched here;
// it is looked up when the GUI thread comes to it.
void QGLSurface::paintAgain() const {
  QCoreApplication* const application = QCoreApplication::instance();
  if (!application) return;
  const auto makeUp = [pointer = static_cast<const void*>(this)] {
    QGLSurface* const living = LivingSurface(pointer);
    if (!living) return;
    const QTD::RMutexLock guard(living->lock);
    if (living->context && living->onContextThread()) living->swapLater(kSwapInterval);
  };
  QMetaObject::invokeMethod(application, makeUp, Qt::QueuedConnection);
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
