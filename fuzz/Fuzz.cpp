// The entry points that libFuzzer calls. The target is named by --target=NAME, which libFuzzer ignores.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/HostileFiles.h"

namespace {

const Target* fuzzed = nullptr;

// Runs at every exit except that of a crash.
void Report() {
  const Met& met = Target::HasMet();
  std::fprintf(stderr, "%s: %lld inputs with endless loops, %lld interrupted, %lld connections left open\n",
               fuzzed->name, met.endlessLoops, met.interrupted, met.leftOpen);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  const QString option = QStringLiteral("--target=");
  for (int index = 1; index < *argc; ++index) {
    const QString argument = QString::fromLocal8Bit((*argv)[index]);
    if (argument.startsWith(option)) fuzzed = Target::Named(argument.mid(option.size()));
  }
  if (fuzzed == nullptr) {
    std::fprintf(stderr, "Usage: %s --target=NAME [libFuzzer's options and folders]\nTargets:\n", (*argv)[0]);
    for (const Target& target : Target::All()) std::fprintf(stderr, "  %s\n", target.name);
    std::exit(2);
  }
  std::atexit(Report);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QString complaint =
      fuzzed->Run(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
  if (!complaint.isEmpty()) {
    std::fprintf(stderr, "%s\n", qPrintable(complaint));
    std::abort();
  }
  return 0;
}
