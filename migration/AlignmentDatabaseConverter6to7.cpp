#include "migration/AlignmentDatabaseConverter6to7.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion6.h"

namespace {

// A note column that cannot be added to path alignments does not fail the step.
constexpr ConversionStep step{
    7,
    SchemaVersion6(),
    FailureHandling::AllNamed,
    true,
    {{"PathAlignment",
      Outcome::CopyCounts,
      {{"ALTER TABLE TemporaryDB.PathAlignment ADD Note TEXT NOT NULL DEFAULT ''",
        "Add notes column to path alignment table"}},
      nullptr,
      nullptr},
     {"Preferences",
      Outcome::ChangesCount,
      {{"ALTER TABLE TemporaryDB.Preferences ADD UserTechId TEXT NOT NULL DEFAULT 'tbm001' ",
        "Add language column to preferences table"}},
      nullptr,
      nullptr}}};

}  // namespace

bool AlignmentDatabaseConverter6to7::Convert(QString& path) {
  return Conversion(step).Convert(path);
}

AlignmentDatabaseConverter6to7::~AlignmentDatabaseConverter6to7() = default;
