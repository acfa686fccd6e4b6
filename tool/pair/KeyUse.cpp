#include "tool/pair/KeyUse.h"

#include <algorithm>

#include "tool/pair/Belonging.h"

namespace {

struct Query {
  const char* sql;
  bool hasName;
};

constexpr Query Queries[] = {{"SELECT SiteKey, SiteIdentifier FROM main.Sites ORDER BY 1", true},
                             {"SELECT PathKey, PathIdentifier FROM main.Paths ORDER BY 1", true},
                             {"SELECT OrientationKey FROM main.Orientation ORDER BY 1", false},
                             {"SELECT GeolocationKey FROM main.Geolocation ORDER BY 1", false},
                             {"SELECT HeightKey FROM main.Height ORDER BY 1", false}};

bool StandsBefore(const KeyUse::Owned& one, const KeyUse::Owned& other) {
  return one.alignment < other.alignment;
}

std::vector<KeyUse::Owned> ReadThresholds(const Sqlite& db, Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  std::vector<KeyUse::Owned> rows;
  Sqlite::Rows read = db.Select(QByteArray("SELECT ") + tables.alignmentKey + ", " + tables.thresholdsOwner +
                                " FROM thresholds." + tables.thresholds);
  while (read.Next()) rows.push_back({read.Int(0), read.Int(1)});
  std::stable_sort(rows.begin(), rows.end(), StandsBefore);
  return rows;
}

}  // namespace

KeyUse::KeyUse(const Sqlite& db) {
  for (const Kind kind : {Kind::Site, Kind::Path}) Read(db, kind);
  for (std::vector<qint64>& keys : used_) std::sort(keys.begin(), keys.end());
}

void KeyUse::Read(const Sqlite& db, Kind kind) {
  const bool isSite = kind == Kind::Site;
  const Belonging::Tables& tables = Belonging::Of(kind);
  Sqlite::Rows rows = db.Select(
      QByteArray("SELECT ") + tables.alignmentKey + ", " + tables.ownerKey +
      ", TargetOrientationKey, MeasuredOrientationKey, LocationKey, SiteHeightKey, " +
      (isSite ? "LocationKey" : "PathLocationKey") + " FROM main." + tables.alignments + " ORDER BY 1");
  std::vector<Owned>& alignments = isSite ? ofSites_ : ofPaths_;
  std::vector<qint64>& owners = Keys(isSite ? Of::Sites : Of::Paths);
  while (rows.Next()) {
    alignments.push_back({rows.Int(0), rows.Int(1)});
    owners.push_back(rows.Int(1));
    for (const int column : {2, 3}) Keys(Of::Orientations).push_back(rows.Int(column));
    for (const int column : {4, 6}) Keys(Of::Locations).push_back(rows.Int(column));
    Keys(Of::Heights).push_back(rows.Int(5));
  }
}

QStringList KeyUse::Unused(const Sqlite& db, Of table) const {
  const auto number = static_cast<std::size_t>(table);
  QStringList unused;
  auto next = used_[number].begin();
  Sqlite::Rows rows = db.Select(Queries[number].sql);
  while (rows.Next()) {
    const qint64 key = rows.Int(0);
    while (next != used_[number].end() && *next < key) ++next;
    if (next != used_[number].end() && *next == key) continue;
    unused.append(QString::number(key) +
                  (Queries[number].hasName ? QLatin1Char(' ') + rows.Text(1) : QString()));
  }
  return unused;
}

ThresholdsUse::ThresholdsUse(const KeyUse& mainFile, const Sqlite& db, Kind kind) {
  const std::vector<KeyUse::Owned> rows = ReadThresholds(db, kind);
  auto row = rows.begin();
  for (const KeyUse::Owned& alignment : mainFile.Alignments(kind)) {
    for (; row != rows.end() && row->alignment < alignment.alignment; ++row) {
      rowsWithout.append(QString::number(row->alignment));
    }
    int agreeing = 0;
    for (; row != rows.end() && row->alignment == alignment.alignment; ++row) {
      if (row->owner == alignment.owner) {
        ++agreeing;
      } else {
        ofOthers.append(QString::number(alignment.alignment));
      }
    }
    if (agreeing == 0) alignmentsWithout.append(QString::number(alignment.alignment));
    if (agreeing > 1) doubled.append(QString::number(alignment.alignment));
  }
  for (; row != rows.end(); ++row) rowsWithout.append(QString::number(row->alignment));
}
