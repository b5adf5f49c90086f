// The controller: takes images from any thread, runs the chain, hands the picture to the viewer.
#pragma once

#include <QObject>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "QTD/frame/AverageValue.h"
#include "QTD/frame/ComponentImpl.h"
#include "QTD/frame/DoubleBuffer.h"
#include "QTD/frame/Messenger.h"
#include "QTD/frame/RateMeter.h"
#include "ZynDisplay.h"

class QTDConverter;
class QTDProcessor;
class QTDScreen;
class QTDViewer;
class QTDWindow;
class QTimer;

// Lives on the GUI thread: all slots, the whole chain and all drawing run there. The operations of
// ZynDisplayProcessor and the commands may be called from any thread; `Initialize` and `ConvertImage` block
// until the GUI thread has done the work.
//
// Locks. `viewLock` serialises view, overlay and initialisation, `convertLock` the converter.
//
// `handlerLock` of the base guards the parameter handlers there, and has a second duty here: it is the
// processing lock, held while an image runs through the chain and on to the viewer. So a parameter access of
// the host waits for the image at hand.
//
// The pointers `processor`, `format` and `viewer` change only while all three are held and may be read while
// any of them is. Whoever needs several takes them together with std::scoped_lock, which backs off: a
// receiver of "notification.image" runs with `handlerLock` held and may call any command, so no thread waits
// for `handlerLock` while it holds one of the others. Behind them come the swap lock and the buffer lock of
// `incoming`, then the leaves `preparedLock`, `messagesLock` and `endingLock`.
//
// A host may run the chain itself, on the GUI thread; its stages ask for the controller's locks with the
// chain's held then. So off the GUI thread nobody waits for the chain while holding one of the three
// (`ChainTry`).
class QTDDisplay : public QObject, public ZynDisplayProcessor, public QTD::ComponentImpl {
  Q_OBJECT

 public:
  QTDDisplay(QWidget* parentWidget, bool opengl);
  ~QTDDisplay() override;

