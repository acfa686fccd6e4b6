#include "tests/robustness/SweptConversion.h"

#include "migration/AllConverters.h"
#include "tests/support/DatabaseDump.h"

namespace {

template <typename Converter>
bool Convert(QString& path) {
  return Converter().Convert(path);
}

const char* UncountedFrom(int version) {
  if (version <= 2) return "Preferences";
  return version == 6 ? "PathAlignment" : nullptr;
}

Contents Golden(int version) {
  const Scene scene{Contents()};
  LoadSqlFile(scene.Main(), QStringLiteral(TARNBEAM_GOLDEN_FOLDER "/version_%1.sql").arg(version));
  return {ReadFile(scene.Main()), {}};
}

}  // namespace

std::vector<Conversion> Conversion::All() {
  int from = 0;
  const auto all = AllConverters::Table([&from](auto converter) {
    ++from;
    return Conversion{from, &Convert<typename decltype(converter)::Type>, UncountedFrom(from), from >= 2};
  });
  return {all.begin(), all.end()};
}

SweptConversion::SweptConversion(const QString& parentFolder)
    : golden_(Golden(GetParam().from)), scene_(golden_, parentFolder) {}
