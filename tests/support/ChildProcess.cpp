#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/FileCalls.h"

#ifdef TARNBEAM_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace {

int Parts() { return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count(); }

// A child leaves by _exit: the clean-up of the test program belongs to the parent.
[[noreturn]] void Work(const std::function<void()>& work, bool showOutput) {
  if (!showOutput && !(freopen("/dev/null", "w", stdout) && freopen("/dev/null", "w", stderr))) _exit(1);
  const int partsBefore = Parts();
  bool passed = false;
  try {
    work();
    passed = Parts() == partsBefore;
  } catch (...) {
    fputs("an exception left the child's work\n", stderr);
  }
  fflush(nullptr);
  LeaveProcess(passed ? 0 : 1);
}

}  // namespace

void LeaveProcess(int status) {
  FileCalls::Reset();
#ifdef TARNBEAM_COVERAGE
  __gcov_dump();
#endif
  _exit(status);
}

pid_t StartChild(const std::function<void()>& work, bool showOutput) {
  fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) Work(work, showOutput);
  return child;
}

int WaitForChild(pid_t child) {
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) {
    ADD_FAILURE() << "no child process";
    return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int RunInChild(const std::function<void()>& work, bool showOutput) {
  return WaitForChild(StartChild(work, showOutput));
}
