#include <memory>

#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/formats/AlignmentMap.h"
#include "tool/pair/Snapshot.h"

namespace {

double RayOf(const Arguments& arguments) {
  // Half way round the Earth.
  constexpr double Longest = 20'000'000;
  bool isNumber = false;
  const double meters = arguments.options.value(QStringLiteral("ray")).toDouble(&isNumber);
  if (!isNumber || !(meters > 0 && meters <= Longest)) {
    throw WrongUsage(QStringLiteral("--ray must be a number of metres above 0, at most 20000000"));
  }
  return meters;
}

std::unique_ptr<AlignmentWriter> MakeWriter(const QString& format, double rayMeters) {
  if (format == QLatin1String("kml")) return std::make_unique<KmlWriter>(StandardOutput(), rayMeters);
  return std::make_unique<GeoJsonWriter>(StandardOutput(), rayMeters);
}

int Run(const Arguments& arguments) {
  const QString format = FormatOf(arguments, {QStringLiteral("geojson"), QStringLiteral("kml")});
  const double rayMeters = RayOf(arguments);
  const AlignmentFilter filter = FilterOf(arguments);
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  std::vector<Reports> all = files.ReadAll();
  const std::unique_ptr<AlignmentWriter> writer = MakeWriter(format, rayMeters);
  for (Reports& reports : all) {
    reports.alignments = LatestOfEach(filter.Apply(reports.alignments));
    if (!reports.alignments.empty()) writer->Write(reports);
  }
  writer->End();
  return Status::Done;
}

}  // namespace

Command MapCommand() {
  return {
      "map",
      "Prints the newest measurement of each antenna as a map: where it stands, and where it points.",
      {"MAIN", "[THRESHOLDS]"},
      Together({FilterOptions(),
                {ValueOption("format", "geojson or kml.", "FORMAT"),
                 ValueOption("ray", "Length of the rays in metres (1000 by default).", "METRES", "1000")}}),
      false,
      Run};
}
