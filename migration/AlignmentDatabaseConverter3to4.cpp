#include "migration/AlignmentDatabaseConverter3to4.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion3.h"

namespace {

constexpr ConversionStep step{
    4,
    SchemaVersion3(),
    FailureHandling::StepsNamed,
    true,
    {{"AntennaAlignment",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.AntennaAlignment ADD Note TEXT NOT NULL DEFAULT ''",
        "Add notes column to antenna alignment table"}},
      nullptr,
      nullptr},
     {"Preferences",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.Preferences ADD Language INTEGER NOT NULL DEFAULT 0",
        "Add language column to preferences table"}},
      nullptr,
      nullptr}}};

}  // namespace

bool AlignmentDatabaseConverter3to4::Convert(QString& path) {
  return Conversion(step).Convert(path);
}

AlignmentDatabaseConverter3to4::~AlignmentDatabaseConverter3to4() = default;
