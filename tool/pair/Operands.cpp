#include "tool/pair/Operands.h"

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Snapshot.h"

bool IsThresholdsFile(const Sqlite& db, Has has) {
  constexpr qint64 Tables = 3;
  const qint64 there = db.Number(
      "SELECT total(CASE name WHEN 'Version' THEN -3 ELSE 1 END) FROM main.sqlite_schema WHERE type = "
      "'table' AND name IN ('PreferencesPathLength', 'AntennaAlignmentThresholds', "
      "'PathAlignmentThresholds', 'Version')");
  return has == Has::AllTables ? there == Tables : there > 0;
}

std::vector<PairNames> PairsOf(const QStringList& names, const Deadline& deadline) {
  std::vector<PairNames> pairs;
  for (const QString& name : names) {
    Snapshot file(name, QString(), deadline, Snapshot::Look::AsItIs);
    file.Files().Open();
    // One with a table missing is a damaged thresholds file, not a main file.
    if (!IsThresholdsFile(file.Files().Db(), Has::AnyTable)) {
      pairs.push_back({name, QString()});
    } else if (!pairs.empty() && pairs.back().thresholdsName.isEmpty()) {
      pairs.back().thresholdsName = name;
    } else {
      throw WrongUsage(FileName::Shown(name) +
                       QStringLiteral(": is a thresholds file, so its main file has to stand before it"));
    }
  }
  return pairs;
}
