#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <vector>

#include "bench/Sample.h"
#include "migration/AllConverters.h"
#include "schema/SchemaVersion7.h"

/// How the cleanup finds out whether a key is referred to. It is required to search linearly; searching by
/// hash shows what that costs.
enum class Search { Linear, ByHash };

struct TableInOrder {
  const char* name;
  const char* SchemaTexts::*definition;
  const char* SchemaTexts::*copy;
};

constexpr TableInOrder tablesInOrder[] = {
    {"Sites", &SchemaTexts::sites, &SchemaTexts::sites},
    {"Paths", &SchemaTexts::paths, &SchemaTexts::paths},
    {"Orientation", &SchemaTexts::orientation, &SchemaTexts::orientation},
    {"Geolocation", &SchemaTexts::geolocation, &SchemaTexts::geolocation},
    {"Height", &SchemaTexts::height, &SchemaTexts::height},
    {"AntennaAlignment", &SchemaTexts::antennaAlignment, &SchemaTexts::antennaAlignmentCopy},
    {"PathAlignment", &SchemaTexts::pathAlignment, &SchemaTexts::pathAlignmentCopy},
    {"Preferences", &SchemaTexts::preferences, &SchemaTexts::preferences},
    {"SiteScreenContents", &SchemaTexts::siteScreenContents, &SchemaTexts::siteScreenContents},
    {"PathScreenContents", &SchemaTexts::pathScreenContents, &SchemaTexts::pathScreenContents},
};

/// What the conversion away from a version does to a table after copying it.
struct TableChange {
  int version;
  const char* table;
  const char* sql;
};

#define ADD(table, column) "ALTER TABLE TemporaryDB." table " ADD " column
constexpr TableChange tableChanges[] = {
    {1, "Preferences", ADD("Preferences", "AccelerometerCalibrated INTEGER NOT NULL DEFAULT 0")},
    {1, "Preferences", ADD("Preferences", "GNSSFileCRC INTEGER NOT NULL DEFAULT 0")},
    {1, "Preferences", ADD("Preferences", "TiltIndicatorEnabled INTEGER NOT NULL DEFAULT 1")},
    {1, "Preferences", ADD("Preferences", "RollIndicatorEnabled INTEGER NOT NULL DEFAULT 1")},
    {2, "AntennaAlignment", ADD("AntennaAlignment", "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0")},
    {2, "PathAlignment", ADD("PathAlignment", "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0")},
    {2, "Preferences", ADD("Preferences", "TiltInversionEnabled INTEGER NOT NULL DEFAULT 0")},
    {2, "Preferences", ADD("Preferences", "BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam'")},
    {3, "AntennaAlignment", ADD("AntennaAlignment", "Note TEXT NOT NULL DEFAULT ''")},
    {3, "Preferences", ADD("Preferences", "Language INTEGER NOT NULL DEFAULT 0")},
    {4, "AntennaAlignment", ADD("AntennaAlignment", "RollPrecision INTEGER NOT NULL DEFAULT 0")},
    {4, "Preferences", ADD("Preferences", "RollPrecision INTEGER NOT NULL DEFAULT 0")},
    {5, "Height", "UPDATE TemporaryDB.Height SET HeightType = 3 WHERE HeightType=1"},
    {5, "Preferences", ADD("Preferences", "GeoidFormat INTEGER NOT NULL DEFAULT 0")},
    {6, "PathAlignment", ADD("PathAlignment", "Note TEXT NOT NULL DEFAULT ''")},
    {6, "Preferences", ADD("Preferences", "UserTechId TEXT NOT NULL DEFAULT 'tbm001' ")},
};
#undef ADD

/// The texts of the versions that can be converted, from 1.
constexpr std::array sourceTexts{SchemaVersion1(), SchemaVersion2(), SchemaVersion3(),
                                 SchemaVersion4(), SchemaVersion5(), SchemaVersion6()};
static_assert(sourceTexts.size() == AllConverters::count, "every conversion has a source");

/// The conversion's calls over a driver: the same statements, attachments, checks and syncs.
template <typename Driver>
class PeerConversion {
  using Connection = typename Driver::Connection;
  using Query = typename Driver::Query;

 public:
  PeerConversion(int version, Search search)
      : version_(version), search_(search), texts_(sourceTexts.at(static_cast<std::size_t>(version - 1))) {}

  void Run() {
    {
      Connection db(Paths::main);
      CreateScratchFile();
      Attached(db, [&] { UpdateVersion(db); });
      for (const TableInOrder& table : tablesInOrder) Attached(db, [&] { CopyTable(db, table); });
      if (version_ > 1) Attached(db, [&] { DeleteUnused(db); });
      Attached(db, [&] { CheckIntegrity(db); });
      Attached(db, [&] { CheckForeignKeys(db); });
    }
    Swap();
  }

 private:
  struct Keys {
    std::vector<int> list;
    std::unordered_set<int> set;
  };

  template <typename Work>
  static void Attached(Connection& db, Work work) {
    db.Execute("ATTACH DATABASE '/opt/tarnbeam/database/TemporaryDB.sqlite' as TemporaryDB");
    work();
    db.Execute("DETACH DATABASE TemporaryDB");
  }

  static void CreateScratchFile() {
    unlink(Paths::scratch);
    Close(open(Paths::scratch, O_RDWR | O_CREAT | O_CLOEXEC, 0644));
  }

  static void Close(int fd) {
    if (fd < 0 || close(fd) != 0) throw std::runtime_error("cannot open a file");
  }

