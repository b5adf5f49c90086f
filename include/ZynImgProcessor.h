/// @file
/// Image processors: the interface of one stage, of a chain of stages, and of the stage kinds.
#pragma once

#include <cstdint>
#include <string>

#include "ZynComponent.h"
#include "ZynImage.h"

/// One stage of image processing. Order of calls: set parameters through `GetComponent`, `Init`, any number
/// of `ProcessImage`, `Release`. Failures are composed codes: 0x80000000 | id << 16 | code.
///
/// A host writes stages of its own by deriving from this class: see `ZynImgProcessingChain::InsertProcessor`.
///
/// Threads: any thread may call any operation of a stage of the library; a stage does one thing at a time.
/// The stages of `ZynDisplayQGL` do their work on the GUI thread alone and answer 1 elsewhere. In a chain a
/// stage is called on the GUI thread, with the display's locks held: it must not wait for a thread that hands
/// over images, nor for one that is in `GetProcessor`, in the chain's list, in the typed parameters of the
/// controller or in another operation that waits for an image that is being processed.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynImgProcessor {
 public:
  virtual ~ZynImgProcessor() = default;

  /// Prepares the stage for images like `source` (a header, its pixels are not read). `output` may be null;
  /// where a stage can choose, it states the wanted format. Calls `Release` first. The records stay the
  /// caller's and are copied. 3: a format that the stage does not handle; 7: null, or no size; 9: no memory;
  /// 8: no surface of OpenGL; 1: a parameter that is no number, for which "yuv2rgb", "unpack" and "image..."
  /// of the processor raise `std::invalid_argument` or `std::out_of_range`.
  virtual uint32_t Init(const ZynImage* source, const ZynImage* output) = 0;

  /// Processes one image. Without an `output` the result is written into the stage's own image; with one it
  /// is written there, and an `output` of another size than prepared is refused (7). `data` is handed along
  /// by a chain, and null elsewhere. The caller owns all three, and keeps them as long as it reads `Out`.
  /// In a chain on the card the pixels of `source` are not in memory: `imageData` is not null, but its bytes
  /// mean nothing, unless the stage in front has "readGPU" 1.
  /// 7: null, no pixels, an `output` that does not fit; 8 or 1: before `Init`; 1, or 9 from a Bayer stage: a
  /// source of another size or format, or the work failed.
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) = 0;

  /// Frees all that `Init` made and brings the stage back to its constructed state; parameters stay. `Out`
  /// and `GetImageInfo` must not be read any more.
  virtual void Release() = 0;

  /// The stage's parameters; owned by the stage. A host's stage may answer null.
  virtual ZynComponent* GetComponent() = 0;

  /// The image that the last successful `ProcessImage` produced; null when there is none. It is the stage's
  /// own, or the caller's where the caller gave an `output` or the stage works in place. It lives until the
  /// next `Init` or `Release`; its pixels change with the next `ProcessImage`.
  virtual ZynImage* Out() = 0;

  /// Header of the prepared source (true) or of the result (false); null before `Init`. Owned by the stage;
  /// it lives until the next `Init` or `Release`.
  virtual ZynImage* GetImageInfo(bool source) = 0;

  /// Counts up (true) or down (false, not below 0) and answers whether the stage is enabled, i.e. the count
  /// is above 0. The count starts at 1, and `Init` and `Release` set it back to that. What a stage that is
  /// not enabled does is its own matter: most of them let the image pass.
  virtual bool Enable(bool on) = 0;

  /// Whether the count of `Enable` is above 0.
  virtual bool IsEnabled() = 0;
};

