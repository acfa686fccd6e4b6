// The contents of the two input screens: row 1 of SiteScreenContents and of PathScreenContents.
#include <sqlite3.h>

#include "core/Connection.h"
#include "core/Statement.h"
#include "model/IAlignerModel.h"
#include "model/IGeolocation.h"
#include "model/IOrientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"
#include "store/AlignmentDatabaseStore.h"

namespace {

// A statement that cannot be prepared counts as success. The steps have no bound: only "done" ends them.
bool ClearScreen(sqlite3* db, const char* sql, const char* label) {
  Statement statement(db, sql, label);
  if (!statement) return true;
  while (statement.Step() != SQLITE_DONE) {
  }
  return true;
}

}  // namespace

bool AlignmentDatabaseStore::StoreInputContents(IAlignerModel* model) {
  const Connection db(OpenDatabase(false));
  return db && SaveCurrentSiteInformation(db, model) && SaveCurrentPathInformation(db, model);
}

bool AlignmentDatabaseStore::RestoreInputContents(IAlignerModel* model) {
  const Connection db(OpenDatabase(false));
  return db && RestoreCurrentSiteInformation(db, model) && RestoreCurrentPathInformation(db, model);
}

// The record's accessors are asked again for each column. The azimuth reports itself as the roll.
bool AlignmentDatabaseStore::SaveCurrentSiteInformation(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  const ISiteInformation* site = model->CurrentSiteInformation();
  if (site == nullptr) {
    return ClearScreen(db, "DELETE FROM SiteScreenContents WHERE (RowID=1)", "delete site screen contents");
  }
  Statement statement(db,
                      "INSERT OR REPLACE INTO SiteScreenContents (RowID, SiteIdentifier, SectorIdentifier, "
                      "AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth ) VALUES (1,?,?,?,?,?,?)",
                      "Save Current Site");
  if (!statement || site->TargetOrientation() == nullptr) return false;
  return statement.Text(site->SiteIdentifier(), "SQL bind current site identifier failed with ")
      .Text(site->SectorName(), "SQL bind current sector identifier failed with ")
      .Text(site->AntennaPosition(), "SQL bind current antenna position failed with ")
      .Double(site->TargetOrientation()->TiltDegrees(), "SQL bind current target tilt failed with ")
      .Double(site->TargetOrientation()->RollDegrees(), "SQL bind current target roll failed with ")
      .Double(site->TargetOrientation()->AzimuthDegrees(), "SQL bind current target roll failed with ")
      .Run();
}

// Reports success whatever happens, unlike the site; its texts are the site screen's.
bool AlignmentDatabaseStore::SaveCurrentPathInformation(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  const IPathInformation* path = model->CurrentPathInformation();
  if (path == nullptr) {
    return ClearScreen(db, "DELETE FROM PathScreenContents WHERE (RowID=1)", "delete path screen contents");
  }
  Statement statement(db,
                      "INSERT OR REPLACE INTO PathScreenContents (RowID, PathIdentifier, TargetLatitude, "
                      "TargetLongittude, TargetHeight ) VALUES (1,?,?,?,?)",
                      "Save Current Path");
  if (!statement || path->TargetGeolocation() == nullptr) return true;
  statement.Text(path->PathIdentifier(), "SQL bind current site identifier failed with ")
      .Double(path->TargetGeolocation()->LatitudeDegreesNorth(), "SQL bind current target tilt failed with ")
      .Double(path->TargetGeolocation()->LongitudeDegreesEast(), "SQL bind current target tilt failed with ")
      .Double(path->TargetGeolocation()->ElevationMeters(), "SQL bind current target tilt failed with ")
      .Run();
  return true;
}

// A row that cannot be read leaves the model as it was, and is no failure.
bool AlignmentDatabaseStore::RestoreCurrentSiteInformation(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  Statement row(
      db,
      "SELECT SiteIdentifier,SectorIdentifier,AntennaPosition, TargetTilt, TargetRoll, TargetAzimuth "
      "FROM SiteScreenContents WHERE (RowID=1)",
      "Restore site info");
  if (!row || row.Step() != SQLITE_ROW) return true;
  const float tilt = row.FloatColumn(3);
  const float roll = row.FloatColumn(4);
  const float azimuth = row.FloatColumn(5);
  model->SetCurrentSiteInformation(
      new SiteInformation(row.TextColumn(0), row.TextColumn(1), row.TextColumn(2), azimuth, tilt, roll));
  return true;
}

bool AlignmentDatabaseStore::RestoreCurrentPathInformation(sqlite3* db, IAlignerModel* model) {
  if (db == nullptr || model == nullptr) return false;
  Statement row(
      db,
      "SELECT PathIdentifier, TargetLatitude, TargetLongittude, TargetHeight FROM PathScreenContents "
      "WHERE (RowID=1)",
      "Restore path information");
  if (!row || row.Step() != SQLITE_ROW) return true;
  model->SetCurrentPathInformation(
      new PathInformation(row.TextColumn(0), row.DoubleColumn(1), row.DoubleColumn(2), row.DoubleColumn(3)));
  return true;
}
