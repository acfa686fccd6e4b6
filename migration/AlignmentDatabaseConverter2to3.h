#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 2 to 3: alignments gain tilt inversion and right foreign keys, preferences tilt inversion and the
/// Bluetooth name.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter2to3 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter2to3();
};
