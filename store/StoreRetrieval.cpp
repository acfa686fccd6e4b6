// Reading the alignments of a site or a path back into report containers.
#include <sqlite3.h>

#include <QHash>
#include <memory>

#include "core/Connection.h"
#include "core/DebugLog.h"
#include "core/Statement.h"
#include "model/AntennaAlignmentReportData.h"
#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/PathAlignmentReportData.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/AlignmentDatabaseStore.h"
#include "store/StoreDescription.h"

namespace {

/// The thresholds of one alignment: azimuth, tilt, and roll (site) or path length (path).
struct Thresholds {
  float azimuth;
  float tilt;
  float third;
};

/// By alignment key. Of two rows with one key the later counts.
using ThresholdTable = QHash<long long, Thresholds>;

/// Calls `row` for every row. Only "done" ends the loop, so a step that keeps failing is repeated without
/// end, as it always has been.
template <typename Row>
void ForEachRow(Statement* statement, Row row) {
  for (int result = statement->Step(); result != SQLITE_DONE; result = statement->Step()) {
    if (result == SQLITE_ROW) row();
  }
}

void ReadThresholds(Statement* statement, ThresholdTable* table) {
  ForEachRow(statement, [&] {
    table->insert(statement->IntColumn(0),
                  {statement->FloatColumn(2), statement->FloatColumn(3), statement->FloatColumn(4)});
  });
}

/// The current time as QDateTime::currentDateTime() tells it, asked for every record. Making it local asks
/// the system for its time zone anew, which takes longer than reading a row, so that is done once a
/// millisecond: within one the answer is the same.
class Clock {
 public:
  QDateTime Now() {
    const qint64 milliseconds = QDateTime::currentMSecsSinceEpoch();
    if (milliseconds != milliseconds_) {
      now_ = QDateTime::fromMSecsSinceEpoch(milliseconds);
      milliseconds_ = milliseconds;
    }
    return now_;
  }

 private:
  qint64 milliseconds_ = -1;
  QDateTime now_;
};

Geolocation* ReadLocation(const Statement& row, int column, Clock* clock) {
  return new Geolocation(row.DoubleColumn(column), row.DoubleColumn(column + 1), row.DoubleColumn(column + 2),
                         static_cast<GpsDatum>(0), clock->Now(), true);
}

Orientation* ReadOrientation(const Statement& row, int column) {
  return new Orientation(row.FloatColumn(column), row.FloatColumn(column + 1), row.FloatColumn(column + 2));
}

Height* ReadHeight(const Statement& row, int column) {
  return new Height(row.DoubleColumn(column), static_cast<HeightSource>(row.IntColumn(column + 1)));
}

QDateTime ReadTime(const Statement& row, int column) {
  return Sql::FromUnixUtc(static_cast<unsigned int>(row.IntColumn(column)));
}

IAntennaAlignmentReportData* ReadSiteRecord(const Statement& row, const QString& siteIdentifier,
                                            const StoreDescription& store, const ThresholdTable& table,
                                            Clock* clock) {
  const int key = row.IntColumn(0);
  const Thresholds thresholds = table.value(key, {0.0F, 0.0F, 0.0F});
  const bool tiltInversion = store.hasTiltInversion && row.IntColumn(17) > 0;
  const QString note = store.hasSiteNote ? row.TextColumn(18) : QString();
  const int rollPrecision = store.hasRollPrecision ? row.IntColumn(19) : 0;
  auto* site = new SiteInformation(siteIdentifier, row.TextColumn(2), row.TextColumn(3), row.FloatColumn(5),
                                   row.FloatColumn(6), row.FloatColumn(7));
  auto* options =
      new MeasurementOptions(row.FloatColumn(4), tiltInversion, thresholds.azimuth, thresholds.tilt,
                             thresholds.third, -1.0F, note, static_cast<unsigned long>(rollPrecision));
  auto* record = new AntennaAlignmentReportData(static_cast<unsigned int>(key), site,
                                                ReadLocation(row, 8, clock), ReadOrientation(row, 12),
                                                ReadHeight(row, 15), ReadTime(row, 11), options);
  record->TakeOwnership();
  return record;
}

// Columns 2 and 3, sector and antenna position, are not read: a path has neither.
IPathAlignmentReportData* ReadPathRecord(const Statement& row, const StoreDescription& store,
                                         const ThresholdTable& table, Clock* clock) {
  const int key = row.IntColumn(0);
  const Thresholds thresholds = table.value(key, {0.0F, 0.0F, -1.0F});
  const bool tiltInversion = store.hasTiltInversion && row.IntColumn(20) > 0;
  const QString note = store.hasPathNote ? row.TextColumn(21) : QString();
  auto* path = new PathInformation(row.TextColumn(1), row.DoubleColumn(11), row.DoubleColumn(12),
                                   row.DoubleColumn(13));
  auto* options = new MeasurementOptions(row.FloatColumn(4), tiltInversion, thresholds.azimuth,
                                         thresholds.tilt, 0.0F, thresholds.third, note, 0);
  auto* record = new PathAlignmentReportData(
      static_cast<unsigned int>(key), path, ReadLocation(row, 8, clock), ReadOrientation(row, 15),
      ReadHeight(row, 18), ReadOrientation(row, 5), ReadTime(row, 14), options);
  record->TakeOwnership();
  return record;
}

using SiteRecords = QVector<IAntennaAlignmentReportData*>;
using PathRecords = QVector<IPathAlignmentReportData*>;

PathAlignmentPdfReportData* PathContainer(const QString& pathIdentifier, PathRecords* records) {
  if (records == nullptr) return nullptr;
  QString fileBase = pathIdentifier + QLatin1String("-M-Report");
  return new PathAlignmentPdfReportData(pathIdentifier, fileBase, records);
}

}  // namespace

