#include "migration/AlignmentDatabaseConverter2to3.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion2.h"

namespace {

// Required behaviour: several labels name another table or column.
constexpr Change siteTiltInversion{
    "ALTER TABLE TemporaryDB.AntennaAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
    "Add tilt inversion column to path alignment table"};
constexpr Change pathTiltInversion{
    "ALTER TABLE TemporaryDB.PathAlignment ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
    "Add accel calibration column to preferences table"};
constexpr Change preferredTiltInversion{
    "ALTER TABLE TemporaryDB.Preferences ADD TiltInversionEnabled INTEGER NOT NULL DEFAULT 0",
    "Add accel calibration column to preferences table"};
constexpr Change bluetoothName{
    "ALTER TABLE TemporaryDB.Preferences ADD BluetoothDisplayName TEXT NOT NULL DEFAULT 'Tarnbeam'",
    "Add bluetooth display name column to preferences table"};
// Required behaviour: once the copy of the preferences is created, neither copying nor adding columns can
// fail the step.
constexpr ConversionStep step{
    3,
    SchemaVersion2(),
    FailureHandling::StepsNamed,
    UnusedRows::Go,
    {{"AntennaAlignment", Outcome::ChangesCount, {siteTiltInversion}},
     {"PathAlignment", Outcome::ChangesCount, {pathTiltInversion}},
     {"Preferences", Outcome::NothingCounts, {preferredTiltInversion, bluetoothName}}}};

}  // namespace

bool AlignmentDatabaseConverter2to3::Convert(QString& path) { return Conversion(step).Convert(path); }

AlignmentDatabaseConverter2to3::~AlignmentDatabaseConverter2to3() = default;
