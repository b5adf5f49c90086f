// The main function of all test programs. Tests run in a QApplication: on the X server that DISPLAY names,
// else on the platform "offscreen".
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  testing::InitGoogleTest(&argc, argv);
  // Set for one test at a time, by that test itself.
  if (qEnvironmentVariableIsSet("ZYN_TEST_WITHOUT_APPLICATION")) return RUN_ALL_TESTS();
  QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
