#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 1 to 2: preferences gain four columns, the calibration flag is decided, the auto-shutoff delay
/// reset to 1. Rows that no alignment refers to are kept, and a failure leaves the scratch file behind.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter1to2 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter1to2();
};
