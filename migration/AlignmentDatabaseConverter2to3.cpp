#include "migration/AlignmentDatabaseConverter2to3.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion2.h"

namespace {

// Preferences: once their copy is created, neither copying nor adding columns can fail the step.
constexpr ConversionStep step{
    3,
    SchemaVersion2(),
    FailureHandling::StepsNamed,
    true,
    {{"AntennaAlignment",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.AntennaAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
        "Add tilt inversion column to path alignment table"}},
      nullptr,
      nullptr},
     {"PathAlignment",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.PathAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
        "Add accel calibration column to preferences table"}},
      nullptr,
      nullptr},
     {"Preferences",
      Outcome::NothingCounts,
      {{"ALTER TABLE TemporaryDB.Preferences ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
        "Add accel calibration column to preferences table"},
       {"ALTER TABLE TemporaryDB.Preferences ADD BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam'",
        "Add bluetooth display name column to preferences table"}},
      nullptr,
      nullptr}}};

}  // namespace

bool AlignmentDatabaseConverter2to3::Convert(QString& path) {
  return Conversion(step).Convert(path);
}

AlignmentDatabaseConverter2to3::~AlignmentDatabaseConverter2to3() = default;