/// An ordered list of named stages through which an image runs.
///
/// A display makes one with each `Initialize`, and owns it: it is had from
/// `ZynDisplayProcessor::GetProcessor` and lives until the next `Initialize`, `Uninitialize` or the display's
/// end.
///
/// Threads: the list operations, `Out`, `GetImageInfo` and `GetComponent` belong to any thread, and wait for
/// a run that is under way; `Init`, `ProcessImage` and `Release` belong to the GUI thread.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynImgProcessingChain {
 public:
  virtual ~ZynImgProcessingChain() = default;

  /// The stage at a place from 0 on, null behind the last. It stays the chain's.
  virtual ZynImgProcessor* GetProcessorAt(int index) = 0;

  /// The stage of that name, null where there is none: "yuv2rgb", "unpack", "image.unpacked", "bayer",
  /// "image.colorcorrection", "image.overlay", "image.output", "image.display", "image.coloration", as far as
  /// the format has them, and those of the host. It stays the chain's.
  virtual ZynImgProcessor* FindProcessor(const char* name) = 0;

  /// Adds a stage at the end: `InsertProcessor` with a null `before`.
  virtual uint32_t AddProcessor(const char* name, ZynImgProcessor* stage) = 0;

  /// Puts a stage in front of the one called `before`; with null or an empty text, at the end. The stage has
  /// been prepared by its `Init`, for which the neighbour's `GetImageInfo(true)` is the source. A stage that
  /// was added belongs to the chain, which releases and deletes it; a refused one stays the caller's. The
  /// list operations answer a bare code: 0, 2 no stage `before`, 4 the stage is in the list or, where
  /// `before` is named, its name is; 7 no name or no stage. At the end a name may stand a second time: it is
  /// then the first one's that is found and removed.
  virtual uint32_t InsertProcessor(const char* before, const char* name, ZynImgProcessor* stage) = 0;

  /// Takes a stage out, releases and deletes it; one that takes itself out while it runs is deleted after the
  /// run, which fails. A bare code: 0, or 2 where there is none of that name.
  virtual uint32_t RemoveProcessor(const char* name) = 0;

  /// The chain's parameters, such as "time", the mean of the last runs as a text like "1.25 ms"; owned by the
  /// chain.
  virtual ZynComponent* GetComponent() = 0;

  /// Makes the list anew for images like `source`, of which the pixels are not read: all stages that were in
  /// it go, those of the host too. 7: null; 1: a stage cannot be made or does not take the format.
  virtual uint32_t Init(const ZynImage* source) = 0;

  /// Runs an image through the stages, each on what the one before it produced. `output` and `data` are
  /// handed to every stage, and may be null. 7: null; 1: no stages, or one of them failed, whose own code is
  /// not passed on. The caller owns the images.
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output, void* data) = 0;

  /// Releases and deletes all stages. Parameters stay.
  virtual void Release() = 0;

  /// The result of the last stage that has one; null before the first image. See `ZynImgProcessor::Out`.
  virtual ZynImage* Out() = 0;

  /// Header of the first stage's source (true) or of the last one's result (false); null without stages. See
  /// `ZynImgProcessor::GetImageInfo`.
  virtual ZynImage* GetImageInfo(bool source) = 0;
};

