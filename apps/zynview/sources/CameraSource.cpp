#include "sources/CameraSource.h"

// GLib and Qt both define the word "signals".
#undef signals
#include <arv.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "pixels/PixelTable.h"

namespace zynview {

namespace {

constexpr const char* kLoopback = "127.0.0.1";
constexpr const char* kSimulatorSerial = "ZYNVIEW";
constexpr int kBuffers = 8;
constexpr guint64 kTimeoutMicroseconds = 100000;
constexpr int kSimulatorWidth = 1280, kSimulatorHeight = 1024;
constexpr double kSimulatorRate = 50;
constexpr int kLongestTelling = 1000;                       // milliseconds
constexpr int kSimulatorTries = 30, kSimulatorPause = 100;  // milliseconds
constexpr char kGone[] = "the camera does not answer any more";

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

// How each feature of `CameraControls` is read and set.
struct FeatureRow {
  const char* label;
  gboolean (*isAvailable)(ArvCamera*, GError**);
  void (*bounds)(ArvCamera*, double*, double*, GError**);
  double (*get)(ArvCamera*, GError**);
  void (*set)(ArvCamera*, double, GError**);
  // Null, or what lets go of the camera's own control first.
  gboolean (*isAutomatic)(ArvCamera*, GError**);
  void (*setAutomatic)(ArvCamera*, ArvAuto, GError**);
};

constexpr FeatureRow kFeatureRows[CameraControls::kFeatures] = {
    {"exposure time", arv_camera_is_exposure_time_available, arv_camera_get_exposure_time_bounds,
     arv_camera_get_exposure_time, arv_camera_set_exposure_time, arv_camera_is_exposure_auto_available,
     arv_camera_set_exposure_time_auto},
    {"gain", arv_camera_is_gain_available, arv_camera_get_gain_bounds, arv_camera_get_gain,
     arv_camera_set_gain, arv_camera_is_gain_auto_available, arv_camera_set_gain_auto},
    {"frame rate", arv_camera_is_frame_rate_available, arv_camera_get_frame_rate_bounds,
     arv_camera_get_frame_rate, arv_camera_set_frame_rate, nullptr, nullptr},
};

}  // namespace

struct CameraSource::Camera {
  ~Camera() { LetGo(); }

  Options options;
  // Told by the thread on which the camera is asked whether it is still there, which keeps the mark in being.
  const std::shared_ptr<std::atomic<bool>> loss = std::make_shared<std::atomic<bool>>(false);
  bool IsLost() const { return *loss; }
  std::mutex lock;  // guards the registers of `device`, and all that follows except for what `Open` makes
  std::condition_variable rested;
  bool streams = false;
  QStringList problems;
  Owned<ArvGvFakeCamera> simulator;  // outlives the camera that talks to it
  Owned<ArvCamera> device;           // null once the camera is lost
  Owned<ArvStream> stream;
  QString id, name;
  ZynImage format{};

  bool Connect(QString* error);
  bool StartSimulator(QString* error);
  bool Configure(QString* error);
  bool ReadFormat(QString* error);
  bool StartStream(QString* error);
  bool StartAcquisition();
  void Rest();
  void LetGo();
  ArvCamera* Answering() const { return IsLost() ? nullptr : device.get(); }
  bool Deliver(ArvBuffer* buffer, const Sink& sink) const;  // what the sink answers

