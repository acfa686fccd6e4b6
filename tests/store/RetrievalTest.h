#pragma once

#include <sqlite3.h>

#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/store/SavedRows.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"

// All that a record holds, as one text. The parts of both kinds:
//   key | identifier, … | target | location | measured | height, type | time | options
inline QString Described(const IOrientation& orientation) {
  return QStringLiteral("%1,%2,%3")
      .arg(orientation.AzimuthDegrees())
      .arg(orientation.TiltDegrees())
      .arg(orientation.RollDegrees());
}
inline QString Described(const IGeolocation& location) {
  return QStringLiteral("%1,%2,%3")
      .arg(location.LatitudeDegreesNorth())
      .arg(location.LongitudeDegreesEast())
      .arg(location.ElevationMeters());
}
inline QString Described(const IMeasurementOptions& options) {
  return QStringLiteral("%1,%2,'%3',%4,%5,%6,%7,%8")
      .arg(options.AzimuthOffset())
      .arg(options.TiltInversionEnabled() ? "inverted" : "upright", options.Note())
      .arg(options.RollPrecision())
      .arg(options.AzimuthThreshold())
      .arg(options.TiltThreshold())
      .arg(options.RollThreshold())
      .arg(options.PathLengthThreshold());
}
template <typename Record>
QString DescribedRecord(const Record& record, unsigned int key, const QString& names,
                        const IOrientation& target) {
  bool valid = false;
  const QString height = QStringLiteral("%1,%2")
                             .arg(record.GetHeight()->HeightInMeters(&valid))
                             .arg(static_cast<int>(record.GetHeight()->HeightType()));
  EXPECT_TRUE(valid);
  return QStringList{QString::number(key),
                     names,
                     Described(target),
                     Described(*record.GetGeolocation()),
                     Described(*record.GetMeasuredOrientation()),
                     height,
                     QString::number(record.GetMeasurementTime().toSecsSinceEpoch()),
                     Described(*record.GetMeasurementOptions())}
      .join('|');
}
inline QString Described(const IAntennaAlignmentReportData& record) {
  const ISiteInformation& site = *record.GetSiteInformation();
  return DescribedRecord(record, record.AntennaAlignmentKey(),
                         site.SiteIdentifier() + ',' + site.SectorName() + ',' + site.AntennaPosition(),
                         *site.TargetOrientation());
}
inline QString Described(const IPathAlignmentReportData& record) {
  const IPathInformation& path = *record.GetPathInformation();
  return DescribedRecord(record, record.PathAlignmentKey(),
                         path.PathIdentifier() + ',' + Described(*path.PathLocation()),
                         *record.GetTargetOrientation());
}
template <typename Record>
QStringList DescribedAll(const QVector<Record*>* records) {
  QStringList texts;
  for (const Record* record : *records) texts.append(Described(*record));
  return texts;
}

class RetrievalTest : public CreatedStoreTest {
 protected:
  using SiteReport = std::unique_ptr<AntennaAlignmentPdfReportData>;
  using PathReport = std::unique_ptr<PathAlignmentPdfReportData>;

  SiteReport GetSite(QString identifier) {
    return SiteReport(store_->GetAlignmentReportDataForSite(identifier));
  }
  QStringList Site(const QString& identifier) {
    const SiteReport report = GetSite(identifier);
    return report == nullptr ? QStringList{"null"} : DescribedAll(report->AlignmentData());
  }
  PathReport GetPath(const QString& identifier) {
    return PathReport(store_->GetPathAlignmentReportDataForSite(identifier));
  }
  // Reads a path without failures: the statement of each file stays open, and so does its connection.
  QStringList Path(const QString& identifier) {
    const PathReport report = GetPath(identifier);
    ExpectLeftOpen(1);
    return report == nullptr ? QStringList{"null"} : DescribedAll(report->PathData());
  }

  // What so many path retrievals without failures have left open, and no line but those of its connections.
  void ExpectLeftOpen(int retrievals) {
    QStringList lines;
    while (lines.size() < retrievals * (Version().HasThresholdsFile() ? 2 : 1)) lines << refusedClose;
    leaked_ += static_cast<int>(lines.size());
    SqliteLeakGuard::ExpectLeaked(leaked_, leaked_);
    EXPECT_EQ(Lines(), lines);
  }

  // The options of sample 2 as they come back from an alignment whose thresholds are these.
  QString SiteOptions(const QString& thresholds) const {
    return QStringLiteral("2.375,%1,'%2',%3,%4,-1")
        .arg(Version().HasTiltInversion() ? "inverted" : "upright", Version().HasSiteNote() ? "note 2" : "",
             Version().HasRollPrecision() ? "12" : "0", thresholds);
  }
  QString PathOptions(const QString& azimuthAndTilt, const QString& pathLength) const {
    return QStringLiteral("2.375,%1,'%2',0,%3,0,%4")
        .arg(Version().HasTiltInversion() ? "inverted" : "upright", Version().HasPathNote() ? "note 2" : "",
             azimuthAndTilt, pathLength);
  }
  // Sample 2 as the first record of its file.
  QString Site2(const QString& thresholds) const {
    return "1|Site 2,Sector 2,Position "
           "2|92.5,-7.75,5.125|53.5,-2.125,37.25|122.5,-5.25,3.75|24.5,3|1500000002|" +
           SiteOptions(thresholds);
  }
  QString Path2(const QString& azimuthAndTilt, const QString& pathLength) const {
    return "1|Path "
           "2,50.75,13.625,521.5|202.25,-9.5,7.875|53.5,-2.125,37.25|122.5,-5.25,3.75|24.5,3|1500000002|" +
           PathOptions(azimuthAndTilt, pathLength);
  }
  QString Site2WithThresholds() const {
    return Site2(Version().HasThresholdsFile() ? "4.5,6.5,8.5" : "0,0,0");
  }
  QString Path2WithThresholds() const {
    return Version().HasThresholdsFile() ? Path2("4.5,6.5", "10.5") : Path2("0,0", "-1");
  }

  static constexpr char refusedClose[] =
      "sqlite3_close failed with  5 unable to close due to unfinalized statements or unfinished backups";
  static constexpr char cannotOpen[] = "Can't open database: rval= 14 : unable to open database file";
  static constexpr char bindFailed[] = "SQL bind failed with  7 : out of memory";

 private:
  int leaked_ = 0;
};

// One way in which a retrieval fails: the calls that do, what is logged, and what comes back.
struct RetrievalFailure {
  const char* name;
  std::vector<Fault> faults;
  QStringList lines;
  QStringList records;  // "null" where there is no container
  int leakedConnections = 0;
  int leakedStatements = 0;
};
