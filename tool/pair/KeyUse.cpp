#include "tool/pair/KeyUse.h"

#include <algorithm>

#include "tool/pair/Belonging.h"

namespace {

struct Table {
  const char* name;
  const char* key;
  /// Null where rows have none.
  const char* shownName;
};

constexpr Table Tables[] = {{"main.Sites", "SiteKey", "SiteIdentifier"},
                            {"main.Paths", "PathKey", "PathIdentifier"},
                            {"main.Orientation", "OrientationKey", nullptr},
                            {"main.Geolocation", "GeolocationKey", nullptr},
                            {"main.Height", "HeightKey", nullptr}};

bool StandsBefore(const KeyUse::Owned& one, const KeyUse::Owned& other) {
  return one.alignment < other.alignment;
}

std::vector<KeyUse::Owned> ReadThresholds(const Sqlite& db, Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  std::vector<KeyUse::Owned> rows;
  Sqlite::Rows read = db.Select(QByteArray("SELECT ") + tables.alignmentKey + ", " + tables.thresholdsOwner +
                                ", rowid FROM thresholds." + tables.thresholds + " ORDER BY rowid");
  while (read.Next()) rows.push_back({read.Int(0), read.Int(1), read.Int(2)});
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
    alignments.push_back({rows.Int(0), rows.Int(1), rows.Int(0)});
    owners.push_back(rows.Int(1));
    for (const int column : {2, 3}) Keys(Of::Orientations).push_back(rows.Int(column));
    for (const int column : {4, 6}) Keys(Of::Locations).push_back(rows.Int(column));
    Keys(Of::Heights).push_back(rows.Int(5));
  }
}

std::vector<KeyUse::Row> KeyUse::Unused(const Sqlite& db, Of table) const {
  const std::vector<qint64>& used = used_[static_cast<std::size_t>(table)];
  const Table& of = Tables[static_cast<std::size_t>(table)];
  std::vector<Row> unused;
  auto next = used.begin();
  const bool hasName = of.shownName != nullptr;
  Sqlite::Rows rows = db.Select(QByteArray("SELECT ") + of.key + (hasName ? ", " : "") +
                                (hasName ? of.shownName : "") + " FROM " + of.name + " ORDER BY 1");
  while (rows.Next()) {
    const qint64 key = rows.Int(0);
    while (next != used.end() && *next < key) ++next;
    if (next != used.end() && *next == key) continue;
    unused.push_back({key, QString::number(key) + (hasName ? QLatin1Char(' ') + rows.Text(1) : QString())});
  }
  return unused;
}

QByteArray KeyUse::Deletion(Of table) {
  const Table& of = Tables[static_cast<std::size_t>(table)];
  return QByteArray("DELETE FROM ") + of.name + " WHERE " + of.key + " = ?";
}

ThresholdsUse::ThresholdsUse(const KeyUse& mainFile, const Sqlite& db, Kind kind) {
  const std::vector<KeyUse::Owned> rows = ReadThresholds(db, kind);
  auto row = rows.begin();
  for (const KeyUse::Owned& alignment : mainFile.Alignments(kind)) {
    for (; row != rows.end() && row->alignment < alignment.alignment; ++row) {
      rowsWithout.append(QString::number(row->alignment));
      deletableWithout.push_back(row->row);
    }
    int agreeing = 0;
    qint64 inEffect = 0;
    for (; row != rows.end() && row->alignment == alignment.alignment; ++row) {
      if (row->owner == alignment.owner) {
        if (++agreeing > 1) deletableDoubled.push_back(inEffect);
        inEffect = row->row;
      } else {
        ofOthers.append(QString::number(alignment.alignment));
      }
    }
    if (agreeing == 0) alignmentsWithout.append(QString::number(alignment.alignment));
    if (agreeing > 1) doubled.append(QString::number(alignment.alignment));
  }
  for (; row != rows.end(); ++row) {
    rowsWithout.append(QString::number(row->alignment));
    deletableWithout.push_back(row->row);
  }
}

QByteArray ThresholdsUse::Deletion(Kind kind) {
  return QByteArray("DELETE FROM thresholds.") + Belonging::Of(kind).thresholds + " WHERE rowid = ?";
}
