// Image processors: the interface of one stage, of a chain of stages, and of the stage kinds.
#pragma once

#include <cstdint>
#include <string>

#include "ZynComponent.h"
#include "ZynImage.h"

/// One stage of image processing. Order of calls: set parameters through `GetComponent`, `Init`, any number
/// of `ProcessImage`, `Release`. Failures are composed codes: 0x80000000 | id << 16 | code.
class ZynImgProcessor {
 public:
  virtual ~ZynImgProcessor() = default;

  /// Prepares the stage for images like `source` (a header, its pixels are not read). `output` may be null;
  /// where a stage can choose, it states the wanted format. Calls `Release` first.
  virtual uint32_t Init(const ZynImage* source, const ZynImage* output) = 0;

  /// Processes one image. Without an `output` the result is written into the stage's own image; with one it
  /// is written there, and an `output` of another size than prepared is refused (7). `data` is handed along
  /// by a chain.
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) = 0;

  /// Frees all that `Init` made and brings the stage back to its constructed state.
  virtual void Release() = 0;
  virtual ZynComponent* GetComponent() = 0;

  /// The image that the last successful `ProcessImage` produced; null when there is none. It is the stage's
  /// own, or the caller's where the caller gave an `output` or the stage works in place.
  virtual ZynImage* Out() = 0;

  /// Header of the prepared source (true) or of the result (false); null before `Init`.
  virtual ZynImage* GetImageInfo(bool source) = 0;

  /// Counts up (true) or down (false, not below 0) and answers whether the stage is enabled, i.e. the count
  /// is above 0. The count starts at 1.
  virtual bool Enable(bool on) = 0;
  virtual bool IsEnabled() = 0;
};

/// An ordered list of named stages through which an image runs.
class ZynImgProcessingChain {
 public:
  virtual ~ZynImgProcessingChain() = default;
  virtual ZynImgProcessor* GetProcessorAt(int index) = 0;
  virtual ZynImgProcessor* FindProcessor(const char* name) = 0;

  /// The list operations answer a bare code (0, 2 not found, 4 exists, 7 bad argument). A stage that was
  /// added belongs to the chain, which releases and deletes it.
  virtual uint32_t AddProcessor(const char* name, ZynImgProcessor* stage) = 0;
  virtual uint32_t InsertProcessor(const char* before, const char* name, ZynImgProcessor* stage) = 0;
  virtual uint32_t RemoveProcessor(const char* name) = 0;
  virtual ZynComponent* GetComponent() = 0;
  virtual uint32_t Init(const ZynImage* source) = 0;
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) = 0;
  virtual void Release() = 0;
  virtual ZynImage* Out() = 0;
  virtual ZynImage* GetImageInfo(bool source) = 0;
};

/// The kinds of stages, each an interface of its own.
namespace ZynDisplayQT {

/// Turns YUV422_8_UYVY into RGB8.
class YUV2RGB : public ZynImgProcessor {};

/// Turns a packed monochrome or Bayer format into one 16-bit word for each sample.
class Unpack : public ZynImgProcessor {};

/// Copies an image and converts depth, channels and channel order on the way.
class Image : public ZynImgProcessor {};

/// Turns a Bayer image into three channels. Parameter "BayerAlgType", read by `Init`: the interpolation
/// method, see `ZynBayer`.
class Bayer : public ZynImgProcessor {};

/// Applies gain, offset and gamma to each channel, in place. Parameters "gain.r", "gain.g", "gain.b",
/// "offs.r", "offs.g", "offs.b" (fractions of the full range) and "gamma".
class ColorCorrection : public ZynImgProcessor {
 public:
  /// "cmd.params.apply" takes the parameters from `args`, where they are present, and applies them;
  /// "cmd.params.reset" sets them back. 1 when done, 0 otherwise. Any thread.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;
};

/// Marks under-exposed and over-exposed pixels of the shown picture, in place. Parameters "thres.lo",
/// "thres.hi" (sample values before colour correction), "color.lo" and "color.hi" (0x00BBGGRR).
class ExposureColoration : public ZynImgProcessor {
 public:
  /// As for `ColorCorrection`.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;
};

/// Draws text and rectangles into the image that passes. Objects are named by identifiers. Any thread may
/// call any operation. `properties` may be null.
class ImageOverlay : public ZynImgProcessor {
 public:
  /// "cmd.text.add", "cmd.rect.add", "cmd.text.del", "cmd.rect.del", "cmd.del": 1 when done, 0 otherwise. The
  /// identifier of a new object comes back in `args` as "objectID".
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;

  /// Properties that new objects take where they name none themselves. False for null.
  virtual bool SetDefaults(QTD::PROPERTIES* properties) = 0;

  /// Values that text templates may name. False for null.
  virtual bool SetTextVariables(QTD::PROPERTIES* properties) = 0;

  /// Adds a text at a place of the picture, in pixels; with a negative `y`, `x` is a placement code. Answers
  /// the identifier, empty when the text was refused.
  virtual std::string AddText(const char* text, int x, int y, QTD::PROPERTIES* properties) = 0;

  /// False when there is no object of that identifier.
  virtual bool DeleteObject(const std::string& id) = 0;

  /// Adds a rectangle, in pixels. Answers the identifier.
  virtual std::string AddRect(int x, int y, int width, int height, QTD::PROPERTIES* properties) = 0;
};

}  // namespace ZynDisplayQT
