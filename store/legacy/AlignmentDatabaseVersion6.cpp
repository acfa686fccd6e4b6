#include "store/legacy/AlignmentDatabaseVersion6.h"

#include "schema/SchemaVersion6.h"
#include "store/StoreDescription.h"

constexpr StoreDescription storeDescriptionVersion6{SchemaVersion6(), Deletion::WithAssociatedRecords, true,
                                                    true, true};

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion6(main, thresholds);
}

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Create(QString main, QString thresholds) {
  return WithTables(new AlignmentDatabaseVersion6(main, thresholds));
}

unsigned int AlignmentDatabaseVersion6::Version() { return 6; }

AlignmentDatabaseVersion6::~AlignmentDatabaseVersion6() = default;
