// The contenders side by side. Two ways to run it, both printing JSON, both with upper limits of the sizes:
//   bench --costs [--largest N] [--largest-conversion N]
//       What each operation costs besides time; fails unless all contenders leave the same rows. Under
//       callgrind also one dump of instructions per operation.
//   bench [--largest N] [--largest-conversion N] [--benchmark_...]
//       Times.
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <limits>
#include <map>
#include <optional>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name) (void)(name)
#endif

#include "bench/Counters.h"
#include "bench/LibraryContender.h"
#include "bench/Operations.h"
#include "bench/Peers.h"
#include "core/OperationGuard.h"

namespace {

bool Is(const char* name, const char* other) { return std::strcmp(name, other) == 0; }

Contender& ContenderOf(const char* name) {
  static std::map<std::string, std::unique_ptr<Contender>> contenders;
  std::unique_ptr<Contender>& contender = contenders[name];
  if (contender == nullptr) {
    const bool library = Is(name, Contenders::library) || Is(name, Contenders::guarded);
    contender = library ? MakeLibraryContender() : MakePeer(name);
  }
  return *contender;
}

/// With a guard for the one operation if the contender has one.
void Run(const Operation& operation, const char* name, int nth) {
  std::optional<OperationGuard> guard;
  if (Is(name, Contenders::guarded)) guard.emplace();
  const bool succeeded = operation.run(ContenderOf(name), nth) && (!guard || guard->Succeeded());
  if (!succeeded) throw std::runtime_error(operation.Title() + " failed");
}

/// Measured the second time, when every shared object is bound and every locale is loaded.
Counters CostsOf(const Operation& operation, const char* name) {
  const std::string title = operation.Title() + "/" + name;
  operation.content.Install();
  Run(operation, name, 0);
  if (operation.runs == 1) operation.content.Install();
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  Counters::Start();
  Run(operation, name, operation.runs == 1 ? 0 : 1);
  const Counters costs = Counters::Stop();
  CALLGRIND_DUMP_STATS_AT(title.c_str());
  CALLGRIND_STOP_INSTRUMENTATION;
  return costs;
}

int PrintCosts(const Limits& limits) {
  const char* separator = "{\n";
  for (const Operation& operation : Operations(limits)) {
    std::string rows;
    for (const char* name : operation.contenders) {
      const Counters costs = CostsOf(operation, name);
      std::cout << separator << "\"" << operation.Title() << "/" << name
                << "\": {\"allocations\": " << costs.allocations << ", \"peak\": " << costs.peakBytes
                << ", \"writes\": " << costs.writes << ", \"syncs\": " << costs.syncs << "}" << std::flush;
      separator = ",\n";
      const std::string counts = RowCounts();
      if (rows.empty()) rows = counts;
      if (counts == rows) continue;
      std::cerr << operation.Title() << ": " << name << " left " << counts << "instead of " << rows << "\n";
      return 1;
    }
  }
  std::cout << "\n}\n";
  return 0;
}

void Measure(benchmark::State& state, const Operation& operation, const char* name) {
  int nth = 0;
  if (operation.runs > 1) operation.content.Install();
  for (auto iteration : state) {
    (void)iteration;
    if (operation.runs == 1) {
      state.PauseTiming();
      operation.content.Install();
      state.ResumeTiming();
    }
    Run(operation, name, nth++);
  }
}

void RegisterAll(const Limits& limits) {
  for (const Operation& operation : Operations(limits)) {
    for (const char* name : operation.contenders) {
      benchmark::RegisterBenchmark(
          (operation.Title() + "/" + name).c_str(),
          [operation, name](benchmark::State& state) { Measure(state, operation, name); })
          ->Iterations(operation.runs)
          ->UseRealTime()
          ->Unit(benchmark::kMicrosecond);
    }
  }
}

/// The number that follows `option`, or a large one.
int Limit(const char* option, int count, char** arguments) {
  for (int index = 1; index + 1 < count; ++index) {
    if (std::strcmp(arguments[index], option) == 0) return std::atoi(arguments[index + 1]);
  }
  return std::numeric_limits<int>::max();
}

}  // namespace

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  // The library's debug lines are formatted, as they must be, and go nowhere.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  const Limits limits{Limit("--largest", count, arguments), Limit("--largest-conversion", count, arguments)};
  if (count > 1 && std::strcmp(arguments[1], "--costs") == 0) return PrintCosts(limits);
  benchmark::Initialize(&count, arguments);
  RegisterAll(limits);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
