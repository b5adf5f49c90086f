#include "view/ColorControls.h"

#include <QStringList>
#include <cmath>
#include <string_view>

#include "pixels/PixelTable.h"

namespace zynview {

namespace {

constexpr uint32_t kCodeMask = 0xFFFF;
constexpr char kUnread[] = "this format is not read: nothing is corrected or marked";
constexpr char kNoPicture[] = "passes the display unread, this is no picture";
constexpr char kNotOnCard[] = "OpenGL does not take this format, nothing is shown";

bool Failed(uint32_t code) {
  return (code & kCodeMask) != 0;
}

QString Text(double value) {
  return QString::number(value, 'g', 3);
}

QString Text(const std::array<double, 3>& values) {
  if (values[0] == values[1] && values[1] == values[2]) return Text(values[0]);
  return QStringLiteral("%1, %2, %3").arg(Text(values[0]), Text(values[1]), Text(values[2]));
}

std::string Argument(double value) {
  return QString::number(value, 'g', 17).toStdString();
}

// The stage raises values as they are, from 0 to `top`, to the power of gamma. Here gamma is meant for values
// of 0 to 1, so that white stays white: top * (x / top)^g = (x * top^((1 - g) / g))^g.
double GammaScale(double gamma, double top) {
  return std::pow(top, (1 - gamma) / gamma);
}

// On the processor values are samples, and an offset is a fraction of the largest one. On the card they are
// texels of 0 to 1, in which the samples of 10 to 16 bits lie at the bottom of words, and an offset is added
// as it is.
QTD::ARGUMENTS CorrectionArguments(const ColorSettings& wanted, const ZynImage& format, bool onCard) {
  const double top = (1u << format.bitDepth) - 1;
  const double highest = !onCard ? top : top / (format.bitDepth == 8 ? 255 : 65535);
  const double scale = GammaScale(wanted.gamma, highest);
  const double offsetScale = onCard ? highest * scale : scale;
  const PixelRow* row = FindPixel(format.pixelType);
  // The processor counts channels as they are stored: its "r" is the first one, which is blue in a BGR
  // format.
  const bool turned = !onCard && row && row->samples[0] == 'B' && !row->IsMosaic();
  QTD::ARGUMENTS arguments;
  constexpr const char* kChannels[] = {"r", "g", "b"};
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string channel = kChannels[turned ? 2 - i : i];
    arguments["gain." + channel] = Argument(wanted.gain[i] * scale);
    arguments["offs." + channel] = Argument(wanted.offset[i] * offsetScale);
  }
  arguments["gamma"] = Argument(wanted.gamma);
  return arguments;
}

}  // namespace

ZynImgProcessor* ColorControls::Stage(const char* name) const {
  ZynImgProcessingChain* chain = display->GetProcessor();
  return chain ? chain->FindProcessor(name) : nullptr;
}

bool ColorControls::IsOnCard() const {
  int64_t opengl = 0;
  return display->GetComponent()->GetParameterInt("system.opengl", &opengl) == 0 && opengl != 0;
}

void ColorControls::ShowAgain() const {
  display->RunCommand("cmd.image.rebuild", nullptr);
}

QString ColorControls::Start(const ColorSettings& wanted) {
  settings = ColorSettings();
  remembered = wanted;
  QString why;
  if (wanted.demosaicing != settings.demosaicing) why = SetDemosaicing(wanted.demosaicing);
  if (why.isEmpty() && wanted.Corrects()) why = SetCorrection(wanted);
  if (why.isEmpty() && wanted.markExposure) why = SetMarking(true);
  return why;
}

QString ColorControls::Adapt() {
  const ColorSettings wanted = remembered;
  settings = ColorSettings();
  QStringList problems;
  if (Stage("bayer") && wanted.demosaicing != settings.demosaicing)
    problems << SetDemosaicing(wanted.demosaicing);
  if (wanted.Corrects()) problems << SetCorrection(wanted);
  if (wanted.markExposure) problems << SetMarking(true);
  remembered = wanted;
  problems.removeAll(QString());
  return problems.join(QStringLiteral("; "));
}

bool ColorControls::PicturesAreRead() const {
  ZynImgProcessor* stage = Stage("image.colorcorrection");
  const ZynImage* format = stage ? stage->GetImageInfo(false) : nullptr;
  const PixelRow* row = format ? FindPixel(format->pixelType) : nullptr;
  if (!row) return false;
  const std::string_view samples(row->samples);
  return row->IsPlain() || (IsOnCard() && (samples == "RGBA" || samples == "BGRA"));
}

