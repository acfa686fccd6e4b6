#include "migration/AlignmentDatabaseConverter5to6.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion5.h"

namespace {

constexpr ConversionStep step{
    6,
    SchemaVersion5(),
    FailureHandling::AllNamed,
    true,
    {{"Height",
      Outcome::ChangesCount,
      {{"UPDATE TemporaryDB.Height SET HeightType = 3 WHERE HeightType=1", "Update Height Table"}},
      "Failed to update GPS HeightType values",
      nullptr},
     {"Preferences",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.Preferences ADD GeoidFormat INTEGER NOT NULL DEFAULT 0",
        "Add language column to preferences table"}},
      nullptr,
      nullptr}}};

}  // namespace

bool AlignmentDatabaseConverter5to6::Convert(QString& path) {
  return Conversion(step).Convert(path);
}

AlignmentDatabaseConverter5to6::~AlignmentDatabaseConverter5to6() = default;
