#include "store/legacy/AlignmentDatabaseVersion1.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion1* AlignmentDatabaseVersion1::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion1(main, thresholds);
}

AlignmentDatabaseVersion1* AlignmentDatabaseVersion1::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion1(main, thresholds));
}

unsigned int AlignmentDatabaseVersion1::Version() { return 1; }

AlignmentDatabaseVersion1::~AlignmentDatabaseVersion1() = default;
