#include "store/legacy/AlignmentDatabaseVersion4.h"

#include "schema/SchemaVersion4.h"
#include "store/StoreDescription.h"

constexpr StoreDescription storeDescriptionVersion4{SchemaVersion4(), Deletion::WithAssociatedRecords, true,
                                                    true};

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion4(main, thresholds);
}

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Create(QString main, QString thresholds) {
  return WithTables(new AlignmentDatabaseVersion4(main, thresholds));
}

unsigned int AlignmentDatabaseVersion4::Version() { return 4; }

AlignmentDatabaseVersion4::~AlignmentDatabaseVersion4() = default;
