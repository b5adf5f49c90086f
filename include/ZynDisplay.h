/// @file
/// The display component: a window that shows camera images, and its factories.
///
/// Three words for threads, here and in the other headers: the **GUI thread** runs the Qt event loop; the
/// **messenger thread**, one for each display, delivers what was posted; **any thread** may be any other.
#pragma once

#include <cstdint>

#include "ZynComponent.h"
#include "ZynImage.h"
#include "ZynImgProcessor.h"

class QWidget;

#ifndef ZYN_EXPORT
/// Marks what the shared libraries show.
#define ZYN_EXPORT __attribute__((visibility("default")))
#endif

/// The controller of one display: all commands and notifications, and the stages of its chain. Made by
/// `ZynDisplayCPU::CreateComponent` or `ZynDisplayQGL::CreateComponent`; a `ZynDisplay` owns one and does not
/// hand it out.
///
/// Commands, through `RunCommand`, answer 1 when done and 0 otherwise; the host guide lists them. Failures of
/// the operations here are composed codes, `0x80000000 | 0xFF << 16 | code`.
///
/// Threads: made on the GUI thread; any thread may call any operation. While the display is being deleted
/// operations with a code answer 8, `RunCommand` 0, `GetProcessor` null; `Uninitialize` and
/// `ReleaseConverter` do nothing.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynDisplayProcessor : public ZynDisplayCommand {
 public:
  /// The parameters of the controller, which act when they are set by the typed stores. Owned by the display.
  virtual ZynComponent* GetComponent() = 0;

  /// Makes window and chain for images like `format`, of which the pixels are not read. The GUI thread does
  /// the work while the caller waits. May be repeated for another format: the chain and its stages' settings
  /// go, window and overlays stay. 7: null, or no size; 1: no window (no widget, no `QApplication`, no
  /// OpenGL), or, with "system.silent" 0, a format that cannot be shown; 8: called from a stage, or while
  /// another initialisation is under way on the GUI thread. Hand over no images meanwhile.
  virtual uint32_t Initialize(const ZynImage* format) = 0;

  /// Shows an image; null takes the picture away. The pixels are copied before the call returns, and the
  /// record with them; drawing happens later on the GUI thread, and only the newest image is drawn. The call
  /// waits for one image that is being processed at most.
  ///
  /// The bytes are taken for the prepared format: `pixelType` is not compared, and `origin` is not read. 0
  /// says that the image was taken, or dropped: before `Initialize`, or, of another size or format, when it
  /// has more bytes than the prepared one. 7: no pixels; 8: another size than prepared, none also (7 where it
  /// has more bytes or nothing is prepared). Any code may also come from something that failed just then,
  /// such as this image in the chain or a conversion of another thread, and 9 from a converter that is set up
  /// there: the image had been taken. What goes wrong later is told by "notification.image": 7 there for
  /// `imageSize` or `linePitch` that cannot be true; missing bytes of packed formats are black.
  virtual uint32_t DisplayVideo(const ZynImage* image) = 0;

  /// Frees chain, converter and buffers; the controller stays, and may be initialised again. Without effect
  /// when a stage of the chain calls it.
  virtual void Uninitialize() = 0;

  /// The chain; null before `Initialize`. It belongs to the display and lives until the next `Initialize`,
  /// `Uninitialize` or the display's end. Waits for an image that is being processed.
  virtual ZynImgProcessingChain* GetProcessor() = 0;

  /// Prepares conversions into images like `format` (pixel code, width and height, those of the prepared
  /// source). `ConvertImage` does it by itself the first time, and tells of another size and of a format to
  /// which there is no way. 8: no chain; 1: failed; 9: null, an unknown code, or no memory. Default: 3.
  virtual uint32_t InitConverter(const ZynImage* format) {
    (void)format;
    return ZYN_ERR_NOT_IMPLEMENTED;
  }

  /// Lets go of the converter, so that the next conversion may be into another format. One that is under way
  /// comes to its end. Default: nothing.
  virtual void ReleaseConverter() {}

  /// Runs `input` through the chain up to "image.output" and writes the picture into `output`, a record with
  /// format, size and buffer, without showing it. Both stay the caller's; without the stage "image.unpacked"
  /// enabled a colour correction writes into the input's pixels. Line 0 of the result is at the top. Blocks
  /// until the GUI thread has done the work; calls wait for each other.
  ///
  /// Of the record `output` success writes `imageID` and `origin` (0), and a failure nothing. After a failure
  /// the buffer is as it was, unless the display's widget went during the conversion: then it may hold the
  /// picture. 7: an input unlike the prepared format, no size, or, once a converter is prepared, an output
  /// unlike it, null also; 8: no chain, or it goes meanwhile, or a first output that is null or of no known
  /// format; 1: a first output of another size, no way to the format, an output whose pitch or size is not
  /// that of its format, no pixels, a stage failed, or the call came from a stage. Input without pixels is no
  /// failure for YUV422_8_UYVY and formats that the processor unpacks: the picture is black. The host guide
  /// says into which formats there is a way; others may answer 0 with pixels that mean nothing. Default: 3.
  virtual uint32_t ConvertImage(const ZynImage* input, ZynImage* output) {
    (void)input;
    (void)output;
    return ZYN_ERR_NOT_IMPLEMENTED;
  }
};

