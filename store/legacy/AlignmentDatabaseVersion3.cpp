#include "store/legacy/AlignmentDatabaseVersion3.h"

#include "schema/SchemaVersion3.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion3{
    SchemaVersion3(), true, false, false, false, Deletion::AlignmentsAndAssociatedRecords, false};

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion3(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion3(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion3::Version() {
  return 3;
}

AlignmentDatabaseVersion3::~AlignmentDatabaseVersion3() = default;
