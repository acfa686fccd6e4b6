#pragma once

#include <QDateTime>
#include <QHash>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "bench/Contender.h"
#include "bench/PeerConversion.h"
#include "bench/Sample.h"
#include "bench/Statements.h"
#include "schema/SchemaThresholds.h"
#include "schema/SchemaVersion7.h"

/// The library's calls over a driver, once for all drivers: the same statements, transactions, connections
/// and syncs as the library's, without its checks, its log and its model.
template <typename Driver>
class Peer : public Contender {
  using Connection = typename Driver::Connection;
  using Query = typename Driver::Query;
  using Text = typename Driver::Text;

  static constexpr bool buildsValues = std::is_same_v<Text, QString>;

 public:
  explicit Peer(Search search = Search::Linear) : search_(search) {}

  bool Create() override {
    {
      Connection db(Paths::main);
      db.Execute(Statements::createVersion);
      Query(db, Statements::insertVersion).Bind(7).Step();
      for (const auto table : tablesInOrder) CreateTable(db, texts_.*table.definition);
    }
    Connection db(Paths::thresholds);
    CreateTable(db, SchemaThresholds::preferencesPathLength);
    CreateTable(db, SchemaThresholds::antennaAlignmentThresholds);
    CreateTable(db, SchemaThresholds::pathAlignmentThresholds);
    return true;
  }

  bool SaveSiteAlignment() override {
    int site = 0;
    int alignment = 0;
    {
      Connection db(Paths::main);
      db.Execute("BEGIN TRANSACTION;");
      site = FindOrInsert(db, Statements::site, sample_.site);
      const auto [target, measured, location, height] = InsertParts(db, sample_.target);
      Query row(db, texts_.insertAntennaAlignment);
      row.Bind(site).Bind(sample_.sector).Bind(sample_.position).Bind(sample_.azimuthOffset).Bind(target);
      row.Bind(location).Bind(static_cast<int>(sample_.time)).Bind(measured).Bind(height);
      row.Bind(sample_.tiltInversion).Bind(sample_.note).Bind(sample_.rollPrecision);
      row.Step();
      alignment = row.LastKey();
      db.Execute("END TRANSACTION;");
    }
    InsertThresholds(Statements::insertSiteThresholds, alignment, site, sample_.siteThresholds);
    return true;
  }

  bool SavePathAlignment() override {
    int path = 0;
    int alignment = 0;
    {
      Connection db(Paths::main);
      db.Execute("BEGIN TRANSACTION;");
      path = FindOrInsert(db, Statements::path, sample_.path);
      const int farEnd = InsertThree(db, Statements::insertGeolocation, sample_.farEnd);
      const auto [target, measured, location, height] = InsertParts(db, sample_.pathTarget);
      Query row(db, texts_.insertPathAlignment);
      row.Bind(path).Bind(sample_.none).Bind(sample_.none).Bind(sample_.azimuthOffset).Bind(farEnd);
      row.Bind(target).Bind(location).Bind(static_cast<int>(sample_.time)).Bind(measured).Bind(height);
      row.Bind(sample_.tiltInversion).Bind(sample_.note);
      row.Step();
      alignment = row.LastKey();
      db.Execute("END TRANSACTION;");
    }
    InsertThresholds(Statements::insertPathThresholds, alignment, path, sample_.pathThresholds);
    return true;
  }

  int ReadReports(int site) override {
    int firstKey = 0;
    return ReadRecords(SiteIdentifier(site), &firstKey);
  }

  int ListSites() override {
    std::vector<Text> identifiers;
    int count = 0;
    Connection db(Paths::main);
    Query rows(db, Statements::selectSites);
    for (; rows.Step(); ++count) {
      if constexpr (buildsValues) {
        identifiers.push_back(rows.String(0));
      } else {
        rows.String(0);
      }
    }
    return count;
  }

  bool DeleteSite(int site) override {
    int key = 0;
    {
      Connection db(Paths::main);
      db.Execute("BEGIN TRANSACTION;");
      key = Find(db, Statements::site, SiteIdentifier(site));
      const Associated keys = AssociatedKeys(db, Statements::selectKeysOfSite, key);
      Query(db, Statements::deleteReportsOfSite).Bind(key).Step();
      Query(db, Statements::deleteSite).Bind(key).Step();
      DeleteAssociated(db, keys);
      db.Execute("END TRANSACTION;");
    }
    Connection db(Paths::thresholds);
    db.Execute("BEGIN TRANSACTION;");
    Query(db, Statements::deleteThresholdsOfSite).Bind(key).Step();
    db.Execute("END TRANSACTION;");
    return true;
  }