  using Loss = std::shared_ptr<std::atomic<bool>>;
  static void HearLoss(ArvDevice*, void* data) { **static_cast<Loss*>(data) = true; }
  static void ForgetLoss(void* data, GClosure*) { delete static_cast<Loss*>(data); }
};

CameraSource::CameraSource(const Options& options) : camera(std::make_unique<Camera>()) {
  camera->options = options;
}

CameraSource::~CameraSource() = default;

std::vector<CameraEntry> CameraSource::FindCameras() {
  arv_update_device_list();
  std::vector<CameraEntry> found;
  for (unsigned i = 0; i < arv_get_n_devices(); ++i) {
    // The simulator of this program answers like any other camera.
    const char* serial = arv_get_device_serial_nbr(i);
    if (serial && g_strcmp0(serial, kSimulatorSerial) == 0) continue;
    const QString id = QString::fromUtf8(arv_get_device_id(i));
    found.push_back({id, QStringLiteral("%1 %2 (%3)")
                             .arg(QString::fromUtf8(arv_get_device_vendor(i)),
                                  QString::fromUtf8(arv_get_device_model(i)), id)});
  }
  return found;
}

ZynImage CameraSource::Format() const {
  return camera->format;
}

QString CameraSource::Description() const {
  return camera->name;
}

QString CameraSource::ID() const {
  return camera->id;
}

bool CameraSource::Open(QString* error) {
  return camera->Connect(error) && camera->Configure(error) && camera->StartStream(error);
}

bool CameraSource::Camera::StartSimulator(QString* error) {
  // An earlier one of this program may be on its way out.
  for (int i = 0; i < kSimulatorTries; ++i) {
    simulator.reset(arv_gv_fake_camera_new(kLoopback, kSimulatorSerial));
    if (simulator && arv_gv_fake_camera_is_running(simulator.get())) return true;
    simulator.reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(kSimulatorPause));
  }
  *error = QStringLiteral("the camera simulator could not be started on %1: is it running already?")
               .arg(QString::fromLatin1(kLoopback));
  return false;
}

// The camera asked for, else the first one found, else the simulator.
bool CameraSource::Camera::Connect(QString* error) {
  Failure failure;
  id = options.camera;
  if (id.isEmpty() && options.source != Options::Simulator) {
    const std::vector<CameraEntry> found = FindCameras();
    if (!found.empty()) id = found.front().id;
  }
  const bool simulated = id.isEmpty();
  if (simulated && !StartSimulator(error)) return false;
  const QString address = simulated ? QString::fromLatin1(kLoopback) : id;
  auto mark = std::make_unique<Loss>(loss);  // before the device's own threads begin
  device.reset(arv_camera_new(address.toUtf8().constData(), &failure));
  if (!device) {
    *error = QStringLiteral("camera %1: %2").arg(address, failure.Text());
    return false;
  }
  g_signal_connect_data(arv_camera_get_device(device.get()), "control-lost", G_CALLBACK(HearLoss),
                        mark.release(), ForgetLoss, GConnectFlags(0));
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
  return ReadFormat(error);
}

