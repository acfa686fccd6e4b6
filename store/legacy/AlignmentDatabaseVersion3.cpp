#include "store/legacy/AlignmentDatabaseVersion3.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion3(main, thresholds);
}

AlignmentDatabaseVersion3* AlignmentDatabaseVersion3::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion3(main, thresholds));
}

unsigned int AlignmentDatabaseVersion3::Version() { return 3; }

AlignmentDatabaseVersion3::~AlignmentDatabaseVersion3() = default;
