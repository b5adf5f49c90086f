// Waits for what comes by the event loop.
#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>
#include <algorithm>

constexpr int kPatienceMilliseconds = 60000;  // of a test on a busy machine

// False when it does not come in time.
template <typename Condition>
bool Comes(const Condition& condition, int milliseconds = kPatienceMilliseconds) {
  QElapsedTimer clock;
  clock.start();
  while (!condition()) {
    if (clock.elapsed() > milliseconds) return false;
    QCoreApplication::processEvents();
    QThread::msleep(1);
  }
  return true;
}

// The longest time for which the event loop was busy with one thing, until it comes; -1 when it does not.
template <typename Condition>
qint64 LongestStandstillUntil(const Condition& condition) {
  QElapsedTimer clock;
  clock.start();
  qint64 longest = 0;
  while (!condition()) {
    if (clock.elapsed() > kPatienceMilliseconds) return -1;
    const qint64 before = clock.elapsed();
    QCoreApplication::processEvents();
    longest = std::max(longest, clock.elapsed() - before);
    QThread::msleep(1);
  }
  return longest;
}
