#include "store/StoreRetrieval.h"

#include <sqlite3.h>

#include <QHash>
#include <memory>

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
#include "schema/SchemaVersion7.h"
#include "store/StoreRows.h"

namespace {

/// The thresholds of one alignment: azimuth, tilt, and roll (site) or path length (path).
struct Thresholds {
  float azimuth;
  float tilt;
  float third;
};

/// By alignment key. Of two rows with the same key the later one counts.
using ThresholdTable = QHash<long long, Thresholds>;

void ReadThresholds(Statement* statement, ThresholdTable* table) {
  statement->StepUntilDone([&] {
    table->insert(statement->IntColumn(0),
                  {statement->FloatColumn(2), statement->FloatColumn(3), statement->FloatColumn(4)});
  });
}

/// The current time as QDateTime::currentDateTime() gives it, needed for every record. Making it local asks
/// the system for its time zone anew, which takes longer than reading a row, so that is done once a
/// millisecond: within one millisecond the result is the same.
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
                                            const SchemaTexts& texts, const ThresholdTable& table,
                                            Clock* clock) {
  namespace Column = SiteReportColumn;
  const int key = row.IntColumn(Column::AlignmentKey);
  const Thresholds thresholds = table.value(key, {0.0F, 0.0F, 0.0F});
  const bool tiltInversion = texts.hasTiltInversion && row.IntColumn(Column::TiltInversion) > 0;
  const QString note = texts.hasSiteNote ? row.TextColumn(Column::Note) : QString();
  const int rollPrecision = texts.hasRollPrecision ? row.IntColumn(Column::RollPrecision) : 0;
  auto* site =
      new SiteInformation(siteIdentifier, row.TextColumn(Column::SectorName),
                          row.TextColumn(Column::AntennaPosition), row.FloatColumn(Column::TargetAzimuth),
                          row.FloatColumn(Column::TargetTilt), row.FloatColumn(Column::TargetRoll));
  auto* options = new MeasurementOptions(row.FloatColumn(Column::AzimuthOffset), tiltInversion,
                                         thresholds.azimuth, thresholds.tilt, thresholds.third, -1.0F, note,
                                         static_cast<unsigned long>(rollPrecision));
  auto* record = new AntennaAlignmentReportData(
      static_cast<unsigned int>(key), site, ReadLocation(row, Column::Latitude, clock),
      ReadOrientation(row, Column::MeasuredAzimuth), ReadHeight(row, Column::HeightInMeters),
      ReadTime(row, Column::Time), options);
  record->TakeOwnership();
  return record;
}

// Sector and antenna position are not read: a path has neither.
IPathAlignmentReportData* ReadPathRecord(const Statement& row, const SchemaTexts& texts,
                                         const ThresholdTable& table, Clock* clock) {
  namespace Column = PathReportColumn;
  const int key = row.IntColumn(Column::AlignmentKey);
  const Thresholds thresholds = table.value(key, {0.0F, 0.0F, -1.0F});
  const bool tiltInversion = texts.hasTiltInversion && row.IntColumn(Column::TiltInversion) > 0;
  const QString note = texts.hasPathNote ? row.TextColumn(Column::Note) : QString();
  auto* path = new PathInformation(
      row.TextColumn(Column::PathIdentifier), row.DoubleColumn(Column::FarEndLatitude),
      row.DoubleColumn(Column::FarEndLongitude), row.DoubleColumn(Column::FarEndElevation));
  auto* options =
      new MeasurementOptions(row.FloatColumn(Column::AzimuthOffset), tiltInversion, thresholds.azimuth,
                             thresholds.tilt, 0.0F, thresholds.third, note, 0);
  auto* record = new PathAlignmentReportData(
      static_cast<unsigned int>(key), path, ReadLocation(row, Column::Latitude, clock),
      ReadOrientation(row, Column::MeasuredAzimuth), ReadHeight(row, Column::HeightInMeters),
      ReadOrientation(row, Column::TargetAzimuth), ReadTime(row, Column::Time), options);
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

// Required behaviour: sites and paths share the label.
QVector<QString> Identifiers(const StoreIdentity& store, const char* sql) {
  QVector<QString> identifiers;
  const Connection db(store.OpenMain());
  if (!db) return identifiers;
  Statement statement(db, sql, "Fetch Report Data for Site");
  statement.StepUntilDone([&] { identifiers.append(statement.TextColumn(0)); });
  return identifiers;
}

}  // namespace

namespace StoreRetrieval {

QVector<QString> SiteIdentifiers(const StoreIdentity& store) {
  return Identifiers(store, "SELECT SiteIdentifier FROM Sites");
}

QVector<QString> PathIdentifiers(const StoreIdentity& store) {
  return Identifiers(store, "SELECT PathIdentifier FROM Paths");
}

AntennaAlignmentPdfReportData* SiteReports(const StoreIdentity& store, const QString& siteIdentifier) {
  Connection db(store.OpenMain());
  ThresholdTable table;
  if (store.texts.hasThresholdsFile) {
    long long siteKey = 0;
    if (db) StoreRows::FindSite(db, siteIdentifier, &siteKey);
    const Connection thresholds(store.OpenThresholds());
    Statement statement(thresholds,
                        "SELECT AntennaAlignmentKey, SiteIdentifier, AzimuthThreshold, TiltThreshold, "
                        "RollThreshold FROM AntennaAlignmentThresholds WHERE (SiteIdentifier = ?)",
                        "Fetch Threshold Report Data for Site");
    statement.WideKey(siteKey, "SQL bind failed with ");
    ReadThresholds(&statement, &table);
  }
  if (!db) return nullptr;
  Statement rows(db, store.texts.selectSiteReports, "Fetch Report Data for Site");
  if (!rows.Text(siteIdentifier, "SQL bind failed with ").Bound()) return nullptr;
  auto records = std::make_unique<SiteRecords>();
  Clock clock;
  QString storedIdentifier;
  rows.StepUntilDone([&] {
    // Identifiers are unique, so all rows are of one site: its records share one text.
    if (records->isEmpty()) storedIdentifier = rows.TextColumn(SiteReportColumn::SiteIdentifier);
    records->append(ReadSiteRecord(rows, storedIdentifier, store.texts, table, &clock));
  });
  rows.Finalize();
  db.Close();
  QString fileBase = siteIdentifier + QLatin1String("-A-Report");
  return new AntennaAlignmentPdfReportData(siteIdentifier, fileBase, records.release());
}

// Required behaviour: unlike the site's, neither statement is finalised. Both connections refuse to close and
// stay open, which costs each call one connection per file.
PathAlignmentPdfReportData* PathReports(const StoreIdentity& store, const QString& pathIdentifier) {
  const Connection db(store.OpenMain());
  ThresholdTable table;
  PathRecords* records = nullptr;
  if (store.texts.hasThresholdsFile) {
    long long pathKey = 0;
    if (db) StoreRows::FindPath(db, pathIdentifier, &pathKey);
    const Connection thresholds(store.OpenThresholds());
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
    rows.StepUntilDone([&] { records->append(ReadPathRecord(rows, store.texts, table, &clock)); });
  }
  rows.LeaveOpen();
  return PathContainer(pathIdentifier, records);
}

}  // namespace StoreRetrieval
