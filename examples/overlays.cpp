// Texts and rectangles over the picture, and what the display tells its host: overlays [MILLISECONDS]
#include <ZynDisplay.h>
#include <ZynPixelFormat.h>

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Pointers travel through arguments as text.
static std::string PointerText(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

// Hears of images and of the mouse on the GUI thread, of the view on the display's messenger thread.
class Listener : public ZynDisplayCommand {
 public:
  std::atomic<int> images{0}, views{0};

  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override {
    const std::string message = name;
    if (message == "notification.image" && (*args)["result"] == "0") ++images;
    if (message == "notification.view") ++views;
    if (message == "notification.mouse" && (*args)["code"] == "mouse.down")
      std::printf("pressed at %s, %s of the image\n", (*args)["img.x"].c_str(), (*args)["img.y"].c_str());
    return 0;  // the display goes on with what it does itself
  }
};

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QWidget window;
  window.show();

  std::vector<uint8_t> grey(640 * 480, 90);
  ZynImage frame{};
  frame.pixelType = ZYN_PIXEL_MONO8;
  frame.width = frame.linePitch = 640;
  frame.height = 480;
  frame.imageSize = 640 * 480;
  frame.imageData = grey.data();

  Listener listener;
  ZynDisplayProcessor* display = ZynDisplayCPU::CreateComponent(&window);
  if (display->Initialize(&frame) != 0) return 1;

  QTD::ARGUMENTS proc{{"proc", PointerText(static_cast<ZynDisplayCommand*>(&listener))}};
  display->RunCommand("cmd.system.notification.add", &proc);
  display->GetComponent()->SetParameterInt("image.notification.flags.set", 1);  // tell of each image, too

  QTD::ARGUMENTS box{{"rect.x", "200"}, {"rect.y", "150"},   {"rect.w", "240"},  {"rect.h", "180"},
                     {"cs", "img"},     {"line.width", "2"}, {"line.clr", "255"}};  // red: 0x00BBGGRR
  display->RunCommand("cmd.display.overlay.rect.add", &box);
  QTD::ARGUMENTS text{{"text.pos.x", "1"}, {"text.pos.y", "-1"}, {"text.clr", "65535"}};  // 1: top left
  text["text.text"] = "frame ${image.id:%u}";
  display->RunCommand("cmd.display.overlay.text.add", &text);
  std::printf("the text is called %s\n", text["objectID"].c_str());
  display->RunCommand("cmd.display.view.zoom.in", nullptr);  // a change of the view, which the listener hears

  QTimer camera;
  QObject::connect(&camera, &QTimer::timeout, [&] {
    ++frame.imageID;
    display->DisplayVideo(&frame);
  });
  camera.start(40);
  if (argc > 1)
    QTimer::singleShot(QString::fromLocal8Bit(argv[1]).toInt(), &application, &QApplication::quit);
  const int result = QApplication::exec();
  display->RunCommand("cmd.system.notification.del", &proc);  // then the listener may go
  ZynDisplayCPU::DeleteComponent(display);
  std::printf("images shown: %d, changes of the view: %d\n", listener.images.load(), listener.views.load());
  return result;
}
