// The window that tells what mouse and keys do.
#pragma once

#include <QDialog>

namespace zynview {

// Beside the viewer, which goes on; Esc closes it.
class HelpWindow : public QDialog {
 public:
  explicit HelpWindow(QWidget* parent);

  // To the front, whether it was there or not.
  void Present();
};

}  // namespace zynview
