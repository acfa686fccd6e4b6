#include "store/AlignmentDatabaseVersion7.h"

#include "schema/SchemaVersion7.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion7{
    SchemaVersion7(), true, true, true, true, Deletion::AlignmentsAndAssociatedRecords, true};

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion7(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion7(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion7::Version() {
  return 7;
}

AlignmentDatabaseVersion7::~AlignmentDatabaseVersion7() = default;
