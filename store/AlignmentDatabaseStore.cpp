#include "store/AlignmentDatabaseStore.h"

#include <QFile>
#include <memory>
#include <type_traits>

#include "core/Watch.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/RecordDeletion.h"
#include "store/StoreDeletion.h"
#include "store/StoreIdentity.h"
#include "store/StorePreferences.h"
#include "store/StoreRetrieval.h"
#include "store/StoreRows.h"
#include "store/StoreSaving.h"
#include "store/StoreScreenContents.h"
#include "store/StoreTables.h"

namespace {

/// What `retrieve` returns, or null if a guard cut it short: positions in it would not be those of the
/// caller's list, and another report would be deleted.
template <typename Retrieve>
auto WholeReports(Retrieve retrieve) {
  const int loopsEnded = Watch::LoopsEnded();
  std::unique_ptr<std::remove_pointer_t<decltype(retrieve())>> reports(retrieve());
  if (Watch::LoopsEnded() != loopsEnded) reports.reset();
  return reports;
}

}  // namespace

StoreIdentity StoreIdentity::Of(AlignmentDatabaseStore* store) {
  const unsigned int version = store->Version();
  const StoreDescription& description = StoreDescription::Of(version);
  return {store->DatabasePath(), store->SecondDatabasePath(), version, description.texts,
          description.deletion};
}

// ---- files

bool AlignmentDatabaseStore::CreateTables() {
  const LibraryCall call;
  const StoreIdentity store = StoreIdentity::Of(this);
  Connection main(store.OpenMain());
  if (!main) return false;
  const bool mainCreated = InitializeVersionTable(main) && StoreTables::CreateMain(main, store.texts);
  main.Close();
  if (!mainCreated) QFile::remove(store.mainPath);
  if (!store.texts.hasThresholdsFile) return mainCreated;

  Connection thresholds(store.OpenThresholds());
  if (!thresholds) return false;
  const bool thresholdsCreated = StoreTables::CreateThresholds(thresholds);
  thresholds.Close();
  if (!thresholdsCreated) QFile::remove(store.thresholdsPath);
  return mainCreated && thresholdsCreated;
}

void AlignmentDatabaseStore::Close() {}

// ---- saving

IAntennaAlignmentReportData* AlignmentDatabaseStore::SaveAlignmentReportData(ISiteInformation* site,
                                                                             IGeolocation* location,
                                                                             IOrientation* measured,
                                                                             IHeight* height, QDateTime time,
                                                                             IMeasurementOptions* options) {
  const LibraryCall call;
  const StoreSaving::SiteMeasurement saved{site, location, measured, height, time, options};
  return StoreSaving::Save(StoreIdentity::Of(this), saved);
}

IPathAlignmentReportData* AlignmentDatabaseStore::SavePathReportData(
    IPathInformation* path, IGeolocation* location, IOrientation* target, IOrientation* measured,
    IHeight* height, QDateTime time, IMeasurementOptions* options) {
  const LibraryCall call;
  const StoreSaving::PathMeasurement saved{path, location, target, measured, height, time, options};
  return StoreSaving::Save(StoreIdentity::Of(this), saved);
}

bool AlignmentDatabaseStore::GetIDForSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey) {
  return StoreRows::FindSite(db, identifier, siteKey);
}

bool AlignmentDatabaseStore::SaveSiteIdentifier(sqlite3* db, QString& identifier, long long* siteKey) {
  return StoreRows::SaveSite(db, identifier, siteKey);
}

bool AlignmentDatabaseStore::GetIDForPathIdentifier(sqlite3* db, QString& identifier, long long* pathKey) {
  return StoreRows::FindPath(db, identifier, pathKey);
}

bool AlignmentDatabaseStore::SavePathIdentifier(sqlite3* db, QString& identifier, long long* pathKey) {
  return StoreRows::SavePath(db, identifier, pathKey);
}

bool AlignmentDatabaseStore::SaveOrientation(sqlite3* db, IOrientation* orientation, long long* key) {
  return StoreRows::SaveOrientation(db, orientation, key);
}

bool AlignmentDatabaseStore::SaveGeolocation(sqlite3* db, IGeolocation* location, long long* key) {
  return StoreRows::SaveGeolocation(db, location, key);
}

bool AlignmentDatabaseStore::SaveHeight(sqlite3* db, IHeight* height, long long* key) {
  return StoreRows::SaveHeight(db, height, key);
}

