// A live GigE Vision or USB3 Vision camera through Aravis: camera [FRAMES [ID]]
// Without a camera it shows Aravis' simulator, Fake_1. With a number of frames it ends by itself.
#include <arv.h>  // before Qt, which has its own meaning for a word in it

#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <QApplication>
#include <QWidget>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <utility>

// Cameras name their formats as the library does; these are the ones that this program knows.
static uint32_t PixelCode(const std::string& name) {
  static const std::pair<const char*, uint32_t> kRows[] = {
      {"Mono8", ZYN_PIXEL_MONO8}, {"BayerRG8", ZYN_PIXEL_BAYERRG8}, {"RGB8", ZYN_PIXEL_RGB8}};  // and so on
  for (const auto& [known, code] : kRows)
    if (name == known) return code;
  return 0;
}

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const int wanted = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 0;
  arv_update_device_list();
  const char* id = argc > 2 ? argv[2] : arv_get_n_devices() > 0 ? arv_get_device_id(0) : "Fake_1";
  arv_enable_interface("Fake");
  ArvCamera* device = arv_camera_new(id, nullptr);
  ArvStream* stream = device ? arv_camera_create_stream(device, nullptr, nullptr, nullptr) : nullptr;
  const char* name = device ? arv_camera_get_pixel_format_as_string(device, nullptr) : nullptr;
  ZynImage format{};
  format.pixelType = name ? PixelCode(name) : 0;
  if (!stream || format.pixelType == 0) return std::puts("no camera with a format known here"), 1;
  gint width = 0, height = 0;
  arv_camera_get_region(device, nullptr, nullptr, &width, &height, nullptr);
  format.width = static_cast<uint32_t>(width);
  format.height = static_cast<uint32_t>(height);
  format.linePitch = format.width * (format.pixelType >> 16 & 0xFF) / 8;
  format.imageSize = format.linePitch * format.height;

  QWidget window;
  window.show();
  ZynDisplay* display = ZynDisplay_CreateComponent();
  if (ZynDisplay_Initialize(display, &window, nullptr, &format) != 0) return 1;

  std::atomic<bool> stop{false};
  int taken = 0;
  std::thread camera([&] {
    const guint bytes = arv_camera_get_payload(device, nullptr);
    for (int i = 0; i < 8; ++i) arv_stream_push_buffer(stream, arv_buffer_new_allocate(bytes));
    arv_camera_start_acquisition(device, nullptr);
    while (!stop && (wanted == 0 || taken < wanted)) {
      ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 100000);  // microseconds
      if (!buffer) continue;
      std::size_t size = 0;
      ZynImage frame = format;
      frame.imageData = static_cast<uint8_t*>(const_cast<void*>(arv_buffer_get_data(buffer, &size)));
      frame.imageID = arv_buffer_get_frame_id(buffer);
      const bool good =
          arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS && size >= format.imageSize;
      if (good && ZynDisplay_DisplayVideo(display, &frame) == 0) ++taken;
      arv_stream_push_buffer(stream, buffer);  // the display has copied it
    }
    arv_camera_stop_acquisition(device, nullptr);
    if (!stop) QMetaObject::invokeMethod(&application, &QApplication::quit, Qt::QueuedConnection);
  });
  const int result = QApplication::exec();
  stop = true;
  camera.join();
  ZynDisplay_DeleteComponent(display);
  std::printf("%d frames of %s\n", taken, name);
  for (gpointer object : {gpointer(stream), gpointer(device)}) g_object_unref(object);
  return result;
}
