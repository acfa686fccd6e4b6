#pragma once

#include "TarnbeamDatabaseExport.h"
#include "reports/PdfReportData.h"

/// Report on the alignments of one path, in the order given. Owns its records.
class TARNBEAMDATABASE_EXPORT PathAlignmentPdfReportData : public PdfReportData<IPathAlignmentReportData> {
 public:
  /// Takes ownership of `data` and of every record in it. A null `data` is logged and kept as null.
  PathAlignmentPdfReportData(QString name, const QString& fileBase, QVector<IPathAlignmentReportData*>* data);

  /// Always 1.
  int GetReportType() const override;

  ~PathAlignmentPdfReportData() override;

  /// The records, owned by the report; null if it was given none.
  QVector<IPathAlignmentReportData*>* PathData() const;
};
