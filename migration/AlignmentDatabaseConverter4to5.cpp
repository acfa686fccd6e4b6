#include "migration/AlignmentDatabaseConverter4to5.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion4.h"

namespace {

// Required behaviour: the labels are those of the previous step's columns.
constexpr Change siteRollPrecision{
    "ALTER TABLE TemporaryDB.AntennaAlignment ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
    "Add notes column to antenna alignment table"};
constexpr Change rollPrecision{
    "ALTER TABLE TemporaryDB.Preferences ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
    "Add language column to preferences table"};
constexpr ConversionStep step{5,
                              SchemaVersion4(),
                              FailureHandling::StepsNamed,
                              UnusedRows::Go,
                              {{"AntennaAlignment", Outcome::ChangesCount, {siteRollPrecision}},
                               {"Preferences", Outcome::ChangesCount, {rollPrecision}}}};

}  // namespace

bool AlignmentDatabaseConverter4to5::Convert(QString& path) { return Conversion(step).Convert(path); }

AlignmentDatabaseConverter4to5::~AlignmentDatabaseConverter4to5() = default;
