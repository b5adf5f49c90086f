#include "QTD/display/GuiThread.h"

#include <QCoreApplication>
#include <QThread>

namespace QTD {

bool IsGuiThread() {
  const QCoreApplication* application = QCoreApplication::instance();
  return !application || application->thread() == QThread::currentThread();
}

}  // namespace QTD
