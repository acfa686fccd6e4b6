#pragma once

#include "TarnbeamDatabaseExport.h"
#include "reports/IReportData.h"

/// A report that can be written to a PDF file.
class TARNBEAMDATABASE_EXPORT IPdfReportData : public IReportData {
 public:
  /// The name of the file without its suffix, followed by `suffix` as it is given.
  virtual QString FileName(QString suffix) const = 0;
};
