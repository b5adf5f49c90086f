// What chain, converter and stages read from the display that owns them.
#pragma once

class QTDSurface;
class ZynDisplayProcessor;

// The parameter as a pointer; null without a display or without the parameter. Asks no parameter handler and
// takes no lock but the parameter list's own, so that it may be called with a chain's lock held. Any thread.
void* DisplayPointer(ZynDisplayProcessor* display, const char* name);

// The parameter as a number, on the same terms; 0 without it or where it is none.
int DisplayNumber(ZynDisplayProcessor* display, const char* name);

// The surface that the parameter "surface" names; null when none lies there.
QTDSurface* DisplaySurface(ZynDisplayProcessor* display);
