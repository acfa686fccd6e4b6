#include "store/AlignmentDatabaseVersion7.h"

#include "schema/SchemaVersion7.h"
#include "store/StoreDescription.h"

constexpr StoreDescription storeDescriptionVersion7{
    SchemaVersion7(), Deletion::WithAssociatedRecords, true, true, true, true, true};

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion7(main, thresholds);
}

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Create(QString main, QString thresholds) {
  return WithTables(new AlignmentDatabaseVersion7(main, thresholds));
}

unsigned int AlignmentDatabaseVersion7::Version() { return 7; }

AlignmentDatabaseVersion7::~AlignmentDatabaseVersion7() = default;
