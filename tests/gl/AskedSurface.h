// A surface that writes down where errors of the driver are asked for, and makes one in front of one of these
// places.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include "gl/surface/QGLSurface.h"

struct AskedSurface : QGLSurface {
  int checkError(const char* where, ...) override {
    asked.push_back(where);
    if (std::strcmp(where, faulty) == 0) glEnable(0xffff);
    return QGLSurface::checkError(where, 1, 0);
  }
  const char* faulty = "";
  std::vector<std::string> asked;
};
