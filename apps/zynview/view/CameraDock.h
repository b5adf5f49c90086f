// The panel with the cameras that were found, and with what can be set on the one that is open.
#pragma once

#include <QDockWidget>
#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "sources/Background.h"
#include "sources/CameraControls.h"

class QComboBox;
class QLabel;
class QToolButton;

namespace zynview {

class FeatureControl;

// GUI thread, on which nothing waits for a camera.
class CameraDock : public QDockWidget {
 public:
  using FindCameras = std::function<std::vector<CameraEntry>()>;  // any thread; may take long

  // `find` is called in `search`, and the camera that is open in `talk`. Neither is owned.
  CameraDock(FindCameras find, Background* search, Background* talk, QWidget* parent);

  // The user wants another camera (an empty id means the simulator), or another pixel format.
  std::function<void(const QString& id)> onCamera;
  std::function<void(const QString& name)> onFormat;
  std::function<void(const QString& problem)> onProblem;

  // The camera that is open; null: none.
  void SetControls(std::shared_ptr<CameraControls> openCamera);
  // Asks the camera for all its values; they are shown when it has answered.
  void Update();
  // Looks for cameras; the list comes later. The simulator stands at its end.
  void Refresh();

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void ShowCameras(std::vector<CameraEntry> found);
  void MarkOpenCamera();
  void Show(const CameraControls::State& state);
  void ShowFormats(const CameraControls::State& state);
  void OfferFormats(const QStringList& names);
  void SetFeature(int feature, double value);
  void SendNext();

  FindCameras findCameras;
  Background* searching;
  Background* talk;
  std::shared_ptr<CameraControls> controls;
  uint64_t session = 0;  // counts the cameras: what an earlier one answers is not shown
  // What the user has chosen and the camera has not heard of. A slider that is drawn along is faster than it.
  std::array<std::optional<double>, CameraControls::kFeatures> wanted;
  bool isSetting = false;
  QString format;       // what the camera has
  QStringList offered;  // the list of formats as it is filled
  std::vector<CameraEntry> cameras;
  bool searched = false, isSearching = false;
  QComboBox* list;
  QToolButton* refresh;
  QComboBox* formats;
  std::array<FeatureControl*, CameraControls::kFeatures> features{};
};

}  // namespace zynview
