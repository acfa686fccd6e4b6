#include "tool/pair/Operands.h"

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Snapshot.h"

bool IsThresholdsFile(const Sqlite& db) {
  constexpr qint64 Tables = 3;
  return db.Number(
             "SELECT total(CASE name WHEN 'Version' THEN -1 ELSE 1 END) FROM main.sqlite_schema WHERE type = "
             "'table' AND name IN ('PreferencesPathLength', 'AntennaAlignmentThresholds', "
             "'PathAlignmentThresholds', 'Version')") == Tables;
}

std::vector<PairNames> PairsOf(const QStringList& names, const Deadline& deadline) {
  std::vector<PairNames> pairs;
  for (const QString& name : names) {
    Snapshot file(name, QString(), deadline, Snapshot::Look::AsItIs);
    file.Files().Open();
    if (!IsThresholdsFile(file.Files().Db())) {
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
