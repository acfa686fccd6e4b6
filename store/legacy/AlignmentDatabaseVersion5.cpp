#include "store/legacy/AlignmentDatabaseVersion5.h"

#include "schema/SchemaVersion5.h"
#include "store/StoreDescription.h"

constexpr StoreDescription storeDescriptionVersion5{SchemaVersion5(), Deletion::WithAssociatedRecords, true,
                                                    true, true};

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion5(main, thresholds);
}

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Create(QString main, QString thresholds) {
  return WithTables(new AlignmentDatabaseVersion5(main, thresholds));
}

unsigned int AlignmentDatabaseVersion5::Version() { return 5; }

AlignmentDatabaseVersion5::~AlignmentDatabaseVersion5() = default;
