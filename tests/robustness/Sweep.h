#pragma once

#include <gtest/gtest.h>

#include <QByteArray>
#include <QStringList>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tests/support/Fault.h"
#include "tests/support/SqliteCalls.h"

// Sweeps leave out some of their numbers unless TARNBEAM_FULL_SWEEPS=1 asks for all.
inline bool FullSweeps() { return qgetenv("TARNBEAM_FULL_SWEEPS") == "1"; }

// The numbers 1 to `count`: all of them, or every `stride`-th with both ends.
inline std::vector<int> Swept(int count, int stride) {
  std::vector<int> numbers;
  for (int number = 1; number <= count; ++number) {
    if (FullSweeps() || number == count || (number - 1) % stride == 0) numbers.push_back(number);
  }
  return numbers;
}

// What a sweep has done, printed as one line at its end.
struct Tally {
  explicit Tally(const char* sweep) : what(sweep) {}
  ~Tally() {
    std::printf("[ SWEPT    ] %s: %d calls failed, %d processes killed, %d endless loops met\n", what, failed,
                killed, spun);
  }
  Tally(const Tally&) = delete;
  Tally& operator=(const Tally&) = delete;

  const char* what;
  int failed = 0;
  int killed = 0;
  int spun = 0;
};

// More steps than any operation of the tests makes.
constexpr int guardedSteps = 1500;

// An endless loop ends the test program with a message instead of hanging it.
inline void GuardAgainstSpinning() {
  SqliteCalls::Arm(Fault::Before("step", [] {
                     std::fputs("a statement is stepped without end\n", stderr);
                     std::abort();
                   }).At(guardedSteps));
}

// In a process of its own: the loop ends the process as a killing fault does.
inline void EndWhenSpinning() { SqliteCalls::Arm(Fault::Kill("step").At(guardedSteps)); }

// The calls of one run, in order, that a fault without names can meet: lines of SqliteCalls' trace.
inline QStringList SweptCalls(const QStringList& trace) {
  QStringList calls;
  for (const QString& line : trace) {
    for (const char* name : {"open_v2", "exec", "prepare_v2", "bind_", "step", "close"}) {
      if (line.startsWith(QLatin1String(name))) calls.append(line);
    }
  }
  return calls;
}

// SQLite's result codes with which a call of the trace can fail.
std::vector<int> CodesOf(const QString& call);
