#include "store/legacy/AlignmentDatabaseVersion2.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion2* AlignmentDatabaseVersion2::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion2(main, thresholds);
}

AlignmentDatabaseVersion2* AlignmentDatabaseVersion2::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion2(main, thresholds));
}

unsigned int AlignmentDatabaseVersion2::Version() { return 2; }

AlignmentDatabaseVersion2::~AlignmentDatabaseVersion2() = default;
