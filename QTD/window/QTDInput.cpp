#include "QTD/window/QTDInput.h"

QTDInput::~QTDInput() = default;

bool QTDInput::mouseDown(int, int, bool, bool) {
  return false;
}
bool QTDInput::mouseMove(int, int, bool) {
  return false;
}
bool QTDInput::mouseUp(int, int, bool, bool) {
  return false;
}
bool QTDInput::mouseDouble(int, int, bool) {
  return false;
}
bool QTDInput::wheel(int) {
  return false;
}
bool QTDInput::focusLost() {
  return false;
}
bool QTDInput::key(int) {
  return false;
}
bool QTDInput::spare() {
  return false;
}
