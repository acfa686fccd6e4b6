#include "store/legacy/AlignmentDatabaseVersion6.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion6(main, thresholds);
}

AlignmentDatabaseVersion6* AlignmentDatabaseVersion6::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion6(main, thresholds));
}

unsigned int AlignmentDatabaseVersion6::Version() { return 6; }

AlignmentDatabaseVersion6::~AlignmentDatabaseVersion6() = default;
