#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 4 to 5: site alignments and preferences gain the roll precision.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter4to5 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter4to5();
};
