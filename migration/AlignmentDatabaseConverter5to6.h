#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 5 to 6: GPS heights change their type from 1 to 3, preferences gain the geoid format.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter5to6 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter5to6();
};
