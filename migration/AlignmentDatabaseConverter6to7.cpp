#include "migration/AlignmentDatabaseConverter6to7.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion6.h"

namespace {

constexpr Change pathNote{"ALTER TABLE TemporaryDB.PathAlignment ADD Note TEXT NOT NULL DEFAULT ''",
                          "Add notes column to path alignment table"};
// Required behaviour: the label is that of an earlier step's column, and the text ends in a blank.
constexpr Change technician{
    "ALTER TABLE TemporaryDB.Preferences ADD UserTechId TEXT NOT NULL DEFAULT 'tbm001' ",
    "Add language column to preferences table"};
// Required behaviour: a note column that cannot be added does not fail the step.
constexpr TableChanges paths{"PathAlignment", Outcome::CopyCounts, {pathNote}};
constexpr TableChanges preferences{"Preferences", Outcome::ChangesCount, {technician}};
constexpr ConversionStep step{
    7, SchemaVersion6(), FailureHandling::AllNamed, UnusedRows::Go, {paths, preferences}};

}  // namespace

bool AlignmentDatabaseConverter6to7::Convert(QString& path) { return Conversion(step).Convert(path); }

AlignmentDatabaseConverter6to7::~AlignmentDatabaseConverter6to7() = default;