  bool DeleteReport(int site) override {
    const Text identifier = SiteIdentifier(site);
    int report = 0;
    int key = 0;
    ReadRecords(identifier, &report);
    {
      Connection db(Paths::main);
      db.Execute("BEGIN TRANSACTION;");
      key = Find(db, Statements::site, identifier);
      const Associated keys = AssociatedKeys(db, Statements::selectKeysOfReport, report);
      Query(db, Statements::deleteReport).Bind(key).Bind(report).Step();
      DeleteAssociated(db, keys);
      db.Execute("END TRANSACTION;");
    }
    Connection db(Paths::thresholds);
    db.Execute("BEGIN TRANSACTION;");
    Query(db, Statements::deleteThresholds).Bind(key).Bind(0).Step();
    db.Execute("END TRANSACTION;");
    return true;
  }

  bool SavePreferences() override {
    SaveRow(Paths::main, texts_.savePreferences, Statements::preferenceKinds);
    SaveRow(Paths::thresholds, Statements::savePathLength, Statements::pathLengthKinds);
    return true;
  }

  bool RestorePreferences() override {
    RestoreRow(Paths::main, texts_.restorePreferences, Statements::preferenceKinds);
    RestoreRow(Paths::thresholds, Statements::restorePathLength, Statements::pathLengthKinds);
    return true;
  }

  bool StoreScreens() override {
    Connection db(Paths::main);
    {
      Query row(db, Statements::saveSiteScreen);
      row.Bind(sample_.site).Bind(sample_.sector).Bind(sample_.position);
      row.Bind(sample_.target[1]).Bind(sample_.target[2]).Bind(sample_.target[0]).Step();
    }
    Query row(db, Statements::savePathScreen);
    row.Bind(sample_.path).Bind(sample_.farEnd[0]).Bind(sample_.farEnd[1]).Bind(sample_.farEnd[2]).Step();
    return true;
  }

  bool RestoreScreens() override {
    Connection db(Paths::main);
    return ReadRow(db, Statements::restoreSiteScreen, Statements::siteScreenKinds) &&
           ReadRow(db, Statements::restorePathScreen, Statements::pathScreenKinds);
  }

  bool Convert(int version) override {
    PeerConversion<Driver>(version, search_).Run();
    return true;
  }

 private:
  /// One report, as its values and nothing else.
  struct Record {
    int key;
    QString site, sector, position, note;
    float azimuthOffset;
    float target[3];
    double location[3];
    QDateTime fixTime;
    QDateTime time;
    float measured[3];
    double height;
    int heightType;
    bool tiltInversion;
    int rollPrecision;
    float thresholds[3];
  };
  struct Thresholds {
    float values[3];
  };
  struct Associated {
    std::vector<int> orientation, geolocation, height;
  };

  static Text SiteIdentifier(int site) {
    if constexpr (buildsValues) {
      return QLatin1String("Site ") + QString::number(site);
    } else {
      static thread_local std::string identifier;
      identifier = "Site " + std::to_string(site);
      return identifier.c_str();
    }
  }

  static void CreateTable(Connection& db, const char* definition) {
    db.Execute((std::string("CREATE TABLE IF NOT EXISTS ") + definition).c_str());
  }

  static int Find(Connection& db, const Statements::Owner& owner, const Text& identifier) {
    Query query(db, owner.find);
    query.Bind(identifier);
    return query.Step() ? query.Int(0) : 0;
  }

  static int FindOrInsert(Connection& db, const Statements::Owner& owner, const Text& identifier) {
    const int found = Find(db, owner, identifier);
    if (found >= 1) return found;
    Query query(db, owner.insert);
    query.Bind(identifier).Step();
    return query.LastKey();
  }

  static int InsertThree(Connection& db, const char* sql, const double (&values)[3]) {
    Query query(db, sql);
    query.Bind(values[0]).Bind(values[1]).Bind(values[2]).Step();
    return query.LastKey();
  }

  struct Parts {
    int target;
    int measured;
    int location;
    int height;
  };
  Parts InsertParts(Connection& db, const double (&target)[3]) const {
    Parts parts{};
    parts.target = InsertThree(db, Statements::insertOrientation, target);
    parts.measured = InsertThree(db, Statements::insertOrientation, sample_.measured);
    parts.location = InsertThree(db, Statements::insertGeolocation, sample_.location);
    Query query(db, Statements::insertHeight);
    query.Bind(sample_.height).Bind(sample_.heightType).Step();
    parts.height = query.LastKey();
    return parts;
  }

  static void InsertThresholds(const char* sql, int alignment, int owner, const double (&values)[3]) {
    Connection db(Paths::thresholds);
    db.Execute("BEGIN TRANSACTION;");
    Query(db, sql).Bind(alignment).Bind(owner).Bind(values[0]).Bind(values[1]).Bind(values[2]).Step();
    db.Execute("END TRANSACTION;");
  }

