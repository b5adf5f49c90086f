// The display component: a window that shows camera images, and its factories.
#pragma once

#include <cstdint>

#include "ZynComponent.h"
#include "ZynImage.h"
#include "ZynImgProcessor.h"

class QWidget;

#ifndef ZYN_EXPORT
#define ZYN_EXPORT __attribute__((visibility("default")))
#endif

/// The controller of one display. Made by `ZynDisplayCPU::CreateComponent`, or owned by a `ZynDisplay`.
class ZynDisplayProcessor : public ZynDisplayCommand {
 public:
  virtual ZynComponent* GetComponent() = 0;
  virtual uint32_t Initialize(const ZynImage* format) = 0;
  virtual uint32_t DisplayVideo(const ZynImage* image) = 0;
  virtual void Uninitialize() = 0;
  virtual ZynImgProcessingChain* GetProcessor() = 0;
  virtual uint32_t InitConverter(const ZynImage* format) {
    (void)format;
    return ZYN_ERR_NOT_IMPLEMENTED;
  }
  virtual void ReleaseConverter() {}
  virtual uint32_t ConvertImage(const ZynImage* input, ZynImage* output) {
    (void)input;
    (void)output;
    return ZYN_ERR_NOT_IMPLEMENTED;
  }
};

/// A display: give it a parent widget and an image format, then hand it images.
///
/// Threads: create, initialise and delete on the thread that runs the Qt event loop (the GUI thread); all
/// other operations may be called from any thread.
class ZynDisplay {
 public:
  virtual ~ZynDisplay() = default;
  virtual ZynComponent* GetComponent() = 0;
  virtual bool IsReserved() = 0;

  /// Prepares the display for images like `format`. `parent` is a `QWidget*` or the window id of one; `mode`
  /// is "opengl" for the OpenGL variant, anything else or null for the processor variant. May be repeated for
  /// another format.
  virtual uint32_t Initialize(void* parent, const char* mode, const ZynImage* format) = 0;

  /// The same with the widget given before.
  virtual uint32_t Initialize(const ZynImage* format, const char* mode) = 0;

  /// Shows an image. The pixels are copied before the call returns; drawing happens later on the GUI thread,
  /// and only the newest image is drawn when the host is faster. Null takes the picture away.
  virtual uint32_t DisplayVideo(const ZynImage* image) = 0;

  /// Not provided: code 3. Use `DisplayVideo`.
  virtual uint32_t DisplayImage(const ZynImage* image) = 0;

  /// Runs `input` through the display's chain and writes the picture into the host's `output` (a record with
  /// format, size and buffer) without showing it. Blocks until the GUI thread has done the work.
  virtual uint32_t ConvertImage(const ZynImage* input, ZynImage* output) = 0;
  virtual uint32_t ReservedOne() { return 0; }
  virtual uint32_t ReservedTwo() { return 0; }

  /// Carries a point from window to image pixels (`direction` 1) or back (any other value); fractions are cut
  /// off.
  virtual uint32_t TranslatePosition(uint32_t* x, uint32_t* y, int direction) {
    (void)x;
    (void)y;
    (void)direction;
    return 0;
  }

  ZYN_EXPORT static ZynDisplay* CreateComponent();
  ZYN_EXPORT static void DeleteComponent(ZynDisplay* display);
};

/// Factories of the processor variant: the controller alone, and its single stages.
class ZynDisplayCPU {
 public:
  ZYN_EXPORT static ZynDisplayProcessor* CreateComponent(QWidget* parent);
  ZYN_EXPORT static void DeleteComponent(ZynDisplayProcessor* display);

  // The stages. `parent` may be null. The caller owns a stage until a chain takes it.
  class YUV2RGB : public ZynDisplayQT::YUV2RGB {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class Unpack : public ZynDisplayQT::Unpack {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class Image : public ZynDisplayQT::Image {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class Bayer : public ZynDisplayQT::Bayer {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ColorCorrection : public ZynDisplayQT::ColorCorrection {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ExposureColoration : public ZynDisplayQT::ExposureColoration {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ImageOverlay : public ZynDisplayQT::ImageOverlay {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynComponent* parent);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
};

/// Factories of the OpenGL variant. Its stages work on textures of the window that `display` shows: GUI
/// thread, between the display's `Initialize` and its end. Formats that the card does not unpack take the
/// processor's stages.
class ZynDisplayQGL {
 public:
  ZYN_EXPORT static ZynDisplayProcessor* CreateComponent(QWidget* parent);
  ZYN_EXPORT static void DeleteComponent(ZynDisplayProcessor* display);

  // The stages. `display` is a controller of this library; without one a stage answers 8. `chain` is the
  // component of the chain that has the stage "image.unpacked".
  class Unpack : public ZynDisplayQT::Unpack {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class Image : public ZynDisplayQT::Image {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class Bayer : public ZynDisplayQT::Bayer {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ColorCorrection : public ZynDisplayQT::ColorCorrection {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ExposureColoration : public ZynDisplayQT::ExposureColoration {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display, ZynComponent* chain);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
  class ImageOverlay : public ZynDisplayQT::ImageOverlay {
   public:
    ZYN_EXPORT static ZynImgProcessor* CreateComponent(ZynDisplayProcessor* display);
    ZYN_EXPORT static void DeleteComponent(ZynImgProcessor* stage);
  };
};

/// The plain functions, for hosts that load the library at run time. A null or deleted `display` is answered
/// with 0x80070007 (null from `ZynDisplay_GetComponent`) and has no other effect.
extern "C" {
ZYN_EXPORT ZynDisplay* ZynDisplay_CreateComponent();
ZYN_EXPORT void ZynDisplay_DeleteComponent(ZynDisplay* display);
ZYN_EXPORT ZynComponent* ZynDisplay_GetComponent(ZynDisplay* display);
ZYN_EXPORT uint32_t ZynDisplay_Initialize(ZynDisplay* display, void* parent, const char* mode,
                                          const ZynImage* format);
ZYN_EXPORT uint32_t ZynDisplay_DisplayVideo(ZynDisplay* display, const ZynImage* image);
ZYN_EXPORT uint32_t ZynDisplay_DisplayImage(ZynDisplay* display, const ZynImage* image);
ZYN_EXPORT uint32_t ZynDisplay_ConvertImage(ZynDisplay* display, const ZynImage* input, ZynImage* output);
}
