#pragma once

#include <sys/types.h>

#include <functional>

// Runs `work` in a forked child and waits for it. Returns its exit status: 0 on success, 1 if an expectation
// failed or an exception escaped in it, Fault::killedStatus if a fault ended it, 128 plus the signal's number
// if a signal did. What the child writes is thrown away unless `showOutput`.
int RunInChild(const std::function<void()>& work, bool showOutput = false);
// The same in two halves, for children that work at the same time.
pid_t StartChild(const std::function<void()>& work, bool showOutput = false);
int WaitForChild(pid_t child);

// Ends the process without any clean-up, except that gathered coverage data are kept.
[[noreturn]] void LeaveProcess(int status);
