// Objects behind pointers that came as text, if they are living ones.
#pragma once

class QGLSurface;
class QWindow;

QWindow* LivingWindow(void* pointer);
QGLSurface* LivingSurface(const void* pointer);