  // ZynDisplayProcessor
  ZynComponent* GetComponent() override;
  uint32_t Initialize(const ZynImage* imageFormat) override;
  uint32_t DisplayVideo(const ZynImage* image) override;
  void Uninitialize() override;
  ZynImgProcessingChain* GetProcessor() override;
  uint32_t InitConverter(const ZynImage* outputFormat) override;
  void ReleaseConverter() override;
  uint32_t ConvertImage(const ZynImage* input, ZynImage* output) override;
  uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) override;
  uint32_t ExecuteCommand(const char* name) override;

  // Operations behind the commands, in table order.
  virtual bool SetOverlayProperties(QTD::ARGUMENTS* args);
  virtual bool SetOverlayVariables(QTD::ARGUMENTS* args);
  virtual std::string AddText(const char* text, int x, int y, QTD::ARGUMENTS* args);
  virtual std::string AddRect(int x, int y, int width, int height, QTD::ARGUMENTS* args);
  virtual bool DeleteObject(const std::string& id);
  virtual bool AddNotification(ZynDisplayCommand* receiver);
  virtual bool DelNotification(ZynDisplayCommand* receiver);
  virtual bool Zoom(bool zoomIn, double coefficient, bool refresh);
  virtual bool CanZoom(bool zoomIn, double coefficient);
  virtual bool SetFit(int mode, bool refresh);
  virtual bool SetScale(double scale, bool refresh);
  virtual bool SetCenter(double fractionX, double fractionY, bool refresh);
  virtual QTD::Messenger* GetMessenger();
  virtual uint32_t RunCommandDisplayOverlay(const char* name, QTD::ARGUMENTS* args);
  virtual uint32_t RunCommandDisplayView(const char* name, QTD::ARGUMENTS* args);
  virtual uint32_t RunCommandSystemMenu(const char* name, QTD::ARGUMENTS* args);

  // As `ConvertImage`; where the prepared converter does not fit, another one is prepared within the same
  // turn.
  uint32_t ConvertImageAnew(const ZynImage* input, ZynImage* output);

  // The commands of `RunCommand`, without the messages, which begin with "@".
  static std::vector<std::string> CommandNames();

  // The display is about to be deleted: ends the waiting of all calls under way with code 8, and tells no
  // receiver anything any more.
  void BeginClosing();

  bool IsClosing() const { return closing; }  // any thread

  QTDViewer* Viewer() const { return viewer; }  // GUI thread
  uint32_t LastError() const { return lastError; }
  QTD::RateMeter& InputRate() { return inputRate; }
  QTD::RateMeter& OutputRate() { return outputRate; }

 Q_SIGNALS:
  void signalObjectMessage(const char* msgName, QTD::PROPERTIES* msgParams = nullptr);
  void signalImageReceived();
  void signalImageProcessed(ZynImage* image, bool rebuild = false);
  void signalInitProcessor(ZynImage* inputImageFormat);  // never emitted
  void signalConvertImage(ZynImage* inputImage, ZynImage* outputImage);
  void signalRebuildImage();
  void signalCheckIncomingBuffer();

 public Q_SLOTS:
  void slotObjectMessage(const char* msgName, QTD::PROPERTIES* msgParams);
  void slotCheckIncomingBuffer();
  void slotImageProcessed(ZynImage* image, bool rebuild);
  void slotConvertImage(ZynImage* inputImage, ZynImage* outputImage);
  void slotRebuildImage();
  void slotTimer();
  void slotViewerClosing();
  void slotMenuFitWindow();
  void slotMenuFillWindow();
  void slotMenuZoom25();
  void slotMenuZoom50();
  void slotMenuZoom100();
  void slotMenuZoom200();
  void slotMenuZoomIn();
  void slotMenuZoomOut();
  void slotMenuCenterImage();
  void slotMenuCenterHere();

 private:
  // The handlers of one command family each, with the table of their names.
  struct ViewCommands;
  struct OverlayCommands;
  struct MenuCommands;
  struct OwnCommands;  // those that belong to no family
  static std::vector<std::string> ViewCommandNames();
  static std::vector<std::string> OverlayCommandNames();
  static std::vector<std::string> MenuCommandNames();

  // Under which address the table of living displays knows this one.
  const void* Key() const { return static_cast<const ZynDisplayProcessor*>(this); }

  // What images are checked against, without waiting for the GUI thread.
  struct Prepared {
    bool exists = false;
    uint32_t width = 0, height = 0, pixelType = 0;
    uint32_t imageSize = 0, linePitch = 0;  // as made at `Initialize`
  };

  // A message that the GUI thread handles while its sender waits.
  struct BlockingMessage {
    std::string name;
    QTD::PROPERTIES params;
    uint32_t code = 0;
    std::atomic<bool> done{false};
  };

  // A conversion that the GUI thread runs while its caller waits.
  struct Conversion {
    enum State { kQueued, kRunning, kDone, kCancelled };
    const ZynImage* input = nullptr;
    ZynImage* output = nullptr;
    std::shared_ptr<QTDConverter> converter;
    uint32_t build = 0;  // of the chain that the converter was prepared for
    std::atomic<int> state{kQueued};
    uint32_t code = 0;
  };

  // Initialisation (GUI thread)
  uint32_t RunBlockingMessage(const char* name, const QTD::PROPERTIES& params);
  bool Withdraw(const std::shared_ptr<BlockingMessage>& message);
  uint32_t HandleMessage(const std::string& name, QTD::PROPERTIES& params);
  uint32_t InitDisplay(const ZynImage* imageFormat);
  bool PrepareViewer(bool opengl);
  bool BuildProcessor(const ZynImage* imageFormat);
  bool PrepareFormat(const ZynImage* imageFormat);
  void StartTimer();
  void ReleaseFormat();
  void TakePictureAway();
  void Free();
  [[nodiscard]] std::unique_ptr<QTDProcessor> FreeAll();

  // Intake
  uint32_t CheckImage(const ZynImage& image, const Prepared& expected) const;
  void WriteFrame(const ZynImage& image, const Prepared& expected);
  uint32_t TakeAway();
  void Queue(std::atomic<int64_t>& queuedSince, void (QTDDisplay::*wanted)());
  uint32_t ProcessFront(bool* hasFrame);
  uint32_t RunChain();
  uint32_t WalkChain();
  uint32_t EndWalk(uint32_t code);
  void CloseLost();
  void NoteSurface();
  void EndChain(std::unique_ptr<QTDProcessor> leaving);
  std::vector<std::unique_ptr<QTDProcessor>> TakeEnding();
  void EndChains();
  void LetConverterIn();
  void NotifyImage(uint32_t code);
  bool CanProcess() const;
  Prepared PreparedFormat();
  void SetPrepared(const Prepared& format);

  // Conversion
  uint32_t PrepareConverter(const ZynImage* outputFormat);
  uint32_t BeginConversion();
  uint32_t BeginConversionWithConverter(const ZynImage* output, bool renew);
  void EndConversion();
  uint32_t ConvertInTurn(const ZynImage* input, ZynImage* output, bool renew);
  std::shared_ptr<QTDConverter> CurrentConverter();
  uint32_t ConvertCompleted(const ZynImage* input, ZynImage* output);
  uint32_t ConvertPrepared(const ZynImage* input, ZynImage* output);
  uint32_t RunConversion(const std::shared_ptr<Conversion>& request);

  // Commands
  uint32_t Fail(uint32_t code);  // stores the bare code, answers the composed one
  void SetParameterByCommand(QTD::ARGUMENTS* args);
  void GetParameterByCommand(QTD::ARGUMENTS* args);
  uint32_t SendMessageByCommand(const char* name, QTD::ARGUMENTS* args);
  uint32_t UpdateStatus();  // 1 when the status line is switched on, and brought up to date
  void ShowInfo();
  bool RemoveObject(const std::string& id);
  void SetMenuScale(double scale);
  void CloseMenus();
  bool HasPicture() const;
  QTDWindow* Window() const;
  QTDScreen* Screen() const;

  QTD::DoubleBuffer incoming;
  std::unique_ptr<QTDProcessor> processor;
  std::shared_ptr<QTDConverter>
      converter;  // guarded by `convertLock`; a run under way keeps its own reference
  QTDViewer* viewer = nullptr;
  ZynImage* format = nullptr;  // header of the images now expected; `imageData` points at the front buffer
  std::atomic<uint32_t> lastError{0};  // the bare code of the last operation
  std::recursive_mutex viewLock;       // serialises view, overlay and initialisation operations
  std::recursive_mutex convertLock;    // guards `converter`, `conversion`, `converting`, `convertingThread`
  QTD::Messenger messenger;
  QTD::PROPERTIES statusItems;
  QTD::AverageValue outputRateHistory;
  QTD::RateMeter inputRate;                         // images received
  QTD::RateMeter outputRate;                        // images processed
  QTimer* timer = nullptr;                          // the status timer; a child of this object
  std::atomic<uint32_t> imageNotificationFlags{0};  // bit 0 asks for "notification.image" after each image

  std::atomic<bool> closing{false};
  // Since when a check or a rebuild waits in the event queue, milliseconds; 0: none.
  std::atomic<int64_t> checkQueued{0};
  std::atomic<int64_t> rebuildQueued{0};
  bool checking = false;    // GUI thread: a check is on the stack
  bool checkAgain = false;  // GUI thread: another one was asked for meanwhile
  int walking = 0;  // runs of the chain on the GUI thread's stack; that thread holds `handlerLock` then
  bool viewerLost = false;  // the viewer went while the chain ran; changes and is read as `viewer` is
  std::atomic<bool> initialising{false};  // an initialisation is on the GUI thread's stack
  std::atomic<uint32_t> builds{0};        // counts builds of the chain; changes with `processor`
  std::atomic<int> preparing{0};          // threads that found `handlerLock` taken and have no converter yet

  std::atomic<uint64_t> lastImageID{0};  // as in `format`, for readers without `handlerLock`

  std::mutex preparedLock;  // guards `prepared`
  Prepared prepared;
  std::mutex endingLock;                              // guards `ending`
  std::vector<std::unique_ptr<QTDProcessor>> ending;  // chains whose end is put off
  std::mutex messagesLock;                            // guards `messages`
  std::vector<std::shared_ptr<BlockingMessage>> messages;
  std::shared_ptr<Conversion> conversion;  // the one under way
  bool converting = false;                 // one caller at a time converts
  std::thread::id convertingThread;        // which one
  ZynImage convertedInput{};  // the input of the last conversion, completed; belongs to that caller
};
