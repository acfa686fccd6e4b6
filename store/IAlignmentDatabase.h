#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>

class AntennaAlignmentPdfReportData;
class IAlignerModel;
class IAntennaAlignmentReportData;
class IGeolocation;
class IHeight;
class IMeasurementOptions;
class IOrientation;
class IPathAlignmentReportData;
class IPathInformation;
class IPreferencesModel;
class ISiteInformation;
class PathAlignmentPdfReportData;

/// What an application asks of a store, whatever schema version its files have.
///
/// The order of the operations is binary interface. Objects passed in stay the caller's; objects returned
/// are the caller's to delete. Failures are results and debug lines, never exceptions. There is no
/// destructor here: a store is destroyed through its own class.
///
/// A transaction that cannot be committed, for example while another process reads the file, is logged and
/// changes no result. A delete of alignments or thresholds that is refused, for example while another process
/// writes, leaves its connection open until the process ends; if it was to be committed all the same, that
/// connection holds a lock on the file. An OperationGuard reports all of that, ends what is repeated without
/// end, and closes what stays open.
class IAlignmentDatabase {
 public:
  /// The schema version that the store writes.
  virtual unsigned int Version() = 0;

  /// Stores one site alignment with its thresholds.
  ///
  /// `measured` is the measured orientation; the target one comes from `site`. The record returned borrows
  /// all objects given, so they must outlive it. Null when `site`, `location`, `measured` or `height` is
  /// null, when the main file cannot be opened, when the alignment row could not be inserted (nothing is kept
  /// then), or when the thresholds could not be stored (the alignment stays in the main file). A failure
  /// between opening and the alignment row keeps what was written and returns a record with key 4294967295.
  /// `options` must not be null.
  virtual IAntennaAlignmentReportData* SaveAlignmentReportData(ISiteInformation* site, IGeolocation* location,
                                                               IOrientation* measured, IHeight* height,
                                                               QDateTime time,
                                                               IMeasurementOptions* options) = 0;

  /// Stores one path alignment with its thresholds; as SaveAlignmentReportData(), but only `path`,
  /// `location` and `measured` are tested at the start. Sector and antenna position are stored as "ZZZ".
  virtual IPathAlignmentReportData* SavePathReportData(IPathInformation* path, IGeolocation* location,
                                                       IOrientation* target, IOrientation* measured,
                                                       IHeight* height, QDateTime time,
                                                       IMeasurementOptions* options) = 0;

  /// Every alignment of a site, sorted by sector and antenna position; no record for an unknown site. The
  /// container owns its records, and they their objects. Null when the main file cannot be opened or
  /// queried. Thresholds that cannot be read are 0. A step that keeps failing is repeated without end.
  virtual AntennaAlignmentPdfReportData* GetAlignmentReportDataForSite(QString& siteIdentifier) = 0;

  /// Every alignment of a path, in the order of the file. On failure an empty container if the thresholds
  /// could be queried, else null. Every call leaves its connections open: their statements are not finalised,
  /// and the refused closes are logged.
  virtual PathAlignmentPdfReportData* GetPathAlignmentReportDataForSite(QString pathIdentifier) = 0;

  /// Stores all preferences. False when `model` is null, the main row was not written or the thresholds file
  /// cannot be opened; a failure of the path-length row alone still gives true.
  virtual bool SavePreferences(IPreferencesModel* model) = 0;

  /// Reads all preferences into `model`, notifying its observers in column order. The azimuth offset is never
  /// restored. False when `model` is null, when there is no stored row or it cannot be read, which leaves the
  /// model as it was, and when the thresholds file cannot be opened: by then the main file's values have been
  /// handed over.
  virtual bool RestorePreferences(IPreferencesModel* model) = 0;

  /// All site identifiers, each once, in the file's order; empty on failure. A step that keeps failing is
  /// repeated without end.
  virtual QVector<QString> GetSiteIdentifiers() = 0;

  /// All path identifiers; as GetSiteIdentifiers().
  virtual QVector<QString> GetPathIdentifiers() = 0;

  /// Deletes every alignment of the site, whatever its sector (`sectorName` is not read), what they refer to,
  /// the site, and their thresholds. Looking up what they refer to is repeated without end while it fails; so
  /// is deleting the site's row, as while an alignment names it. So it is for a path. True when the
  /// thresholds were deleted or their delete could not be prepared, else whether the main file was changed.
  virtual bool DeleteReportsBySiteAndSector(QString& siteIdentifier, QString& sectorName) = 0;

  /// Deletes every alignment of the path, what they refer to, the path, and their thresholds. Never rolls
  /// back: what was done before a failure stays. Always true.
  virtual bool DeleteReportsByPath(QString& pathIdentifier) = 0;

  /// Deletes the report that stands at `index` (from 0) in GetAlignmentReportDataForSite(), and what it
  /// refers to. The site stays, and so does the report's row in the thresholds file. False for an index out
  /// of range and when the main file cannot be read or opened, else as DeleteReportsBySiteAndSector().
  virtual bool DeleteReportsBySiteAndIndex(QString& siteIdentifier, int index) = 0;

  /// Deletes the report that stands at `index` (from 0) in GetPathAlignmentReportDataForSite(), what it
  /// refers to, and its thresholds. The path stays. The result is as for a site's report.
  virtual bool DeleteReportsByPathAndIndex(QString& pathIdentifier, int index) = 0;

  /// Keeps what is entered on the two input screens; an empty screen deletes what was kept for it, and a
  /// delete that keeps failing is repeated without end. False when the main file cannot be opened, the model
  /// is null or the site could not be written; then the path is not written.
  virtual bool StoreInputContents(IAlignerModel* model) = 0;

  /// Gives `model` new records of what was kept for the two screens; it takes ownership. If nothing was kept,
  /// the model stays as it was. False when the main file cannot be opened or the model is null.
  virtual bool RestoreInputContents(IAlignerModel* model) = 0;
};
