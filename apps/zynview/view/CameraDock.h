// The panel with the cameras that were found, and with what can be set on the one that is open.
#pragma once

#include <QDockWidget>
#include <QString>
#include <array>
#include <functional>
#include <vector>

#include "sources/Background.h"
#include "sources/CameraControls.h"

class QComboBox;
class QLabel;
class QToolButton;

namespace zynview {

class FeatureControl;

// GUI thread.
class CameraDock : public QDockWidget {
 public:
  using FindCameras = std::function<std::vector<CameraEntry>()>;  // any thread; may take long

  // `background` is not owned; it looks for the cameras.
  CameraDock(FindCameras find, Background* background, QWidget* parent);

  // The user wants another camera (an empty id means the simulator), or another pixel format.
  std::function<void(const QString& id)> onCamera;
  std::function<void(const QString& name)> onFormat;
  std::function<void(const QString& problem)> onProblem;

  // The camera that is open; null: none. Not owned: null has to come before it goes away.
  void SetControls(CameraControls* openCamera);
  // Asks the camera for all its values.
  void Update();
  // Looks for cameras; the list comes later. The simulator stands at its end.
  void Refresh();

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void ShowCameras(std::vector<CameraEntry> found);
  void MarkOpenCamera();
  void ShowFormats();
  void SetFeature(int feature, double value);

  FindCameras findCameras;
  Background* background;
  CameraControls* controls = nullptr;
  std::vector<CameraEntry> cameras;
  bool searched = false, searching = false;
  QComboBox* list;
  QToolButton* refresh;
  QComboBox* formats;
  std::array<FeatureControl*, CameraControls::kFeatures> features{};
};

}  // namespace zynview
