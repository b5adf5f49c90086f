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

CameraDock::CameraDock(FindCameras find, Background* jobs, QWidget* parent)
    : QDockWidget(QStringLiteral("Camera"), parent),
      findCameras(std::move(find)),
      background(jobs),
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
  list->setMinimumContentsLength(20);
  refresh->setText(QStringLiteral("Search"));
  refresh->setToolTip(QStringLiteral("Look for cameras again"));
  formats->setObjectName(QStringLiteral("formats"));
  connect(refresh, &QToolButton::clicked, this, [this] { Refresh(); });
  connect(list, qOverload<int>(&QComboBox::activated), this, [this](int index) {
    const QString id = list->itemData(index).toString();
    if (onCamera && (!controls || controls->ID() != id)) onCamera(id);
    MarkOpenCamera();  // until it is open
  });
  connect(formats, qOverload<int>(&QComboBox::activated), this, [this](int index) {
    const QString name = formats->itemText(index);
    if (controls && onFormat && name != controls->PixelFormat()) onFormat(name);
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
  if (searching) return;
  searched = searching = true;
  refresh->setEnabled(false);
  background->Do([this, find = findCameras]() -> Background::Answer {
    const std::vector<CameraEntry> found = find();
    return [this, found] {
      searching = false;
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

void CameraDock::SetControls(CameraControls* openCamera) {
  controls = openCamera;
  MarkOpenCamera();
  Update();
}

void CameraDock::Update() {
  // Each question is one to the camera: nobody sees the answers of a panel that is hidden.
  if (controls && !isVisible()) return;
  for (const FeatureRow& each : kFeatureRows)
    features[each.feature]->Show(controls ? controls->Read(each.feature) : CameraControls::Range());
  ShowFormats();
}

void CameraDock::ShowFormats() {
  formats->clear();
  formats->setEnabled(controls != nullptr);
  if (!controls) return;
  formats->addItems(controls->PixelFormats());
  for (int i = 0; i < formats->count(); ++i) {
    // What this program cannot read is there, but cannot be chosen.
    auto* model = qobject_cast<QStandardItemModel*>(formats->model());
    if (model && PixelCode(formats->itemText(i)) == 0) model->item(i)->setEnabled(false);
  }
  formats->setCurrentIndex(formats->findText(controls->PixelFormat()));
}

void CameraDock::SetFeature(int feature, double value) {
  if (!controls) return;
  const QString problem = controls->Set(static_cast<CameraControls::Feature>(feature), value);
  if (!problem.isEmpty() && onProblem) onProblem(problem);
  // The camera may have taken another value, and the limits of one feature may depend on another.
  for (const FeatureRow& each : kFeatureRows) features[each.feature]->Show(controls->Read(each.feature));
}

}  // namespace zynview