AntennaAlignmentPdfReportData* AlignmentDatabaseStore::GetAlignmentReportDataForSite(
    QString& siteIdentifier) {
  const StoreDescription& store = Description();
  Connection db(OpenDatabase(false));
  ThresholdTable table;
  if (store.hasThresholdsFile) {
    long long siteKey = 0;
    if (db) GetIDForSiteIdentifier(db, siteIdentifier, &siteKey);
    const Connection thresholds(OpenSecondDatabase(false));
    Statement statement(thresholds,
                        "SELECT AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold, TiltThreshold, "
                        "RollThreshold FROM AntennaAlignmentThresholds WHERE (SiteIdentifier = ?)",
                        "Fetch Threshold Report Data for Site");
    if (statement && statement.WideKey(siteKey, "SQL bind failed with ").Bound()) {
      ReadThresholds(&statement, &table);
    }
  }
  if (!db) return nullptr;
  Statement rows(db, store.texts.selectSiteReports, "Fetch Report Data for Site");
  if (!rows || !rows.Text(siteIdentifier, "SQL bind failed with ").Bound()) return nullptr;
  auto records = std::make_unique<SiteRecords>();
  Clock clock;
  QString storedIdentifier;
  ForEachRow(&rows, [&] {
    // Identifiers are unique, so all rows are of one site: its records share one text.
    if (records->isEmpty()) storedIdentifier = rows.TextColumn(1);
    records->append(ReadSiteRecord(rows, storedIdentifier, store, table, &clock));
  });
  rows.Finalize();
  db.Close();
  QString fileBase = siteIdentifier + QLatin1String("-A-Report");
  return new AntennaAlignmentPdfReportData(siteIdentifier, fileBase, records.release());
}

// Unlike the site's, neither statement is finalised: both connections refuse to close and stay open. That
// is required, and costs a connection a call to each file.
PathAlignmentPdfReportData* AlignmentDatabaseStore::GetPathAlignmentReportDataForSite(
    QString pathIdentifier) {
  const StoreDescription& store = Description();
  const Connection db(OpenDatabase(false));
  ThresholdTable table;
  PathRecords* records = nullptr;
  if (store.hasThresholdsFile) {
    long long pathKey = 0;
    if (db) GetIDForPathIdentifier(db, pathIdentifier, &pathKey);
    const Connection thresholds(OpenSecondDatabase(false));
    if (thresholds) {
      Statement statement(thresholds,
                          "SELECT PathAlignmentKey, PathKey, AzimuthThreshold, TiltThreshold, "
                          "PathLengthThreshold  FROM PathAlignmentThresholds WHERE (PathKey = ?)",
                          "Fetch Threshold Report Data for Path");
      if (!statement) {
        LogDebug("SQL Statement failed");
      } else if (statement.WideKey(pathKey, "SQL bind failed with ").Bound()) {
        records = new PathRecords;
        ReadThresholds(&statement, &table);
      }
      statement.LeaveOpen();
    }
  }
  if (!db) return PathContainer(pathIdentifier, records);
  Statement rows(db, store.texts.selectPathReports, "Fetch Report Data for Path");
  if (!rows) {
    LogDebug("SQL Statement failed");
  } else if (rows.Text(pathIdentifier, "SQL bind failed with ").Bound()) {
    if (records == nullptr) records = new PathRecords;
    Clock clock;
    ForEachRow(&rows, [&] { records->append(ReadPathRecord(rows, store, table, &clock)); });
  }
  rows.LeaveOpen();
  return PathContainer(pathIdentifier, records);
}