/// A display: give it a parent widget and an image format, then hand it images.
///
/// Threads: made on the thread that runs the Qt event loop (the GUI thread); any thread may call any
/// operation and delete it. Failures are composed codes, `0x80000000 | 0xFF << 16 | code`; while the display
/// is being deleted they are 8.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynDisplay {
 public:
  virtual ~ZynDisplay() = default;

  /// The parameters, and the short commands of `ExecuteCommand`. Owned by the display.
  virtual ZynComponent* GetComponent() = 0;

  /// Reserved: false.
  virtual bool IsReserved() = 0;

  /// Prepares the display for images like `format`. `parent` is a `QWidget*` or the window id of one, and
  /// stays the host's: if it goes first, the display is closed. `mode` is "opengl" for the OpenGL variant,
  /// anything else or null for the processor variant. May be repeated for another format. Codes as for
  /// `ZynDisplayProcessor::Initialize`; off the GUI thread the caller waits for that.
  virtual uint32_t Initialize(void* parent, const char* mode, const ZynImage* format) = 0;

  /// The same with the widget given before.
  virtual uint32_t Initialize(const ZynImage* format, const char* mode) = 0;

  /// Shows an image. The pixels are copied before the call returns; drawing happens later on the GUI thread,
  /// and only the newest image is drawn when the host is faster. Null takes the picture away. An image that
  /// is refused is offered once more, and the second answer counts: 0x80FF0000, a failure without a code,
  /// says that it was taken then. Codes as for `ZynDisplayProcessor::DisplayVideo`.
  virtual uint32_t DisplayVideo(const ZynImage* image) = 0;

  /// Not provided: code 3. Use `DisplayVideo`.
  virtual uint32_t DisplayImage(const ZynImage* image) = 0;

  /// Runs `input` through the display's chain and writes the picture into the host's `output` (a record with
  /// format, size and buffer) without showing it. Blocks until the GUI thread has done the work. The output
  /// may be of another format each time, so that each counts as the first; `imageID` and `timestamp` of its
  /// record become the input's, `origin` 0. Codes, and what a failure leaves behind, as for
  /// `ZynDisplayProcessor::ConvertImage`.
  virtual uint32_t ConvertImage(const ZynImage* input, ZynImage* output) = 0;

  /// Reserved: 0.
  virtual uint32_t ReservedOne() { return 0; }

  /// Reserved: 0.
  virtual uint32_t ReservedTwo() { return 0; }

  /// Carries a point from window to image pixels (`direction` 1) or back (any other value); fractions are cut
  /// off. Null stands for 0, and gets nothing back. Both are taken as `int32_t`: points off the picture are
  /// carried as well, and may be negative. 1: no window, or a number that is too large. Default: 0.
  virtual uint32_t TranslatePosition(uint32_t* x, uint32_t* y, int direction) {
    (void)x;
    (void)y;
    (void)direction;
    return 0;
  }

  /// A new display, which shows nothing before `Initialize`. The caller owns it. GUI thread: for one that was
  /// made on another thread `Initialize` waits for ever there.
  ZYN_EXPORT static ZynDisplay* CreateComponent();

  /// Ends a display: calls of other threads that are under way end first, and those that wait end with 8. Off
  /// the GUI thread, or inside a notification, it is done a moment later by the event loop. Null, and a
  /// display that is gone, are ignored. Any thread.
  ZYN_EXPORT static void DeleteComponent(ZynDisplay* display);
};

/// Factories of the processor variant: the controller alone, and its single stages. The stages work without a
/// display, a window or an application object; "image.overlay" needs fonts.
///
/// The `parent` of a stage's factory may be null; for the exposure coloration it is the component of the
/// chain that has the stage "image.unpacked".
class ZynDisplayCPU {
 public:
  /// A new controller with its window in `parent`, which stays the host's. The caller owns the controller.
  /// GUI thread.
  ZYN_EXPORT static ZynDisplayProcessor* CreateComponent(QWidget* parent);
  /// Ends a controller, as `ZynDisplay::DeleteComponent` does. Null, and one that is gone, are ignored. Any
  /// thread.
  ZYN_EXPORT static void DeleteComponent(ZynDisplayProcessor* display);

