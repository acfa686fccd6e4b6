#include "migration/AlignmentDatabaseConverter3to4.h"

#include "migration/Conversion.h"
#include "schema/SchemaVersion3.h"

namespace {

constexpr Change siteNote{"ALTER TABLE TemporaryDB.AntennaAlignment ADD Note TEXT NOT NULL DEFAULT ''",
                          "Add notes column to antenna alignment table"};
constexpr Change language{"ALTER TABLE TemporaryDB.Preferences ADD Language INTEGER NOT NULL DEFAULT 0",
                          "Add language column to preferences table"};
constexpr TableChanges sites{"AntennaAlignment", Outcome::ChangesCount, {siteNote}};
constexpr TableChanges preferences{"Preferences", Outcome::ChangesCount, {language}};
constexpr ConversionStep step{
    4, SchemaVersion3(), FailureHandling::StepsNamed, UnusedRows::Go, {sites, preferences}};

}  // namespace

bool AlignmentDatabaseConverter3to4::Convert(QString& path) { return Conversion(step).Convert(path); }

AlignmentDatabaseConverter3to4::~AlignmentDatabaseConverter3to4() = default;
