#include "store/legacy/AlignmentDatabaseVersion5.h"

#include "schema/SchemaVersion5.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion5{
    SchemaVersion5(), true, true, true, false, Deletion::AlignmentsAndAssociatedRecords, false};

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion5(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion5(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion5::Version() {
  return 5;
}

AlignmentDatabaseVersion5::~AlignmentDatabaseVersion5() = default;
