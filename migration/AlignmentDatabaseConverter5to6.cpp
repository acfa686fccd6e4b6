#include "migration/AlignmentDatabaseConverter5to6.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion5.h"

namespace {

constexpr Change gpsHeights{"UPDATE TemporaryDB.Height SET HeightType = 3 WHERE HeightType=1",
                            "Update Height Table"};
// Required behaviour: the label is that of an earlier step's column.
constexpr Change geoidFormat{"ALTER TABLE TemporaryDB.Preferences ADD GeoidFormat INTEGER NOT NULL DEFAULT 0",
                             "Add language column to preferences table"};
constexpr TableChanges heights{
    "Height", Outcome::ChangesCount, {gpsHeights}, "Failed to update GPS HeightType values"};
constexpr TableChanges preferences{"Preferences", Outcome::ChangesCount, {geoidFormat}};
constexpr ConversionStep step{
    6, SchemaVersion5(), FailureHandling::AllNamed, UnusedRows::Go, {heights, preferences}};

}  // namespace

bool AlignmentDatabaseConverter5to6::Convert(QString& path) { return Conversion(step).Convert(path); }

AlignmentDatabaseConverter5to6::~AlignmentDatabaseConverter5to6() = default;
