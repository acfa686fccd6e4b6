#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"

/// A report with a name and a kind. The order of the virtual operations is binary interface. There is
/// no destructor here: reports are deleted through their concrete class.
class TARNBEAMDATABASE_EXPORT IReportData {
 public:
  /// Identifier of the site or path reported on.
  virtual const QString& Name() const = 0;

  /// 0 for site alignments, 1 for path alignments.
  virtual int GetReportType() const = 0;
};
