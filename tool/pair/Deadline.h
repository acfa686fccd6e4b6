#pragma once

#include <QElapsedTimer>
#include <QThread>

/// How long to wait for files that another program has in use.
class Deadline {
 public:
  explicit Deadline(int seconds) : milliseconds_(qint64(seconds) * 1000) { timer_.start(); }
  /// Waits a moment; false, at once, when the time is up.
  bool Pause() const {
    if (timer_.elapsed() >= milliseconds_) return false;
    constexpr unsigned long pause = 20;
    QThread::msleep(pause);
    return true;
  }

 private:
  qint64 milliseconds_;
  QElapsedTimer timer_;
};
