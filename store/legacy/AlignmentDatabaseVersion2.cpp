#include "store/legacy/AlignmentDatabaseVersion2.h"

#include "schema/SchemaVersion2.h"
#include "store/StoreDescription.h"

// The switches: tilt inversion, site note, roll precision, path note.
constexpr StoreDescription storeDescriptionVersion2{SchemaVersion2(),     false, false, false, false,
                                                    Deletion::Alignments, false};

AlignmentDatabaseVersion2* AlignmentDatabaseVersion2::Open(QString databasePath, QString secondDatabasePath) {
  return new AlignmentDatabaseVersion2(databasePath, secondDatabasePath);
}

AlignmentDatabaseVersion2* AlignmentDatabaseVersion2::Create(QString databasePath,
                                                             QString secondDatabasePath) {
  auto* store = new AlignmentDatabaseVersion2(databasePath, secondDatabasePath);
  store->CreateTablesOrLog();
  return store;
}

unsigned int AlignmentDatabaseVersion2::Version() {
  return 2;
}

AlignmentDatabaseVersion2::~AlignmentDatabaseVersion2() = default;
