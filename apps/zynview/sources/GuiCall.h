// Brings a call from any thread to the GUI thread.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <functional>
#include <utility>

namespace zynview {

// Made and destroyed on the GUI thread; what was asked for and has not been called goes away with it. It
// carries no data: those belong under a lock of the caller's.
class GuiCall : public QObject {
 public:
  explicit GuiCall(std::function<void()> call) : function(std::move(call)) {}

  // Any thread: `call` comes once for each, from the event loop.
  void Ask() { QCoreApplication::postEvent(this, new QEvent(QEvent::User)); }

 protected:
  void customEvent(QEvent*) override { function(); }

 private:
  const std::function<void()> function;
};

}  // namespace zynview
