#include "store/legacy/AlignmentDatabaseVersion5.h"

#include "store/StoreTables.h"

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Open(QString main, QString thresholds) {
  return new AlignmentDatabaseVersion5(main, thresholds);
}

AlignmentDatabaseVersion5* AlignmentDatabaseVersion5::Create(QString main, QString thresholds) {
  return StoreTables::CreatedFor(new AlignmentDatabaseVersion5(main, thresholds));
}

unsigned int AlignmentDatabaseVersion5::Version() { return 5; }

AlignmentDatabaseVersion5::~AlignmentDatabaseVersion5() = default;
