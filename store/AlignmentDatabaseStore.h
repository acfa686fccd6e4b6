#pragma once

#include "core/AlignmentDatabase.h"

struct StoreIdentity;

/// Every procedure of the stores, once. What differs between schema versions is the constant description
/// that is found through Version(); a concrete store adds its constructor, Version(), Open(), Create() and
/// the virtual destructor through which it is destroyed.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseStore : public AlignmentDatabase {
 public:
  using AlignmentDatabase::AlignmentDatabase;

  /// Creates the tables that the store's files lack, and writes Version() into the main file. Existing tables
  /// and their rows stay as they are: a file of another version gets no columns, only the number, so it has
  /// to be converted instead. False if a step failed; the file it belongs to is then removed, whatever it
  /// held.
  bool CreateTables();

  IAntennaAlignmentReportData* SaveAlignmentReportData(ISiteInformation* site, IGeolocation* location,
                                                       IOrientation* measured, IHeight* height,
                                                       QDateTime time, IMeasurementOptions* options) override;
  IPathAlignmentReportData* SavePathReportData(IPathInformation* path, IGeolocation* location,
                                               IOrientation* target, IOrientation* measured, IHeight* height,
                                               QDateTime time, IMeasurementOptions* options) override;
  AntennaAlignmentPdfReportData* GetAlignmentReportDataForSite(QString& siteIdentifier) override;
  PathAlignmentPdfReportData* GetPathAlignmentReportDataForSite(QString pathIdentifier) override;
  bool SavePreferences(IPreferencesModel* model) override;
  bool RestorePreferences(IPreferencesModel* model) override;
  QVector<QString> GetSiteIdentifiers() override;
  QVector<QString> GetPathIdentifiers() override;
  bool DeleteReportsBySiteAndSector(QString& siteIdentifier, QString& sectorName) override;
  bool DeleteReportsByPath(QString& pathIdentifier) override;
  bool DeleteReportsBySiteAndIndex(QString& siteIdentifier, int index) override;
  bool DeleteReportsByPathAndIndex(QString& pathIdentifier, int index) override;
  bool StoreInputContents(IAlignerModel* model) override;
  bool RestoreInputContents(IAlignerModel* model) override;
  void Close() override;

 protected:
  /// @{
  /// Row writers and look-ups. Each works on an open connection and reports success; binds and prepares that
  /// fail are logged. A look-up of an unknown identifier succeeds with key 0. A key that is found or made is
  /// written through its pointer.
  bool GetIDForSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey);
  bool SaveSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey);
  bool GetIDForPathIdentifier(sqlite3* db, QString& identifier, long long* pathKey);
  bool SavePathIdentifier(sqlite3* db, QString& identifier, long long* pathKey);
  bool SaveOrientation(sqlite3* db, IOrientation* orientation, long long* key);
  bool SaveGeolocation(sqlite3* db, IGeolocation* location, long long* key);
  bool SaveHeight(sqlite3* db, IHeight* height, long long* key);
  bool SaveAntennaAlignment(sqlite3* db, long long siteKey, QString& sectorName, QString& antennaPosition,
                            float azimuthOffset, long long targetOrientationKey,
                            long long measuredOrientationKey, long long locationKey, long long heightKey,
                            QDateTime& time, long long* alignmentKey, bool tiltInversionEnabled, QString note,
                            int rollPrecision);
  bool SaveAntennaAlignmentThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey,
                                      long long siteKey, double azimuthThreshold, double tiltThreshold,
                                      double rollThreshold);
  bool SavePathAlignment(sqlite3* db, long long pathKey, float azimuthOffset, long long pathLocationKey,
                         long long targetOrientationKey, long long measuredOrientationKey,
                         long long locationKey, long long heightKey, QDateTime& time, long long* alignmentKey,
                         bool tiltInversionEnabled, QString note);
  bool SavePathAlignmentThresholds(sqlite3* db, long long alignmentKey, long long* thresholdKey,
                                   long long pathKey, float azimuthThreshold, float tiltThreshold,
                                   float pathLengthThreshold);
  /// @}

  /// @{
  /// Deletion helpers, on an open connection. Keys are appended to the lists. Null is refused; a bind or
  /// prepare that fails is logged and gives false, and a look-up's step that fails is repeated without end.
  /// DeleteSiteByKey() and DeletePathByKey() repeat a failing step as well, count a delete that cannot be
  /// prepared as done, and leave the statement open if its bind fails.
  bool DeleteSiteByKey(sqlite3* db, long long* siteKey);
  bool DeletePathByKey(sqlite3* db, long long* pathKey);
  bool GetSingleSiteMeasurementKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                                    long long* measuredOrientationKey, long long* locationKey,
                                    long long* siteHeightKey);
  bool GetSinglePathMeasurementKeys(sqlite3* db, long long alignmentKey, long long* targetOrientationKey,
                                    long long* measuredOrientationKey, long long* pathLocationKey,
                                    long long* locationKey, long long* siteHeightKey);
  bool GetAllRelatedSiteKeys(sqlite3* db, long long siteKey, QVector<int>* orientationKeys,
                             QVector<int>* geolocationKeys, QVector<int>* heightKeys);
  bool GetAllRelatedPathKeys(sqlite3* db, long long pathKey, QVector<int>* orientationKeys,
                             QVector<int>* geolocationKeys, QVector<int>* heightKeys);
  bool GenericBatchKeyDelete(sqlite3* db, QVector<int>* keys, const char* table, const char* column);
  bool DeleteAssociatedRecordsByKeys(sqlite3* db, QVector<int>* orientationKeys,
                                     QVector<int>* geolocationKeys, QVector<int>* heightKeys);
  /// @}

  /// @{
  /// The two input screens, on an open connection. Null is refused; apart from that, only
  /// SaveCurrentSiteInformation() can be false. Binds and prepares that fail are logged.
  bool SaveCurrentSiteInformation(sqlite3* db, IAlignerModel* model);
  bool SaveCurrentPathInformation(sqlite3* db, IAlignerModel* model);
  bool RestoreCurrentSiteInformation(sqlite3* db, IAlignerModel* model);
  bool RestoreCurrentPathInformation(sqlite3* db, IAlignerModel* model);
  /// @}

 private:
  friend struct StoreIdentity;
};
