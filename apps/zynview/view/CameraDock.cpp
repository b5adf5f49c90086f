#include "view/CameraDock.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QStandardItemModel>
#include <QToolButton>
#include <algorithm>

#include "pixels/PixelTable.h"
#include "view/FeatureControl.h"

namespace zynview {

namespace {

struct FeatureRow {
  CameraControls::Feature feature;
  const char* label;
  const char* unit;
  bool logarithmic;
};

constexpr FeatureRow kFeatureRows[CameraControls::kFeatures] = {
    {CameraControls::Exposure, "Exposure", " µs", true},
    {CameraControls::Gain, "Gain", "", false},
    {CameraControls::FrameRate, "Frame rate", " /s", true},
};

}  // namespace

CameraDock::CameraDock(FindCameras find, Background* search, Background* cameraTalk, QWidget* parent)
    : QDockWidget(QStringLiteral("Camera"), parent),
      findCameras(std::move(find)),
      searching(search),
      talk(cameraTalk),
      list(new QComboBox),
      refresh(new QToolButton),
      formats(new QComboBox) {
  setObjectName(QStringLiteral("camera"));
  auto* content = new QWidget(this);
  auto* form = new QFormLayout(content);
  auto* row = new QHBoxLayout;
  row->addWidget(list, 1);
  row->addWidget(refresh);
  form->addRow(QStringLiteral("Camera"), row);
  for (const FeatureRow& each : kFeatureRows) {
    auto* control = new FeatureControl(QString::fromUtf8(each.unit), each.logarithmic, content);
    control->onChosen = [this, each](double value) { SetFeature(each.feature, value); };
    form->addRow(QString::fromLatin1(each.label), control);
    features[each.feature] = control;
  }
  form->addRow(QStringLiteral("Pixel format"), formats);
  setWidget(content);

  list->setObjectName(QStringLiteral("cameras"));
  list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  list->setMinimumContentsLength(14);
  refresh->setText(QStringLiteral("Search"));
  refresh->setToolTip(QStringLiteral("Look for cameras again"));
  formats->setObjectName(QStringLiteral("formats"));
  formats->setEnabled(false);
  connect(refresh, &QToolButton::clicked, this, [this] { Refresh(); });
  connect(list, qOverload<int>(&QComboBox::activated), this, [this](int index) {
    const QString id = list->itemData(index).toString();
    if (onCamera && (!controls || controls->ID() != id)) onCamera(id);
    MarkOpenCamera();  // until it is open
  });
  connect(formats, qOverload<int>(&QComboBox::activated), this, [this](int index) {
    const QString name = formats->itemText(index);
    if (controls && onFormat && name != format) onFormat(name);
    formats->setCurrentIndex(formats->findText(format));  // until the camera has it
  });
  ShowCameras({});
  SetControls(nullptr);
}

void CameraDock::showEvent(QShowEvent* event) {
  QDockWidget::showEvent(event);
  if (!searched) Refresh();
  Update();
}

void CameraDock::Refresh() {
  if (isSearching) return;
  searched = isSearching = true;
  refresh->setEnabled(false);
  searching->Do([this, find = findCameras]() -> Background::Answer {
    const std::vector<CameraEntry> found = find();
    return [this, found] {
      isSearching = false;
      refresh->setEnabled(true);
      ShowCameras(found);
    };
  });
}

void CameraDock::ShowCameras(std::vector<CameraEntry> found) {
  cameras = std::move(found);
  cameras.push_back({QString(), QStringLiteral("Simulator")});
  list->clear();
  for (const CameraEntry& camera : cameras) list->addItem(camera.name, camera.id);
  MarkOpenCamera();
}

// None is chosen in the list while no camera is open, or one that was not found.
void CameraDock::MarkOpenCamera() {
  const auto found = std::find_if(cameras.begin(), cameras.end(), [this](const CameraEntry& camera) {
    return controls && camera.id == controls->ID();
  });
  list->setCurrentIndex(found == cameras.end() ? -1 : static_cast<int>(found - cameras.begin()));
}

void CameraDock::SetControls(std::shared_ptr<CameraControls> openCamera) {
  controls = std::move(openCamera);
  ++session;
  wanted = {};
  isSetting = false;
  MarkOpenCamera();
  Show({});  // until the camera has answered
  Update();
}

void CameraDock::Update() {
  // Each question is one to the camera: nobody sees the answers of a panel that is hidden.
  if (!controls || !isVisible()) return;
  talk->Do([this, camera = controls, asked = session]() -> Background::Answer {
    return [this, asked, state = camera->ReadAll()] {
      if (asked == session && !isSetting) Show(state);
    };
  });
}

void CameraDock::Show(const CameraControls::State& state) {
  for (const FeatureRow& each : kFeatureRows) features[each.feature]->Show(state.ranges[each.feature]);
  ShowFormats(state);
}

void CameraDock::ShowFormats(const CameraControls::State& state) {
  format = state.format;
  if (state.formats != offered) OfferFormats(state.formats);  // somebody may be choosing from the same ones
  formats->setCurrentIndex(formats->findText(format));
}

void CameraDock::OfferFormats(const QStringList& names) {
  offered = names;
  formats->clear();
  formats->addItems(names);
  formats->setEnabled(!names.isEmpty());
  for (int i = 0; i < formats->count(); ++i) {
    // What this program cannot read is there, but cannot be chosen.
    auto* model = qobject_cast<QStandardItemModel*>(formats->model());
    if (model && PixelCode(formats->itemText(i)) == 0) model->item(i)->setEnabled(false);
  }
}

void CameraDock::SetFeature(int feature, double value) {
  if (!controls) return;
  wanted[static_cast<std::size_t>(feature)] = value;
  if (!isSetting) SendNext();
}

void CameraDock::SendNext() {
  const auto next =
      std::find_if(wanted.begin(), wanted.end(), [](const auto& value) { return value.has_value(); });
  isSetting = next != wanted.end();
  // The camera may have taken another value, and the limits of one feature may depend on another.
  if (!isSetting) return Update();
  const auto feature = static_cast<CameraControls::Feature>(next - wanted.begin());
  talk->Do([this, camera = controls, asked = session, feature, value = **next]() -> Background::Answer {
    return [this, asked, problem = camera->Set(feature, value)] {
      if (asked != session) return;
      if (!problem.isEmpty() && onProblem) onProblem(problem);
      SendNext();
    };
  });
  next->reset();
}

}  // namespace zynview
