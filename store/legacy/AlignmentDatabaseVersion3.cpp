#include "store/legacy/AlignmentDatabaseVersion3.h"

#include "schema/SchemaVersion3.h"
#include "store/StoreDescription.h"

constexpr StoreDescription storeDescriptionVersion3{SchemaVersion3(), Deletion::WithAssociatedRecords, true};

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion3(main, thresholds);
}

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Create(QString main, QString thresholds) {
  return WithTables(new AlignmentDatabaseVersion3(main, thresholds));
}

unsigned int AlignmentDatabaseVersion3::Version() { return 3; }

AlignmentDatabaseVersion3::~AlignmentDatabaseVersion3() = default;
