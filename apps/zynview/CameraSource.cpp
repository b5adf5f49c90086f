#include "CameraSource.h"

// GLib and Qt both define the word "signals".
#undef signals
#include <arv.h>

#include <algorithm>
#include <vector>

#include "PixelTable.h"

namespace zynview {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr int kBuffers = 8;
constexpr guint64 kTimeoutMicroseconds = 100000;
constexpr int kSimulatorWidth = 1280, kSimulatorHeight = 1024;
constexpr double kSimulatorRate = 50;

struct Unref {
  template <typename T>
  void operator()(T* object) const {
    if (object) g_object_unref(object);
  }
};

template <typename T>
using Owned = std::unique_ptr<T, Unref>;

// A GError that frees itself.
class Failure {
 public:
  ~Failure() { g_clear_error(&error); }
  GError** operator&() {
    g_clear_error(&error);
    return &error;
  }
  explicit operator bool() const { return error != nullptr; }
  QString Text() const { return error ? QString::fromUtf8(error->message) : QStringLiteral("no answer"); }

 private:
  GError* error = nullptr;
};

}  // namespace

struct CameraSource::Camera {
  Options options;
  Owned<ArvGvFakeCamera> simulator;  // outlives the camera that talks to it
  Owned<ArvCamera> device;
  Owned<ArvStream> stream;
  QString name;
  ZynImage format{};

  bool Connect(QString* error);
  bool Configure(QString* error);
  bool StartStream(QString* error);
  void Deliver(ArvBuffer* buffer, const Sink& sink, bool* running) const;
};

CameraSource::CameraSource(const Options& options) : camera(std::make_unique<Camera>()) {
  camera->options = options;
}

CameraSource::~CameraSource() = default;

ZynImage CameraSource::Format() const {
  return camera->format;
}

QString CameraSource::Description() const {
  return camera->name;
}

bool CameraSource::Open(QString* error) {
  return camera->Connect(error) && camera->Configure(error) && camera->StartStream(error);
}

// The camera asked for, else the first one found, else the simulator.
bool CameraSource::Camera::Connect(QString* error) {
  Failure failure;
  QString id = options.camera;
  if (id.isEmpty() && options.source != Options::Simulator) {
    arv_update_device_list();
    if (arv_get_n_devices() > 0) id = QString::fromUtf8(arv_get_device_id(0));
  }
  const bool simulated = id.isEmpty();
  if (simulated) {
    simulator.reset(arv_gv_fake_camera_new(kLoopback, "ZYNVIEW"));
    if (!simulator || !arv_gv_fake_camera_is_running(simulator.get())) {
      *error = QStringLiteral("no camera was found, and the simulator could not be started on %1")
                   .arg(QString::fromLatin1(kLoopback));
      return false;
    }
    id = QString::fromLatin1(kLoopback);
  }
  device.reset(arv_camera_new(id.toUtf8().constData(), &failure));
  if (!device) {
    *error = QStringLiteral("camera %1: %2").arg(id, failure.Text());
    return false;
  }
  name = QStringLiteral("%1 %2").arg(QString::fromUtf8(arv_camera_get_vendor_name(device.get(), nullptr)),
                                     QString::fromUtf8(arv_camera_get_model_name(device.get(), nullptr)));
  if (simulated) name = QStringLiteral("camera simulator (GigE Vision on loopback)");
  return true;
}

bool CameraSource::Camera::Configure(QString* error) {
  Failure failure;
  if (options.pixelType != 0) {
    const QString wanted = PixelNameOf(options.pixelType);
    arv_camera_set_pixel_format_from_string(device.get(), wanted.toLatin1().constData(), &failure);
    if (failure) {
      *error = QStringLiteral("the camera refuses %1: %2").arg(wanted, failure.Text());
      return false;
    }
  }
  if (simulator) {
    arv_camera_set_region(device.get(), 0, 0, kSimulatorWidth, kSimulatorHeight, nullptr);
    arv_camera_set_frame_rate(device.get(), kSimulatorRate, nullptr);
  }
  gint x = 0, y = 0, width = 0, height = 0;
  arv_camera_get_region(device.get(), &x, &y, &width, &height, &failure);
  const char* formatName = arv_camera_get_pixel_format_as_string(device.get(), nullptr);
  const uint32_t pixelType = formatName ? PixelCode(QString::fromUtf8(formatName)) : 0;
  if (failure || width <= 0 || height <= 0 || pixelType == 0) {
    *error = QStringLiteral("the camera delivers %1, which this program does not know")
                 .arg(formatName ? QString::fromUtf8(formatName) : QStringLiteral("nothing"));
    return false;
  }
  format = MakeRecord(pixelType, static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, nullptr);
  return true;
}

bool CameraSource::Camera::StartStream(QString* error) {
  Failure failure;
  const guint payload = arv_camera_get_payload(device.get(), &failure);
  if (!failure) stream.reset(arv_camera_create_stream(device.get(), nullptr, nullptr, &failure));
  if (!stream) {
    *error = QStringLiteral("no stream from the camera: %1").arg(failure.Text());
    return false;
  }
  for (int i = 0; i < kBuffers; ++i) arv_stream_push_buffer(stream.get(), arv_buffer_new_allocate(payload));
  return true;
}

void CameraSource::Run(const Sink& sink) {
  Failure failure;
  arv_camera_set_acquisition_mode(camera->device.get(), ARV_ACQUISITION_MODE_CONTINUOUS, nullptr);
  arv_camera_start_acquisition(camera->device.get(), &failure);
  bool running = !failure;
  while (running) {
    ArvBuffer* buffer = arv_stream_timeout_pop_buffer(camera->stream.get(), kTimeoutMicroseconds);
    // The sink is asked even while no frame comes, so that a silent camera can be stopped.
    if (buffer) {
      camera->Deliver(buffer, sink, &running);
      arv_stream_push_buffer(camera->stream.get(), buffer);
    } else {
      running = sink(ZynImage{});
    }
  }
  arv_camera_stop_acquisition(camera->device.get(), nullptr);
}

void CameraSource::Camera::Deliver(ArvBuffer* buffer, const Sink& sink, bool* running) const {
  if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS) return;
  std::size_t bytes = 0;
  const void* data = arv_buffer_get_data(buffer, &bytes);
  const auto width = static_cast<uint32_t>(arv_buffer_get_image_width(buffer));
  const auto height = static_cast<uint32_t>(arv_buffer_get_image_height(buffer));
  ZynImage frame =
      MakeRecord(format.pixelType, width, height, 0, const_cast<uint8_t*>(static_cast<const uint8_t*>(data)));
  if (frame.imageSize == 0 || frame.imageSize > bytes) return;
  frame.imageID = arv_buffer_get_frame_id(buffer);
  frame.timestamp = arv_buffer_get_timestamp(buffer);
  *running = sink(frame);
}

}  // namespace zynview
