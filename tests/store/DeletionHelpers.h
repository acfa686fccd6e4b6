#pragma once

#include <QRegularExpression>
#include <QVector>

#include "tests/store/DeletionScene.h"

// The deletion helpers on files with a few rows, and no alignments unless they are asked for.
class DeletionHelpersTest : public CreatedStoreTest {
 protected:
  DeletionHelpersTest() {
    RunSql(Main(), QStringLiteral("INSERT INTO Sites VALUES (1, 'one'), (4294967297, 'wide');"
                                  "INSERT INTO Paths VALUES (1, 'one'), (4294967297, 'wide');"
                                  "INSERT INTO Orientation VALUES (11,0,0,0), (12,0,0,0), (13,0,0,0);"
                                  "INSERT INTO Geolocation VALUES (21,0,0,0), (22,0,0,0);"
                                  "INSERT INTO Height VALUES (31,0,1), (32,0,1)"));
    SqliteCalls::Reset();
  }

  // Alignment rows with these keys, whatever they refer to.
  void InsertAlignments() {
    RunSql(Main(), QStringLiteral(
                       "INSERT INTO AntennaAlignment (AntennaAlignmentKey, SiteKey, SectorName, "
                       "AntennaPosition, AzimuthOffsetDegrees, TargetOrientationKey, LocationKey, "
                       "LinuxTimeUTC, MeasuredOrientationKey, SiteHeightKey) VALUES "
                       "(5, 1, '', '', 0, 101, 102, 0, 103, 104), (6, 1, '', '', 0, 201, 202, 0, -203, "
                       "4294967500), (7, 2, '', '', 0, 301, 302, 0, 303, 304);"
                       "INSERT INTO PathAlignment (PathAlignmentKey, PathKey, SectorName, AntennaPosition, "
                       "AzimuthOffset, PathLocationKey, TargetOrientationKey, LocationKey, LinuxTimeUTC, "
                       "MeasuredOrientationKey, SiteHeightKey) VALUES "
                       "(5, 1, '', '', 0, 101, 102, 103, 0, 104, 105), (6, 1, '', '', 0, 201, 202, 203, 0, "
                       "-204, 4294967501), (7, 2, '', '', 0, 301, 302, 303, 0, 304, 305)"));
  }

  // The calls of a kind that were recorded since.
  static QStringList Calls(const char* call) {
    return SqliteCalls::TakeTrace().filter(QRegularExpression(QStringLiteral("^%1 ").arg(call)));
  }
  QStringList Keys(const char* table, const char* column) {
    return Rows(Main(), QStringLiteral("SELECT %2 FROM %1 ORDER BY 1").arg(table, column));
  }

  bool DeleteKeys(sqlite3* db, QVector<int>* keys) {
    return Call(&Operations::GenericBatchKeyDelete, db, keys, "Orientation", "OrientationKey");
  }

  // Both look-ups of lists.
  using Lookup = bool (AlignmentDatabaseStore::*)(sqlite3*, long long, QVector<int>*, QVector<int>*,
                                                  QVector<int>*);

  QVector<int> orientation_;
  QVector<int> geolocation_;
  QVector<int> height_;
};
