// The demosaicing component: turns an image of a Bayer sensor into three channels.
#pragma once

#include <cstdint>

#include "ZynComponent.h"
#include "ZynImage.h"

#ifndef ZYN_EXPORT
#define ZYN_EXPORT __attribute__((visibility("default")))
#endif

/// Interpolates the two colours that each place of a Bayer sensor does not see.
///
/// Sources have 8, 10, 12, 14 or 16 bits, one sample for each place, in any of the four orders; results have
/// three channels of the same depth in RGB or BGR order. Any size from 1x1 on; at the borders the picture is
/// mirrored at its first and last line and column, so that colours keep their places.
///
/// The parameter "BayerAlgType" of the component, read by `Init`, selects the method. Quality is the colour
/// PSNR over all channels at 8 bits, pattern RG, as the mean of the 24 Kodak pictures.
///
/// | value | method                                     | source                                | quality  |
/// |-------|--------------------------------------------|---------------------------------------|----------|
/// | 0     | gradient-corrected linear, on 5x5 places;  | Malvar, He, Cutler: "High-quality     | 35.78 dB |
/// |       | the default, for live pictures             | linear interpolation for demosaicing  |          |
/// |       |                                            | of Bayer-patterned color images", 2004|          |
/// | 1     | bilinear: the mean of the nearest places   |                                       | 30.24 dB |
/// | 2     | edge-directed, for live pictures of a few  | after Hamilton, Adams: "Adaptive      | 39.4 dB  |
/// |       | megapixels: green by two directions and a  | color plan interpolation in single    | (first   |
/// |       | local slope of green against colour, then  | sensor color electronic camera", 1997,| 12)      |
/// |       | red and blue as linear functions of green  | and Kiku, Monno, Tanaka, Okutomi, 2013|          |
/// | 3     | the best picture, for stills and           | after Kiku, Monno, Tanaka, Okutomi:   | 40.48 dB |
/// |       | conversion: gradient-weighted directions   | "Residual interpolation for color     | (first   |
/// |       | with fitted slopes, then residual          | image demosaicking", 2013, and        | 12)      |
/// |       | interpolation of red and blue              | Pekkucuksen, Altunbasak: "Gradient    |          |
/// |       |                                            | based threshold free color filter     |          |
/// |       |                                            | array interpolation", 2010            |          |
///
/// Samples above the depth count as its greatest value.
///
/// Threads: any thread may call any operation of a component; `Init`, `ProcessImage` and `Release` exclude
/// each other. A call works on several threads where the machine has them. Return values are codes of
/// `ZynErrorCode` in the low 16 bits; 0 is success.
class ZynBayer {
 public:
  /// The parameters. Owned by this object.
  virtual ZynComponent* GetComponent() = 0;

  /// Interpolates `source` into the buffer of `output`; both must be like the images given to `Init`, with
  /// lines that lie within `imageSize`. 7 for images that are not, 8 before `Init`.
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output) = 0;

  /// Prepares for sources and outputs like these; the buffers are not touched. 3 for formats that are not
  /// handled, 7 for null, empty and unequal images and for an unknown method, 9 without memory.
  virtual uint32_t Init(const ZynImage* source, ZynImage* output) = 0;

  /// Frees what `Init` made.
  virtual void Release() = 0;

  ZYN_EXPORT static ZynBayer* CreateComponent();

  /// Null is ignored.
  ZYN_EXPORT static void DeleteComponent(ZynBayer* component);

 protected:
  ~ZynBayer() = default;
};
