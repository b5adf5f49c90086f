// A handler of mouse, wheel and keyboard; a true answer means "handled".
#pragma once

// The window asks its handlers one after the other, on the GUI thread, until one has handled the event. The
// base handles none. `x` and `y` are window pixels, `left` tells the left button from the others, `flag` is
// not used by the window.
class QTDInput {
 public:
  virtual ~QTDInput();
  virtual bool mouseDown(int x, int y, bool left, bool flag);
  virtual bool mouseMove(int x, int y, bool left);
  virtual bool mouseUp(int x, int y, bool left, bool flag);
  virtual bool mouseDouble(int x, int y, bool left);
  virtual bool wheel(int delta);  // eighths of a degree, above 0 when turned away from the user
  virtual bool focusLost();       // told to all handlers, whatever they answer
  virtual bool key(int code);     // as in QKeyEvent::key()
  virtual bool spare();
};
