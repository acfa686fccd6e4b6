#include "store/legacy/AlignmentDatabaseVersion4.h"

#include "schema/SchemaVersion4.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion4{
    SchemaVersion4(), true, true, false, false, Deletion::AlignmentsAndAssociatedRecords, false};

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion4(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion4(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion4::Version() {
  return 4;
}

AlignmentDatabaseVersion4::~AlignmentDatabaseVersion4() = default;
