/// @file
/// The demosaicing component: turns an image of a Bayer sensor into three channels. A library of its own,
/// which needs no Qt: `ZynDemosaicing`.
#pragma once

#include <cstdint>

#include "ZynComponent.h"
#include "ZynImage.h"

#ifndef ZYN_EXPORT
/// Marks what the shared libraries show.
#define ZYN_EXPORT __attribute__((visibility("default")))
#endif

/// Interpolates the two colours that each place of a Bayer sensor does not see.
///
/// Sources have 8, 10, 12, 14 or 16 bits, one sample for each place, in any of the four orders; results have
/// three channels of the same depth in RGB or BGR order. Any size from 1x1 on; at the borders the picture is
/// mirrored at its first and last line and column, so that colours keep their places.
///
/// The parameter "BayerAlgType" of the component, read by `Init`, selects the method:
///
/// - 0: gradient-corrected linear interpolation on 5x5 places, the default, for live pictures. Malvar, He,
///   Cutler: "High-quality linear interpolation for demosaicing of Bayer-patterned color images", 2004.
///   36.22 and 38.10 dB.
/// - 1: bilinear, the mean of the nearest places: what the paper above compares itself with. 30.63 and
///   34.63 dB.
/// - 2: edge-directed, for live pictures of a few megapixels: green by two directions and a local slope of
///   green against colour, then red and blue as linear functions of green. After Hamilton, Adams: "Adaptive
///   color plan interpolation in single sensor color electronic camera", 1997, and Kiku and others, 2013, see
///   3. 39.44 and 40.01 dB.
/// - 3: the best picture, for stills and conversion: gradient-weighted directions with fitted slopes, then
///   residual interpolation of red and blue. After Kiku, Monno, Tanaka, Okutomi: "Residual interpolation for
///   color image demosaicking", 2013, and Pekkucuksen, Altunbasak: "Gradient based threshold free color
///   filter array interpolation", 2010. 40.48 and 40.61 dB.
///
/// The figures are measured: colour PSNR over all channels at 8 bits, pattern RG, four pixels of border left
/// out, the means over the first twelve Kodak pictures and over six free photographs.
///
/// Each place keeps the colour that it has seen exactly. Samples above the depth count as its greatest value.
///
/// Threads: any thread may call any operation of a component; `Init`, `ProcessImage` and `Release` exclude
/// each other. A call works on several threads where the machine has them. Return values are codes of
/// `ZynErrorCode` in the low 16 bits; 0 is success.
///
/// Binary interface: within one major version the virtual functions keep their order and number.
class ZynBayer {
 public:
  /// The parameters: "BayerAlgType". Owned by this object. Any thread.
  virtual ZynComponent* GetComponent() = 0;

  /// Interpolates `source` into the buffer of `output`; both must be like the images given to `Init`, with
  /// lines that lie within `imageSize`, and must not share memory. The caller owns both, and keeps them until
  /// the call is back. 7 for images that are not so, 8 before `Init`. Any thread; calls wait for each other.
  virtual uint32_t ProcessImage(const ZynImage* source, ZynImage* output) = 0;

  /// Prepares for sources and outputs like these; the buffers are not touched. 3 for formats that are not
  /// handled, 7 for null, empty and unequal images and for an unknown method, 9 without memory. After a
  /// failure the component is as before its first `Init`. Any thread.
  virtual uint32_t Init(const ZynImage* source, ZynImage* output) = 0;

  /// Frees what `Init` made; waits for a `ProcessImage` that is under way. Any thread.
  virtual void Release() = 0;

  /// A new component, owned by the caller; null without memory. Any thread.
  ZYN_EXPORT static ZynBayer* CreateComponent();

  /// Frees a component that `CreateComponent` made, with its parameters. Null is ignored. Any thread, when no
  /// other one is inside it.
  ZYN_EXPORT static void DeleteComponent(ZynBayer* component);

 protected:
  ~ZynBayer() = default;
};
