#pragma once

#include <sys/types.h>

#include <functional>

// Runs `work` in a forked child and waits for it. Answers its exit status: 0 when it came through, 1 when an
// expectation failed or an exception escaped in it, Fault::KilledStatus when a fault ended it, 128 and the
// signal's number when a signal did. What the child writes is thrown away unless `showOutput`.
int RunInChild(const std::function<void()>& work, bool showOutput = false);
// The same in two halves, for children that work at the same time.
pid_t StartChild(const std::function<void()>& work, bool showOutput = false);
int WaitForChild(pid_t child);

// Ends the process without any clean-up, except that what a coverage measurement has gathered is kept.
[[noreturn]] void LeaveProcess(int status);
