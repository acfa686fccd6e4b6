#include "store/StoreScreenContents.h"

#include <sqlite3.h>

#include "core/Statement.h"
#include "model/IAlignerModel.h"
#include "model/IGeolocation.h"
#include "model/IOrientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"

namespace {

// Required behaviour: a statement that cannot be prepared counts as success. False only if a guard ended the
// loop.
bool ClearScreen(sqlite3* db, const char* sql, const char* label) {
  Statement statement(db, sql, label);
  return !statement || statement.StepUntilDone([] {}) == SQLITE_DONE;
}

// Both ask the model anew, as is done for every column. Without an orientation or a location nothing is
// bound.
bool BindsAngle(Statement* row, IAlignerModel* model, float (IOrientation::*degrees)() const,
                const char* bindFailure) {
  const IOrientation* target = model->CurrentSiteInformation()->TargetOrientation();
  return target != nullptr && row->Double((target->*degrees)(), bindFailure).Bound();
}
bool BindsFarEnd(Statement* row, IAlignerModel* model, double (IGeolocation::*part)() const,
                 const char* bindFailure) {
  const IGeolocation* farEnd = model->CurrentPathInformation()->TargetGeolocation();
  return farEnd != nullptr && row->Double((farEnd->*part)(), bindFailure).Bound();
}

}  // namespace

namespace StoreScreenContents {

bool Store(const StoreIdentity& store, IAlignerModel* model) {
  const Connection db(store.OpenMain());
  return db && StoreSite(db, model) && StorePath(db, model);
}

bool Restore(const StoreIdentity& store, IAlignerModel* model) {
  const Connection db(store.OpenMain());
  return db && RestoreSite(db, model) && RestorePath(db, model);
}

// Required behaviour: the model and its record are asked again for each column, and the azimuth reports
// itself as the roll.
bool StoreSite(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  if (model->CurrentSiteInformation() == nullptr) {
    return ClearScreen(db, "DELETE FROM SiteScreenContents WHERE (RowID=1)", "delete site screen contents");
  }
  Statement row(db,
                "INSERT OR REPLACE INTO SiteScreenContents (RowID, SiteIdentifier, SectorIdentifier, "
                "AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth ) VALUES (1,?,?,?,?,?,?)",
                "Save Current Site");
  if (!row) return false;
  const auto site = [model] { return model->CurrentSiteInformation(); };
  return row.Text(site()->SiteIdentifier(), "SQL bind current site identifier failed with ")
             .Text(site()->SectorName(), "SQL bind current sector identifier failed with ")
             .Text(site()->AntennaPosition(), "SQL bind current antenna position failed with ")
             .Bound() &&
         BindsAngle(&row, model, &IOrientation::TiltDegrees, "SQL bind current target tilt failed with ") &&
         BindsAngle(&row, model, &IOrientation::RollDegrees, "SQL bind current target roll failed with ") &&
         BindsAngle(&row, model, &IOrientation::AzimuthDegrees,
                    "SQL bind current target roll failed with ") &&
         row.Run();
}

// Required behaviour: unlike the site's, this reports success whatever happens; its texts are the site's.
bool StorePath(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  if (model->CurrentPathInformation() == nullptr) {
    ClearScreen(db, "DELETE FROM PathScreenContents WHERE (RowID=1)", "delete path screen contents");
    return true;
  }
  Statement row(db,
                "INSERT OR REPLACE INTO PathScreenContents (RowID, PathIdentifier, TargetLatitude, "
                "TargetLongittude, TargetHeight ) VALUES (1,?,?,?,?)",
                "Save Current Path");
  if (!row) return true;
  constexpr char farEndFailure[] = "SQL bind current target tilt failed with ";
  if (row.Text(model->CurrentPathInformation()->PathIdentifier(),
               "SQL bind current site identifier failed with ")
          .Bound() &&
      BindsFarEnd(&row, model, &IGeolocation::LatitudeDegreesNorth, farEndFailure) &&
      BindsFarEnd(&row, model, &IGeolocation::LongitudeDegreesEast, farEndFailure) &&
      BindsFarEnd(&row, model, &IGeolocation::ElevationMeters, farEndFailure)) {
    row.Run();
  }
  return true;
}

// Required behaviour: a row that cannot be read leaves the model as it was, and is no failure; so it is for a
// path.
bool RestoreSite(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  Statement row(
      db,
      "SELECT SiteIdentifier,SectorIdentifier,AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth "
      "FROM SiteScreenContents WHERE (RowID=1)",
      "Restore site info");
  if (row.Step() != SQLITE_ROW) return true;
  const float tilt = row.FloatColumn(3);
  const float roll = row.FloatColumn(4);
  const float azimuth = row.FloatColumn(5);
  model->SetCurrentSiteInformation(
      new SiteInformation(row.TextColumn(0), row.TextColumn(1), row.TextColumn(2), azimuth, tilt, roll));
  return true;
}

bool RestorePath(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  Statement row(
      db,
      "SELECT PathIdentifier, TargetLatitude, TargetLongittude, TargetHeight FROM PathScreenContents "
      "WHERE (RowID=1)",
      "Restore path information");
  if (row.Step() != SQLITE_ROW) return true;
  model->SetCurrentPathInformation(
      new PathInformation(row.TextColumn(0), row.DoubleColumn(1), row.DoubleColumn(2), row.DoubleColumn(3)));
  return true;
}

}  // namespace StoreScreenContents
