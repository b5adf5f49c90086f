// A simulated camera of the test's own, which the test can take away.
#pragma once

#include <gtest/gtest.h>

// GLib and Qt both define the word "signals".
#undef signals
#include <arv.h>

#include <QString>

#include "zynview/Waiting.h"

// Answers at 127.0.0.1, like a camera with that address.
class Simulator {
 public:
  // Only one can run on a machine: waits until another test's is gone.
  Simulator() {
    QElapsedTimer clock;
    clock.start();
    while (!camera && clock.elapsed() < kPatienceMilliseconds) {
      camera = arv_gv_fake_camera_new("127.0.0.1", "TEST");
      if (!arv_gv_fake_camera_is_running(camera)) Vanish();
      if (!camera) QThread::msleep(100);
    }
    EXPECT_TRUE(camera) << "another one runs on this machine";
  }
  ~Simulator() { Vanish(); }

  // From one moment to the next nothing answers any more, as when the cable is pulled out.
  void Vanish() { g_clear_object(&camera); }

  static QString Address() { return QStringLiteral("127.0.0.1"); }

 private:
  ArvGvFakeCamera* camera = nullptr;
};
