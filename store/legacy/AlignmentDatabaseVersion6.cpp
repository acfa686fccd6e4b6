#include "store/legacy/AlignmentDatabaseVersion6.h"

#include "schema/SchemaVersion6.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion6{
    SchemaVersion6(), true, true, true, false, Deletion::AlignmentsAndAssociatedRecords, false};

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion6(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion6(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion6::Version() {
  return 6;
}

AlignmentDatabaseVersion6::~AlignmentDatabaseVersion6() = default;