  void UpdateVersion(Connection& db) {
    db.Execute("CREATE TABLE IF NOT EXISTS TemporaryDB.Version ( VersionNumber INTEGER NOT NULL)");
    Query(db, "INSERT OR REPLACE INTO TemporaryDB.Version (RowID,VersionNumber) values (1,?)")
        .Bind(version_ + 1)
        .Step();
  }

  void CopyTable(Connection& db, const TableInOrder& table) {
    const std::string name = table.name;
    db.Execute((std::string("CREATE TABLE IF NOT EXISTS TemporaryDB.") + texts_.*table.copy).c_str());
    db.Execute(("INSERT INTO TemporaryDB." + name + " SELECT * FROM main." + name).c_str());
    for (const TableChange& change : tableChanges) {
      if (change.version == version_ && name == change.table) db.Execute(change.sql);
    }
    if (version_ == 1 && name == "Preferences") CorrectPreferences(db);
  }

  static void CorrectPreferences(Connection& db) {
    {
      Query row(db,
                "SELECT AccelerometerXOffset, AccelerometerYOffset, AccelerometerXGain, "
                "AccelerometerZOffset, AccelerometerZGain FROM TemporaryDB.Preferences WHERE (RowID=1) ");
      if (row.Step()) {
        for (int column = 0; column < 5; ++column) row.Real(column);
      }
    }
    Query(db, "UPDATE TemporaryDB.Preferences SET  AccelerometerCalibrated=? WHERE(RowID=1)").Bind(0).Step();
    Query(db, "UPDATE TemporaryDB.Preferences SET  AutoShutoffDelay=?  WHERE(RowID=1)").Bind(1).Step();
  }

  void DeleteUnused(Connection& db) {
    Keys orientation;
    Keys geolocation;
    Keys height;
    Keys site;
    Keys path;
    ReadKeys(db,
             "SELECT TargetOrientationKey, LocationKey, MeasuredOrientationKey, SiteHeightKey, SiteKey "
             "FROM TemporaryDB.AntennaAlignment",
             {&orientation, &geolocation, &orientation, &height, &site});
    ReadKeys(db,
             "SELECT  TargetOrientationKey, LocationKey, MeasuredOrientationKey, PathLocationKey, "
             "SiteHeightKey, PathKey FROM TemporaryDB.PathAlignment",
             {&orientation, &geolocation, &orientation, &geolocation, &height, &path});
    DeleteUnusedOf(db, orientation, "SELECT OrientationKey FROM TemporaryDB.Orientation",
                   "DELETE FROM TemporaryDB.Orientation WHERE OrientationKey=?");
    DeleteUnusedOf(db, geolocation, "SELECT GeolocationKey FROM TemporaryDB.Geolocation",
                   "DELETE FROM TemporaryDB.Geolocation WHERE GeolocationKey=?");
    DeleteUnusedOf(db, height, "SELECT HeightKey FROM TemporaryDB.Height",
                   "DELETE FROM TemporaryDB.Height WHERE HeightKey=?");
    DeleteUnusedOf(db, site, "SELECT SiteKey FROM TemporaryDB.Sites",
                   "DELETE FROM TemporaryDB.Sites WHERE SiteKey=?");
    DeleteUnusedOf(db, path, "SELECT PathKey FROM TemporaryDB.Paths",
                   "DELETE FROM TemporaryDB.Paths WHERE PathKey=?");
  }

  void ReadKeys(Connection& db, const char* sql, std::initializer_list<Keys*> columns) {
    Query rows(db, sql);
    while (rows.Step()) {
      int column = 0;
      for (Keys* keys : columns) {
        const int key = rows.Int(column++);
        if (search_ == Search::ByHash) {
          keys->set.insert(key);
        } else {
          keys->list.push_back(key);
        }
      }
    }
  }

  bool Contains(const Keys& keys, int key) const {
    if (search_ == Search::ByHash) return keys.set.count(key) != 0;
    return std::find(keys.list.begin(), keys.list.end(), key) != keys.list.end();
  }

  void DeleteUnusedOf(Connection& db, const Keys& referenced, const char* select, const char* deletion) {
    std::vector<int> unused;
    {
      Keys keys;
      Query rows(db, select);
      while (rows.Step()) keys.list.push_back(rows.Int(0));
      for (const int key : keys.list) {
        if (!Contains(referenced, key)) unused.push_back(key);
      }
    }
    for (const int key : unused) Query(db, deletion).Bind(key).Step();
  }

  static void CheckIntegrity(Connection& db) {
    Query row(db, "PRAGMA TemporaryDB.integrity_check");
    bool intact = false;
    while (row.Step()) intact = intact || QString(row.String(0)) == QLatin1String("ok");
    if (!intact) throw std::runtime_error("integrity check failed");
  }

  static void CheckForeignKeys(Connection& db) {
    Query row(db, "PRAGMA TemporaryDB.foreign_key_check");
    if (row.Step()) throw std::runtime_error("foreign key check failed");
  }

  static void Sync(const char* path, int flags) {
    const int fd = open(path, flags | O_CLOEXEC);
    if (fsync(fd) != 0) throw std::runtime_error("cannot sync a file");
    Close(fd);
  }

  static void Swap() {
    Sync(Paths::scratch, O_RDONLY);
    if (std::rename(Paths::scratch, Paths::main) != 0) throw std::runtime_error("cannot swap the files");
    Sync(Paths::folder, O_RDONLY | O_DIRECTORY);
  }

  const int version_;
  const Search search_;
  const SchemaTexts texts_;
};
