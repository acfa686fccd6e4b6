#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 6 to 7: path alignments gain a note, preferences the technician's identifier. The thresholds file
/// is made by AlignmentDatabaseVersion7::Create().
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter6to7 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter6to7();
};