bool CameraSource::Camera::ReadFormat(QString* error) {
  Failure failure;
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

bool CameraSource::Camera::StartAcquisition() {
  const std::lock_guard<std::mutex> guard(lock);
  if (!device) return false;
  QString error;
  bool good = stream || StartStream(&error);
  if (good) {
    Failure failure;
    arv_camera_set_acquisition_mode(device.get(), ARV_ACQUISITION_MODE_CONTINUOUS, nullptr);
    arv_camera_start_acquisition(device.get(), &failure);
    good = !failure;
    error = failure.Text();
  }
  if (!good) problems << QStringLiteral("the camera does not start: %1").arg(error);
  return streams = good;
}

// Each word to a camera that has gone takes seconds: nothing is said to one that is known to have.
void CameraSource::Camera::Rest() {
  const std::lock_guard<std::mutex> guard(lock);
  if (device && !IsLost()) arv_camera_stop_acquisition(device.get(), nullptr);
  stream.reset();  // the frames in it would be old ones at the next start
  if (IsLost()) LetGo();
  streams = false;
  rested.notify_all();
}

// In this order: the device tells of its loss until it is gone. The thread that does so holds it meanwhile,
// and must not be the last to let go of it: it would wait for its own end.
void CameraSource::Camera::LetGo() {
  stream.reset();
  if (device) {
    auto* const told = G_OBJECT(arv_camera_get_device(device.get()));
    for (int i = 0; i < kLongestTelling && g_atomic_int_get(&told->ref_count) > 1; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  device.reset();
  simulator.reset();
}

void CameraSource::Run(const Sink& sink) {
  bool running = sink(ZynImage{}) && camera->StartAcquisition();
  while (running && !camera->IsLost()) {
    ArvBuffer* buffer = arv_stream_timeout_pop_buffer(camera->stream.get(), kTimeoutMicroseconds);
    // The sink is asked even while no frame comes, so that a silent camera can be stopped.
    if (buffer) {
      running = camera->Deliver(buffer, sink);
      arv_stream_push_buffer(camera->stream.get(), buffer);
    } else {
      running = sink(ZynImage{});
    }
  }
  camera->Rest();
}

bool CameraSource::IsLost() const {
  return camera->IsLost();
}

QStringList CameraSource::TakeProblems() {
  // While the camera is being waited for, they come at the next time.
  const std::unique_lock<std::mutex> guard(camera->lock, std::try_to_lock);
  return guard ? std::exchange(camera->problems, {}) : QStringList();
}

// A camera of which no whole frame comes has to be stopped, too.
bool CameraSource::Camera::Deliver(ArvBuffer* buffer, const Sink& sink) const {
  if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS) return sink(ZynImage{});
  std::size_t bytes = 0;
  const void* data = arv_buffer_get_data(buffer, &bytes);
  const auto width = static_cast<uint32_t>(arv_buffer_get_image_width(buffer));
  const auto height = static_cast<uint32_t>(arv_buffer_get_image_height(buffer));
  ZynImage frame =
      MakeRecord(format.pixelType, width, height, 0, const_cast<uint8_t*>(static_cast<const uint8_t*>(data)));
  if (frame.imageSize == 0 || frame.imageSize > bytes) return sink(ZynImage{});
  frame.imageID = arv_buffer_get_frame_id(buffer);
  frame.timestamp = arv_buffer_get_timestamp(buffer);
  return sink(frame);
}

CameraControls::Range CameraSource::Read(Feature feature) const {
  const std::lock_guard<std::mutex> guard(camera->lock);
  const FeatureRow& row = kFeatureRows[feature];
  ArvCamera* device = camera->Answering();
  Failure failure;
  Range range;
  if (!device || !row.isAvailable(device, &failure) || failure) return {};
  row.bounds(device, &range.least, &range.most, &failure);
  if (failure) return {};
  range.value = row.get(device, &failure);
  range.available = !failure && range.most >= range.least;
  return range;
}

QString CameraSource::Set(Feature feature, double value) {
  const std::lock_guard<std::mutex> guard(camera->lock);
  const FeatureRow& row = kFeatureRows[feature];
  ArvCamera* device = camera->Answering();
  if (!device) return QString::fromLatin1(kGone);
  if (row.isAutomatic && row.isAutomatic(device, nullptr)) row.setAutomatic(device, ARV_AUTO_OFF, nullptr);
  Failure failure;
  row.set(device, value, &failure);
  if (!failure) return {};
  return QStringLiteral("the camera refuses this %1: %2").arg(QLatin1String(row.label), failure.Text());
}

QStringList CameraSource::PixelFormats() const {
  const std::lock_guard<std::mutex> guard(camera->lock);
  ArvCamera* device = camera->Answering();
  if (!device) return {};
  guint count = 0;
  Failure failure;
  const char** names = arv_camera_dup_available_pixel_formats_as_strings(device, &count, &failure);
  QStringList formats;
  for (guint i = 0; names && i < count; ++i) formats << QString::fromUtf8(names[i]);
  g_free(names);
  return formats;
}

QString CameraSource::PixelFormat() const {
  const std::lock_guard<std::mutex> guard(camera->lock);
  ArvCamera* device = camera->Answering();
  return device ? QString::fromUtf8(arv_camera_get_pixel_format_as_string(device, nullptr)) : QString();
}

QString CameraSource::SetPixelFormat(const QString& wanted) {
  std::unique_lock<std::mutex> guard(camera->lock);
  camera->rested.wait(guard, [this] { return !camera->streams; });
  ArvCamera* device = camera->Answering();
  if (!device) return QString::fromLatin1(kGone);
  Failure failure;
  const QByteArray before(arv_camera_get_pixel_format_as_string(device, nullptr));
  arv_camera_set_pixel_format_from_string(device, wanted.toLatin1().constData(), &failure);
  if (failure) return QStringLiteral("the camera refuses %1: %2").arg(wanted, failure.Text());
  camera->stream.reset();  // its buffers may be too short
  QString error;
  if (camera->ReadFormat(&error)) return {};
  arv_camera_set_pixel_format_from_string(device, before.constData(), nullptr);
  QString ignored;
  camera->ReadFormat(&ignored);
  return error;
}

}  // namespace zynview
