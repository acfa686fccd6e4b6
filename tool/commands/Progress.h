#pragma once

#include <QElapsedTimer>

/// Shows on a terminal how many alignments a long command has saved: after one second, and ten times a second
/// from then on. The line is cleared at its end.
class Progress {
 public:
  explicit Progress(std::size_t total) : total_(total) { timer_.start(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();
  void Saved(std::size_t count);

 private:
  const std::size_t total_;
  QElapsedTimer timer_;
  bool shown_ = false;
  qint64 next_ = 0;
};