bool AlignmentDatabaseStore::SaveAntennaAlignment(sqlite3* db, long long siteKey, QString& sectorName,
                                                  QString& antennaPosition, float azimuthOffset,
                                                  long long targetOrientationKey,
                                                  long long measuredOrientationKey, long long locationKey,
                                                  long long heightKey, QDateTime& time,
                                                  long long* alignmentKey, bool tiltInversionEnabled,
                                                  QString note, int rollPrecision) {
  const StoreRows::PartKeys parts{targetOrientationKey, measuredOrientationKey, locationKey, heightKey};
  const StoreRows::SiteAlignment alignment{sectorName,
                                           antennaPosition,
                                           {siteKey, azimuthOffset, parts, time, tiltInversionEnabled, note},
                                           rollPrecision};
  return StoreRows::SaveSiteAlignment(db, StoreIdentity::Of(this).texts, alignment, alignmentKey);
}

bool AlignmentDatabaseStore::SaveAntennaAlignmentThresholds(sqlite3* db, long long alignmentKey,
                                                            long long* thresholdKey, long long siteKey,
                                                            double azimuthThreshold, double tiltThreshold,
                                                            double rollThreshold) {
  return StoreRows::SaveSiteThresholds(db, alignmentKey, thresholdKey, siteKey, azimuthThreshold,
                                       tiltThreshold, rollThreshold);
}

bool AlignmentDatabaseStore::SavePathAlignment(sqlite3* db, long long pathKey, float azimuthOffset,
                                               long long pathLocationKey, long long targetOrientationKey,
                                               long long measuredOrientationKey, long long locationKey,
                                               long long heightKey, QDateTime& time, long long* alignmentKey,
                                               bool tiltInversionEnabled, QString note) {
  const StoreRows::PartKeys parts{targetOrientationKey, measuredOrientationKey, locationKey, heightKey};
  const StoreRows::PathAlignment alignment{{pathKey, azimuthOffset, parts, time, tiltInversionEnabled, note},
                                           pathLocationKey};
  return StoreRows::SavePathAlignment(db, StoreIdentity::Of(this).texts, alignment, alignmentKey);
}

bool AlignmentDatabaseStore::SavePathAlignmentThresholds(sqlite3* db, long long alignmentKey,
                                                         long long* thresholdKey, long long pathKey,
                                                         float azimuthThreshold, float tiltThreshold,
                                                         float pathLengthThreshold) {
  return StoreRows::SavePathThresholds(db, alignmentKey, thresholdKey, pathKey, azimuthThreshold,
                                       tiltThreshold, pathLengthThreshold);
}

// ---- retrieval

QVector<QString> AlignmentDatabaseStore::GetSiteIdentifiers() {
  const LibraryCall call;
  return StoreRetrieval::SiteIdentifiers(StoreIdentity::Of(this));
}

QVector<QString> AlignmentDatabaseStore::GetPathIdentifiers() {
  const LibraryCall call;
  return StoreRetrieval::PathIdentifiers(StoreIdentity::Of(this));
}

AntennaAlignmentPdfReportData* AlignmentDatabaseStore::GetAlignmentReportDataForSite(
    QString& siteIdentifier) {
  const LibraryCall call;
  return StoreRetrieval::SiteReports(StoreIdentity::Of(this), siteIdentifier);
}

PathAlignmentPdfReportData* AlignmentDatabaseStore::GetPathAlignmentReportDataForSite(
    QString pathIdentifier) {
  const LibraryCall call;
  return StoreRetrieval::PathReports(StoreIdentity::Of(this), pathIdentifier);
}

// ---- deletion

// Required behaviour: the sector is not read. Every report of the site goes, whatever its sector.
bool AlignmentDatabaseStore::DeleteReportsBySiteAndSector(QString& siteIdentifier, QString& /*sectorName*/) {
  const LibraryCall call;
  return StoreDeletion::DeleteSite(StoreIdentity::Of(this), siteIdentifier);
}

bool AlignmentDatabaseStore::DeleteReportsByPath(QString& pathIdentifier) {
  const LibraryCall call;
  return StoreDeletion::DeletePath(StoreIdentity::Of(this), pathIdentifier);
}

// Both find the report by the virtual retrieval: its order is the one that the user was shown.
bool AlignmentDatabaseStore::DeleteReportsBySiteAndIndex(QString& siteIdentifier, int index) {
  const LibraryCall call;
  const auto reports = WholeReports([&] { return GetAlignmentReportDataForSite(siteIdentifier); });
  return StoreDeletion::DeleteSiteReport(StoreIdentity::Of(this), siteIdentifier, reports.get(), index);
}