  /// YUV422_8_UYVY to RGB8. See `ZynDisplayQT::YUV2RGB`.
  class YUV2RGB : public ZynDisplayQT::YUV2RGB {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Packed formats to whole words. See `ZynDisplayQT::Unpack`.
  class Unpack : public ZynDisplayQT::Unpack {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Depth, channels and channel order. See `ZynDisplayQT::Image`.
  class Image : public ZynDisplayQT::Image {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Demosaicing. See `ZynDisplayQT::Bayer`.
  class Bayer : public ZynDisplayQT::Bayer {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Gain, offset and gamma. See `ZynDisplayQT::ColorCorrection`.
  class ColorCorrection : public ZynDisplayQT::ColorCorrection {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Marks for exposure. See `ZynDisplayQT::ExposureColoration`.
  class ExposureColoration : public ZynDisplayQT::ExposureColoration {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Text in the image. See `ZynDisplayQT::ImageOverlay`.
  class ImageOverlay : public ZynDisplayQT::ImageOverlay {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. Any thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
};

/// Factories of the OpenGL variant. Its stages work on textures of the window that `display` shows: GUI
/// thread, between the display's `Initialize` and its end. Formats that the card does not unpack take the
/// processor's stages.
///
/// The `display` of a stage's factory is a controller of this library; without one a stage answers 8. `chain`
/// is the component of the chain that has the stage "image.unpacked".
class ZynDisplayQGL {
 public:
  /// A new controller with its window in `parent`, which stays the host's. The caller owns the controller.
  /// GUI thread.
  ZYN_EXPORT static ZynDisplayProcessor* CreateComponent(QWidget* parent);
  /// Ends a controller, as `ZynDisplay::DeleteComponent` does. Null, and one that is gone, are ignored. Any
  /// thread.
  ZYN_EXPORT static void DeleteComponent(ZynDisplayProcessor* display);

  /// Packed formats to whole words. See `ZynDisplayQT::Unpack`.
  class Unpack : public ZynDisplayQT::Unpack {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Depth, channels and channel order. See `ZynDisplayQT::Image`.
  class Image : public ZynDisplayQT::Image {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Demosaicing. See `ZynDisplayQT::Bayer`.
  class Bayer : public ZynDisplayQT::Bayer {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Gain, offset and gamma. See `ZynDisplayQT::ColorCorrection`.
  class ColorCorrection : public ZynDisplayQT::ColorCorrection {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Marks for exposure. See `ZynDisplayQT::ExposureColoration`.
  class ExposureColoration : public ZynDisplayQT::ExposureColoration {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display, ZynComponent* chain);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  /// Text in the image. See `ZynDisplayQT::ImageOverlay`.
  class ImageOverlay : public ZynDisplayQT::ImageOverlay {
   public:
    /// A new stage, owned by the caller until a chain takes it. Any thread.
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    /// Releases and frees a stage of this kind, none that a chain has taken. Null is ignored. GUI thread.
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
};

// The plain functions, for hosts that load the library at run time. A null or deleted `display` is answered
// with 0x80070007 (null from `ZynDisplay_GetComponent`) and has no other effect.
extern "C" {

/// `ZynDisplay::CreateComponent`. GUI thread.
ZYN_EXPORT ZynDisplay* ZynDisplay_CreateComponent();

/// `ZynDisplay::DeleteComponent`. Any thread.
ZYN_EXPORT void ZynDisplay_DeleteComponent(ZynDisplay* display);

/// `ZynDisplay::GetComponent`, or null for a display that is null or gone. Any thread.
ZYN_EXPORT ZynComponent* ZynDisplay_GetComponent(ZynDisplay* display);

/// `ZynDisplay::Initialize`, or 0x80070007 for a display that is null or gone. Any thread.
ZYN_EXPORT uint32_t ZynDisplay_Initialize(ZynDisplay* display, void* parent, const char* mode,
                                          const ZynImage* format);

/// `ZynDisplay::DisplayVideo`, or 0x80070007 for a display that is null or gone. Any thread.
ZYN_EXPORT uint32_t ZynDisplay_DisplayVideo(ZynDisplay* display, const ZynImage* image);

/// `ZynDisplay::DisplayImage`, which is not provided: 3, or 0x80070007 for a display that is null or gone.
/// Any thread.
ZYN_EXPORT uint32_t ZynDisplay_DisplayImage(ZynDisplay* display, const ZynImage* image);

/// `ZynDisplay::ConvertImage`, or 0x80070007 for a display that is null or gone. Any thread.
ZYN_EXPORT uint32_t ZynDisplay_ConvertImage(ZynDisplay* display, const ZynImage* input, ZynImage* output);
}
