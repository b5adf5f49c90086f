// Demosaicing method, colour correction and exposure marking of a display that is running.
#pragma once

#include <QString>

#include "ZynDisplay.h"
#include "view/ColorSettings.h"

namespace zynview {

// Works on the single stages of the display's chain, which are made anew by every `Initialize` of the
// display. All operations: GUI thread. Those that change something answer an empty text, or why it cannot be
// done; then all stays as it was.
class ColorControls {
 public:
  explicit ColorControls(ZynDisplayProcessor* target) : display(target) {}

  // Brings the wanted settings into a display that has just been initialised.
  QString Start(const ColorSettings& wanted);

  // The same after the display was initialised for other images: what fits to them of that which was wanted
  // last. Answers what does not.
  QString Adapt();

  QString NextDemosaicing();
  QString ToggleMarking();
  QString MultiplyGain(double factor);
  QString ResetCorrection();

  // Formats that no stage reads pass the processor's stages as they are: what comes out is no picture, or
  // nothing at all. On the card each of their images fails, except for colour with alpha, which textures
  // take.
  bool PicturesAreRead() const;
  // What is wrong with a format that is not read, for the title and the status line.
  QString WhyUnread() const;

  // What is on, for the status line; empty when nothing is.
  QString Summary() const;
  const ColorSettings& Settings() const { return settings; }

 private:
  QString SetDemosaicing(int method);
  QString SetCorrection(const ColorSettings& wanted);
  QString SetMarking(bool on);

  bool IsOnCard() const;
  ZynImgProcessor* Stage(const char* name) const;
  void ShowAgain() const;  // a picture that stands still follows, too

  ZynDisplayProcessor* display;  // not owned
  ColorSettings settings;        // what the stages have
  ColorSettings remembered;      // what they would have if all of it fitted to the images
};

}  // namespace zynview
