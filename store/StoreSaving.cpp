#include "store/StoreSaving.h"

#include "model/AntennaAlignmentReportData.h"
#include "model/IMeasurementOptions.h"
#include "model/IPathInformation.h"
#include "model/ISiteInformation.h"
#include "model/PathAlignmentReportData.h"
#include "store/StoreRows.h"

namespace {

using StoreSaving::PathMeasurement;
using StoreSaving::SiteMeasurement;

/// The keys of an alignment and of its site or path; -1 as long as there is none.
struct SavedKeys {
  long long owner = -1;
  long long alignment = -1;
};

/// What both kinds of alignment refer to.
template <typename Measurement>
bool WriteParts(sqlite3* db, IOrientation* target, const Measurement& saved, StoreRows::PartKeys* keys) {
  return StoreRows::SaveOrientation(db, target, &keys->targetOrientation) &&
         StoreRows::SaveOrientation(db, saved.measured, &keys->measuredOrientation) &&
         StoreRows::SaveGeolocation(db, saved.location, &keys->location) &&
         StoreRows::SaveHeight(db, saved.height, &keys->height);
}

/// Values that the version has no column for are not asked of the options.
template <typename Measurement>
StoreRows::Alignment CommonColumns(const SchemaTexts& texts, bool hasNote, const Measurement& saved,
                                   long long ownerKey, const StoreRows::PartKeys& parts) {
  IMeasurementOptions* options = saved.options;
  return {ownerKey,
          options->AzimuthOffset(),
          parts,
          saved.time,
          texts.hasTiltInversion && options->TiltInversionEnabled(),
          hasNote ? options->Note() : QString()};
}

/// Required behaviour: false when the alignment row itself failed, which undoes everything; a failure before
/// it keeps what was written and leaves the alignment's key as it was.
bool WriteRows(sqlite3* db, const SchemaTexts& texts, const SiteMeasurement& saved, SavedKeys* keys) {
  ISiteInformation* site = saved.site;
  StoreRows::PartKeys parts;
  if (!StoreRows::SaveSite(db, site->SiteIdentifier(), &keys->owner) ||
      !WriteParts(db, site->TargetOrientation(), saved, &parts)) {
    return true;
  }
  const StoreRows::SiteAlignment alignment{site->SectorName(), site->AntennaPosition(),
                                           CommonColumns(texts, texts.hasSiteNote, saved, keys->owner, parts),
                                           texts.hasRollPrecision ? saved.options->RollPrecision() : 0};
  return StoreRows::SaveSiteAlignment(db, texts, alignment, &keys->alignment);
}

/// As for a site.
bool WriteRows(sqlite3* db, const SchemaTexts& texts, const PathMeasurement& saved, SavedKeys* keys) {
  IPathInformation* path = saved.path;
  long long farEnd = -1;
  StoreRows::PartKeys parts;
  if (!StoreRows::SavePath(db, path->PathIdentifier(), &keys->owner) ||
      !StoreRows::SaveGeolocation(db, path->PathLocation(), &farEnd) ||
      !WriteParts(db, saved.target, saved, &parts)) {
    return true;
  }
  const StoreRows::PathAlignment alignment{CommonColumns(texts, texts.hasPathNote, saved, keys->owner, parts),
                                           farEnd};
  return StoreRows::SavePathAlignment(db, texts, alignment, &keys->alignment);
}

bool WriteThresholds(sqlite3* db, const SiteMeasurement& saved, const SavedKeys& keys) {
  long long thresholdKey = -1;
  const double azimuth = saved.options->AzimuthThreshold();
  const double tilt = saved.options->TiltThreshold();
  const double roll = saved.options->RollThreshold();
  return StoreRows::SaveSiteThresholds(db, keys.alignment, &thresholdKey, keys.owner, azimuth, tilt, roll);
}

bool WriteThresholds(sqlite3* db, const PathMeasurement& saved, const SavedKeys& keys) {
  long long thresholdKey = -1;
  const float azimuth = saved.options->AzimuthThreshold();
  const float tilt = saved.options->TiltThreshold();
  const float pathLength = saved.options->PathLengthThreshold();
  return StoreRows::SavePathThresholds(db, keys.alignment, &thresholdKey, keys.owner, azimuth, tilt,
                                       pathLength);
}

// Required behaviour: a transaction that does not begin is a failure before the alignment row.
template <typename Measurement>
bool SaveRows(const StoreIdentity& store, const Measurement& saved, SavedKeys* keys) {
  const Connection db(store.OpenMain());
  if (!db) return false;
  return !Sql::Begin(db) || Sql::Finish(db, WriteRows(db, store.texts, saved, keys));
}

// The main file is finished and closed by now: the two files are never changed together.
template <typename Measurement>
bool SaveThresholds(const StoreIdentity& store, const Measurement& saved, const SavedKeys& keys) {
  if (!store.texts.hasThresholdsFile) return true;
  const Connection db(store.OpenThresholds());
  return db && Sql::Begin(db) && Sql::Finish(db, WriteThresholds(db, saved, keys));
}

}  // namespace

namespace StoreSaving {

IAntennaAlignmentReportData* Save(const StoreIdentity& store, const SiteMeasurement& saved) {
  const auto& [site, location, measured, height, time, options] = saved;
  if (location == nullptr || site == nullptr || height == nullptr || measured == nullptr) return nullptr;
  SavedKeys keys;
  if (!SaveRows(store, saved, &keys) || !SaveThresholds(store, saved, keys)) return nullptr;
  return new AntennaAlignmentReportData(static_cast<unsigned int>(keys.alignment), site, location, measured,
                                        height, time, options);
}

IPathAlignmentReportData* Save(const StoreIdentity& store, const PathMeasurement& saved) {
  const auto& [path, location, target, measured, height, time, options] = saved;
  if (measured == nullptr || location == nullptr || path == nullptr) return nullptr;
  SavedKeys keys;
  if (!SaveRows(store, saved, &keys) || !SaveThresholds(store, saved, keys)) return nullptr;
  return new PathAlignmentReportData(static_cast<unsigned int>(keys.alignment), path, location, measured,
                                     height, target, time, options);
}

}  // namespace StoreSaving
