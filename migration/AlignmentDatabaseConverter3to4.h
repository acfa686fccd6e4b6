#pragma once

#include "TarnbeamDatabaseExport.h"
#include "migration/IAlignmentDatabaseConverter.h"

/// Version 3 to 4: site alignments gain a note, preferences the language.
class TARNBEAMDATABASE_EXPORT AlignmentDatabaseConverter3to4 : public IAlignmentDatabaseConverter {
 public:
  bool Convert(QString& path) override;
  virtual ~AlignmentDatabaseConverter3to4();
};
