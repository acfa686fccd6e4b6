#include "store/legacy/AlignmentDatabaseVersion1.h"

#include "schema/SchemaVersion1.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion1{
    SchemaVersion1(), false, false, false, false, Deletion::AlignmentsSteppedUntilDone, false};

AlignmentDatabaseVersion1* AlignmentDatabaseVersion1::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion1(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion1* AlignmentDatabaseVersion1::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion1(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion1::Version() {
  return 1;
}

AlignmentDatabaseVersion1::~AlignmentDatabaseVersion1() = default;
