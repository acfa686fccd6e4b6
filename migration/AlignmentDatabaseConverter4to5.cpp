#include "migration/AlignmentDatabaseConverter4to5.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion4.h"

namespace {

// The labels are those of the columns of the step before.
constexpr ConversionStep step{
    5,
    SchemaVersion4(),
    FailureHandling::StepsNamed,
    true,
    {{"AntennaAlignment",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.AntennaAlignment ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
        "Add notes column to antenna alignment table"}},
      nullptr,
      nullptr},
     {"Preferences",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.Preferences ADD RollPrecision INTEGER NOT NULL DEFAULT 0",
        "Add language column to preferences table"}},
      nullptr,
      nullptr}}};

}  // namespace

bool AlignmentDatabaseConverter4to5::Convert(QString& path) {
  return Conversion(step).Convert(path);
}

AlignmentDatabaseConverter4to5::~AlignmentDatabaseConverter4to5() = default;