  int ReadRecords(const Text& identifier, int* firstKey) {
    Connection db(Paths::main);
    const int siteKey = Find(db, Statements::site, identifier);
    const QHash<int, Thresholds> thresholds = ReadThresholds(siteKey);
    Query rows(db, texts_.selectSiteReports);
    rows.Bind(identifier);
    std::vector<std::unique_ptr<Record>> records;
    int count = 0;
    for (; rows.Step(); ++count) {
      if constexpr (buildsValues) {
        records.push_back(BuildRecord(rows, thresholds));
        if (count == 0) *firstKey = records[0]->key;
      } else {
        const int key = ReadColumns(rows, Statements::reportKinds);
        if (count == 0) *firstKey = key;
      }
    }
    return count;
  }

  QHash<int, Thresholds> ReadThresholds(int siteKey) {
    QHash<int, Thresholds> table;
    Connection db(Paths::thresholds);
    Query rows(db, Statements::selectSiteThresholds);
    rows.Bind(siteKey);
    while (rows.Step()) {
      const Thresholds values{{Float(rows, 2), Float(rows, 3), Float(rows, 4)}};
      const int key = rows.Int(0);
      if constexpr (buildsValues) table.insert(key, values);
    }
    return table;
  }

  static float Float(Query& row, int column) { return static_cast<float>(row.Real(column)); }

  std::unique_ptr<Record> BuildRecord(Query& row, const QHash<int, Thresholds>& table) {
    auto record = std::make_unique<Record>();
    record->key = row.Int(0);
    record->site = row.String(1);
    record->sector = row.String(2);
    record->position = row.String(3);
    record->azimuthOffset = Float(row, 4);
    for (int axis = 0; axis < 3; ++axis) {
      record->target[axis] = Float(row, 5 + axis);
      record->location[axis] = row.Real(8 + axis);
      record->measured[axis] = Float(row, 12 + axis);
    }
    record->fixTime = QDateTime::currentDateTime();
    record->time = QDateTime::fromSecsSinceEpoch(static_cast<unsigned int>(row.Int(11)));
    record->height = row.Real(15);
    record->heightType = row.Int(16);
    record->tiltInversion = row.Int(17) > 0;
    record->note = row.String(18);
    record->rollPrecision = row.Int(19);
    const Thresholds thresholds = table.value(record->key);
    for (int axis = 0; axis < 3; ++axis) record->thresholds[axis] = thresholds.values[axis];
    return record;
  }

  static Associated AssociatedKeys(Connection& db, const char* sql, int key) {
    Associated keys;
    Query rows(db, sql);
    rows.Bind(key);
    while (rows.Step()) {
      keys.orientation.push_back(rows.Int(0));
      keys.orientation.push_back(rows.Int(1));
      keys.geolocation.push_back(rows.Int(2));
      keys.height.push_back(rows.Int(3));
    }
    return keys;
  }

  static void DeleteAssociated(Connection& db, const Associated& keys) {
    const auto deleteAll = [&db](const std::vector<int>& list, const char* sql) {
      for (const int key : list) Query(db, sql).Bind(key).Step();
    };
    deleteAll(keys.orientation, Statements::deleteOrientation);
    deleteAll(keys.geolocation, Statements::deleteGeolocation);
    deleteAll(keys.height, Statements::deleteHeight);
  }

  void SaveRow(const char* path, const char* sql, const char* kinds) {
    Connection db(path);
    Query row(db, sql);
    for (const char* kind = kinds; *kind != '\0'; ++kind) {
      switch (*kind) {
        case 'd':
          row.Bind(sample_.azimuthOffset);
          break;
        case 't':
          row.Bind(sample_.sector);
          break;
        default:
          row.Bind(1);
      }
    }
    row.Step();
  }

  void RestoreRow(const char* path, const char* sql, const char* kinds) {
    Connection db(path);
    db.Execute("BEGIN TRANSACTION;");
    ReadRow(db, sql, kinds);
    db.Execute("END TRANSACTION;");
  }

  static bool ReadRow(Connection& db, const char* sql, const char* kinds) {
    Query row(db, sql);
    if (!row.Step()) return false;
    ReadColumns(row, kinds);
    return true;
  }

  /// Reads every column of a row and drops it; returns column 0 if that is an integer.
  static int ReadColumns(Query& row, const char* kinds) {
    int first = 0;
    for (int column = 0; kinds[column] != '\0'; ++column) {
      if (kinds[column] == 'd') row.Real(column);
      if (kinds[column] == 't') row.String(column);
      if (kinds[column] != 'i') continue;
      const int value = row.Int(column);
      if (column == 0) first = value;
    }
    return first;
  }

  const Search search_;
  const SchemaTexts texts_ = SchemaVersion7();
  const Sample<Text> sample_;
};
