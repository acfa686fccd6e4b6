#include "store/legacy/AlignmentDatabaseVersion4.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion4(main, thresholds);
}

AlignmentDatabaseVersion4* AlignmentDatabaseVersion4::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion4(main, thresholds));
}

unsigned int AlignmentDatabaseVersion4::Version() { return 4; }

AlignmentDatabaseVersion4::~AlignmentDatabaseVersion4() = default;
