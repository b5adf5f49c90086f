// What a person does with mouse and keyboard, by the program xdotool.
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// Its exit code. What is loaded into the tests beforehand, such as a sanitizer, is not for it.
inline int Xdotool(const QStringList& arguments) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove(QStringLiteral("LD_PRELOAD"));
  QProcess process;
  process.setProcessEnvironment(environment);
  process.setProcessChannelMode(QProcess::ForwardedChannels);
  process.start(QStringLiteral("xdotool"), arguments);
  return process.waitForFinished() && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}
