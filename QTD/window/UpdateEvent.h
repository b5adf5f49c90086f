// A repaint request of which never more than one waits.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <atomic>
#include <memory>

namespace QTD {

using PostedFlag = std::shared_ptr<std::atomic<bool>>;

// Keeps `flag` raised as long as it waits in the event queue. An event that is thrown away instead of being
// delivered lowers it too, so that the next request is not lost.
class UpdateEvent : public QEvent {
 public:
  explicit UpdateEvent(PostedFlag raised) : QEvent(QEvent::UpdateRequest), flag(std::move(raised)) {}
  ~UpdateEvent() override { Lower(); }

  // Any thread.
  static void Post(QObject* receiver, const PostedFlag& waiting) {
    if (waiting->exchange(true)) return;
    auto event = std::make_unique<UpdateEvent>(waiting);
    waiting->store(true, std::memory_order_release);
    QCoreApplication::postEvent(receiver, event.release());
  }

  // Whether `event` is a request to repaint, whoever made it. Lowers the flag: a request that comes in from
  // now on needs an event of its own. The receiver's thread.
  static bool Take(QEvent* event, const PostedFlag& waiting) {
    waiting->load(std::memory_order_acquire);  // pairs with `Post`: what it wrote into the event is seen here
    if (event->type() != QEvent::UpdateRequest) return false;
    if (auto* request = dynamic_cast<UpdateEvent*>(event)) request->Lower();
    return true;
  }

 private:
  void Lower() {
    if (flag) *flag = false;
    flag.reset();
  }

  PostedFlag flag;
};

}  // namespace QTD