QString ColorControls::WhyUnread() const {
  return QString::fromLatin1(IsOnCard() ? kNotOnCard : kNoPicture);
}

QString ColorControls::NextDemosaicing() {
  return SetDemosaicing((settings.demosaicing + 1) % ColorSettings::kMethods);
}

// The method is read when the stage is prepared; its own format is what it is prepared for again.
QString ColorControls::SetDemosaicing(int method) {
  ZynImgProcessor* stage = Stage("bayer");
  const ZynImage* format = stage ? stage->GetImageInfo(true) : nullptr;
  if (!format) return QStringLiteral("only Bayer formats are demosaiced");
  ZynImage source = *format;  // the stage's own goes away in `Init`
  source.attachments = nullptr;
  source.ownedData = nullptr;
  stage->GetComponent()->SetParameterInt("BayerAlgType", method);
  if (const uint32_t code = stage->Init(&source, nullptr); Failed(code)) {
    stage->GetComponent()->SetParameterInt("BayerAlgType", settings.demosaicing);
    stage->Init(&source, nullptr);
    return QStringLiteral("demosaicing method %1 is refused: code 0x%2")
        .arg(method)
        .arg(code, 8, 16, QLatin1Char('0'));
  }
  settings.demosaicing = remembered.demosaicing = method;
  ShowAgain();
  return {};
}

QString ColorControls::MultiplyGain(double factor) {
  ColorSettings wanted = settings;
  for (double& gain : wanted.gain) gain *= factor;
  return SetCorrection(wanted);
}

QString ColorControls::ResetCorrection() {
  if (!settings.Corrects()) return {};
  ColorSettings wanted = settings;
  wanted.gain = ColorSettings().gain;
  wanted.offset = ColorSettings().offset;
  wanted.gamma = ColorSettings().gamma;
  return SetCorrection(wanted);
}

QString ColorControls::SetCorrection(const ColorSettings& wanted) {
  ZynImgProcessor* stage = Stage("image.colorcorrection");
  const ZynImage* format = stage ? stage->GetImageInfo(true) : nullptr;
  if (!format) return QStringLiteral("this display corrects no colours");
  if (!PicturesAreRead()) return QString::fromLatin1(kUnread);
  // The library would answer every image with a failure.
  const bool onCard = IsOnCard();
  if (!onCard && format->bitDepth <= 8) {
    return QStringLiteral("gain, offset and gamma need more than 8 bits in a sample, and here they have 8");
  }
  QTD::ARGUMENTS arguments = CorrectionArguments(wanted, *format, onCard);
  if (static_cast<ZynDisplayQT::ColorCorrection*>(stage)->RunCommand("cmd.params.apply", &arguments) == 0)
    return QStringLiteral("the colour correction is refused");
  // The correction works in place: with a copy before it, the image that came in stays as it is and can be
  // shown again with other settings.
  if (!onCard && wanted.Corrects() != settings.Corrects()) {
    if (ZynImgProcessor* copy = Stage("image.unpacked")) copy->Enable(wanted.Corrects());
  }
  settings.gain = remembered.gain = wanted.gain;
  settings.offset = remembered.offset = wanted.offset;
  settings.gamma = remembered.gamma = wanted.gamma;
  ShowAgain();
  return {};
}

QString ColorControls::ToggleMarking() {
  return SetMarking(!settings.markExposure);
}

QString ColorControls::SetMarking(bool on) {
  ZynImgProcessor* stage = Stage("image.coloration");
  if (!stage) return QStringLiteral("this display marks no exposure");
  // The stage would answer every image with a failure.
  if (!PicturesAreRead()) return QString::fromLatin1(kUnread);
  if (stage->Enable(on) != on) return QStringLiteral("the exposure marking cannot be switched");
  settings.markExposure = remembered.markExposure = on;
  ShowAgain();
  return {};
}

QString ColorControls::Summary() const {
  QStringList parts;
  if (Stage("bayer")) parts << QStringLiteral("demosaicing %1").arg(settings.demosaicing);
  const ColorSettings plain;
  if (settings.gain != plain.gain) parts << QStringLiteral("gain %1").arg(Text(settings.gain));
  if (settings.offset != plain.offset) parts << QStringLiteral("offset %1").arg(Text(settings.offset));
  if (settings.gamma != plain.gamma) parts << QStringLiteral("gamma %1").arg(Text(settings.gamma));
  if (settings.markExposure) parts << QStringLiteral("exposure marked");
  return parts.join(QStringLiteral("   "));
}

}  // namespace zynview