bool AlignmentDatabaseStore::DeleteReportsByPathAndIndex(QString& pathIdentifier, int index) {
  const LibraryCall call;
  const auto reports = WholeReports([&] { return GetPathAlignmentReportDataForSite(pathIdentifier); });
  return StoreDeletion::DeletePathReport(StoreIdentity::Of(this), pathIdentifier, reports.get(), index);
}

bool AlignmentDatabaseStore::DeleteSiteByKey(sqlite3* db, long long* siteKey) {
  return RecordDeletion::DeleteSite(db, siteKey);
}

bool AlignmentDatabaseStore::DeletePathByKey(sqlite3* db, long long* pathKey) {
  return RecordDeletion::DeletePath(db, pathKey);
}

bool AlignmentDatabaseStore::GetSingleSiteMeasurementKeys(sqlite3* db, long long alignmentKey,
                                                          long long* targetOrientationKey,
                                                          long long* measuredOrientationKey,
                                                          long long* locationKey, long long* siteHeightKey) {
  return RecordDeletion::FindSiteAlignmentKeys(
      db, alignmentKey, {targetOrientationKey, measuredOrientationKey, locationKey, siteHeightKey});
}

bool AlignmentDatabaseStore::GetSinglePathMeasurementKeys(sqlite3* db, long long alignmentKey,
                                                          long long* targetOrientationKey,
                                                          long long* measuredOrientationKey,
                                                          long long* pathLocationKey, long long* locationKey,
                                                          long long* siteHeightKey) {
  return RecordDeletion::FindPathAlignmentKeys(
      db, alignmentKey,
      {targetOrientationKey, measuredOrientationKey, pathLocationKey, locationKey, siteHeightKey});
}

bool AlignmentDatabaseStore::GetAllRelatedSiteKeys(sqlite3* db, long long siteKey,
                                                   QVector<int>* orientationKeys,
                                                   QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  return RecordDeletion::FindSiteKeys(db, siteKey, {orientationKeys, geolocationKeys, heightKeys});
}

bool AlignmentDatabaseStore::GetAllRelatedPathKeys(sqlite3* db, long long pathKey,
                                                   QVector<int>* orientationKeys,
                                                   QVector<int>* geolocationKeys, QVector<int>* heightKeys) {
  return RecordDeletion::FindPathKeys(db, pathKey, {orientationKeys, geolocationKeys, heightKeys});
}

bool AlignmentDatabaseStore::GenericBatchKeyDelete(sqlite3* db, QVector<int>* keys, const char* table,
                                                   const char* column) {
  return RecordDeletion::DeleteByKeys(db, keys, table, column);
}

bool AlignmentDatabaseStore::DeleteAssociatedRecordsByKeys(sqlite3* db, QVector<int>* orientationKeys,
                                                           QVector<int>* geolocationKeys,
                                                           QVector<int>* heightKeys) {
  return RecordDeletion::DeleteAssociated(db, {orientationKeys, geolocationKeys, heightKeys});
}

// ---- preferences and screens

bool AlignmentDatabaseStore::SavePreferences(IPreferencesModel* model) {
  const LibraryCall call;
  return StorePreferences::Save(StoreIdentity::Of(this), model);
}

bool AlignmentDatabaseStore::RestorePreferences(IPreferencesModel* model) {
  const LibraryCall call;
  return StorePreferences::Restore(StoreIdentity::Of(this), model);
}

bool AlignmentDatabaseStore::StoreInputContents(IAlignerModel* model) {
  const LibraryCall call;
  return StoreScreenContents::Store(StoreIdentity::Of(this), model);
}

bool AlignmentDatabaseStore::RestoreInputContents(IAlignerModel* model) {
  const LibraryCall call;
  return StoreScreenContents::Restore(StoreIdentity::Of(this), model);
}

bool AlignmentDatabaseStore::SaveCurrentSiteInformation(sqlite3* db, IAlignerModel* model) {
  return StoreScreenContents::StoreSite(db, model);
}

bool AlignmentDatabaseStore::SaveCurrentPathInformation(sqlite3* db, IAlignerModel* model) {
  return StoreScreenContents::StorePath(db, model);
}

bool AlignmentDatabaseStore::RestoreCurrentSiteInformation(sqlite3* db, IAlignerModel* model) {
  return StoreScreenContents::RestoreSite(db, model);
}

bool AlignmentDatabaseStore::RestoreCurrentPathInformation(sqlite3* db, IAlignerModel* model) {
  return StoreScreenContents::RestorePath(db, model);
}