/// The kinds of stages, each an interface of its own. `ZynDisplayCPU` and `ZynDisplayQGL` make them.
namespace ZynDisplayQT {

/// Turns YUV422_8_UYVY into RGB8, in an image of its own whatever the `output`. A source that cannot be
/// converted, also one without pixels, gives a black picture, and success.
class YUV2RGB : public ZynImgProcessor {};

/// Turns a packed monochrome or Bayer format into one 16-bit word for each sample, with the value in its low
/// bits, in an image of its own whatever the `output`. A source that cannot be unpacked, also one without
/// pixels, gives a black picture, and success; on the card bit streams fail then.
class Unpack : public ZynImgProcessor {};

/// Copies an image and converts depth, channels and channel order on the way. Parameters, read by `Init`:
/// "depth" (8 reduces a deeper source where no output header is given) and "external" (1: each `ProcessImage`
/// brings its own output) on the processor, "image.flip.vert" (1 turns the lines, on the processor their mark
/// alone), and on the card "image.color.coef" (a factor), "image.color.mono" (1 spreads the first channel);
/// and, read at each image, "readGPU" (1 brings it into memory). A stage that is not enabled hands its source
/// on where there is nothing to convert; on the card it works all the same.
class Image : public ZynImgProcessor {};

/// Turns a Bayer image into three channels. Parameter "BayerAlgType", read by `Init`: the interpolation
/// method, 0 to 3, see `ZynBayer`; 9 for any other. An output header of a BGR code asks for that order.
class Bayer : public ZynImgProcessor {};

/// Applies gain, offset and gamma to each channel, in place: it writes into the image that it is given.
///
/// Parameters: "gain.r", "gain.g", "gain.b" (factors, 1), "offs.r", "offs.g", "offs.b" (fractions of the full
/// range, 0) and "gamma" (exponent, 1: none), for the first, second and third channel as stored. On the
/// processor images of 8 bits fail with 1 while a setting is active.
class ColorCorrection : public ZynImgProcessor {
 public:
  /// "cmd.params.apply" takes the parameters from `args`, where they are present, and applies them from the
  /// next image on; "cmd.params.reset" sets them back. 1 when done; 0 for an unknown command, a text that is
  /// no number, or before `Init`. To apply null is 0 on the processor; on the card it stands for no
  /// arguments. On the card arguments do not become parameters, and a reset is applied with the argument
  /// "apply" 1 only. Nothing is raised. Any thread.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;
};

/// Marks under-exposed and over-exposed pixels of the shown picture, in place.
///
/// Parameters: "thres.lo" and "thres.hi" (sample values before colour correction, of RGB the sum of three;
/// pixels below and above are marked; a negative one stands for 1 and for the largest value less 1),
/// "color.lo" and "color.hi" (0x00BBGGRR). The values come from the stage "image.unpacked" of the chain whose
/// component the factory was given; without that no picture passes. On the card only `Init` reads them, which
/// also enables the stage.
class ExposureColoration : public ZynImgProcessor {
 public:
  /// As for `ColorCorrection`; 0 also without a chain. On the card "cmd.params.apply" and "cmd.params.reset"
  /// answer 1 and change nothing. Any thread.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;
};

/// Draws text and rectangles into the image that passes, in place. Objects are named by identifiers, and live
/// until the next `Init` or `Release`. Any thread may call any operation. `properties` may be null, and is
/// null in hosts. Rectangles are kept, but not painted by the stage of the processor. Fonts need a
/// `QGuiApplication`.
class ImageOverlay : public ZynImgProcessor {
 public:
  /// "cmd.text.add", "cmd.rect.add", "cmd.text.del", "cmd.rect.del", "cmd.del": 1 when done, 0 otherwise. The
  /// identifier of a new object comes back in `args` as "objectID". The keys are those of the overlays of a
  /// display, in pixels of the image.
  virtual uint32_t RunCommand(const char* name, QTD::ARGUMENTS* args) = 0;

  /// Properties that new objects take where they name none themselves; they are copied. False for null.
  virtual bool SetDefaults(QTD::PROPERTIES* properties) = 0;

  /// Values that text templates may name; they are copied. False for null.
  virtual bool SetTextVariables(QTD::PROPERTIES* properties) = 0;

  /// Adds a text with its top left corner at a place of the picture, in pixels; with a negative `y`, `x` is a
  /// placement code: 1 top left, 9 top centre, 4 top right, 5 middle, 2 bottom left, 7 bottom centre, 3
  /// bottom right. Answers the identifier, empty when the text was refused.
  virtual std::string AddText(const char* text, int x, int y, QTD::PROPERTIES* properties) = 0;

  /// Takes an object away. False when there is none of that identifier.
  virtual bool DeleteObject(const std::string& id) = 0;

  /// Adds a rectangle, in pixels of the picture that passes. Answers the identifier, empty when it was
  /// refused.
  virtual std::string AddRect(int x, int y, int width, int height, QTD::PROPERTIES* properties) = 0;
};

}  // namespace ZynDisplayQT
