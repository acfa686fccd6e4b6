#include "store/AlignmentDatabaseVersion7.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion7(main, thresholds);
}

AlignmentDatabaseVersion7* AlignmentDatabaseVersion7::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion7(main, thresholds));
}

unsigned int AlignmentDatabaseVersion7::Version() { return 7; }

AlignmentDatabaseVersion7::~AlignmentDatabaseVersion7() = default;
