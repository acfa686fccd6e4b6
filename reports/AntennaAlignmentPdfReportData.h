#pragma once

#include "TarnbeamDatabaseExport.h"
#include "reports/PdfReportData.h"

/// Report on the alignments of one site, sorted by sector name and antenna position. Owns its records.
class TARNBEAMDATABASE_EXPORT AntennaAlignmentPdfReportData
    : public PdfReportData<IAntennaAlignmentReportData> {
 public:
  /// Takes ownership of `data` and of every record in it, and sorts them. `data` must not be null.
  AntennaAlignmentPdfReportData(QString name, const QString& fileBase,
                                QVector<IAntennaAlignmentReportData*>* data);

  /// Always 0.
  int GetReportType() const override;

  ~AntennaAlignmentPdfReportData() override;

  /// The records, owned by the report.
  QVector<IAntennaAlignmentReportData*>* AlignmentData() const;

  /// Sorts the records in place by `ReportDataLessThan`. Records that are equal in sector name and antenna
  /// position may end up in any order. A single record is not looked into: it may be null or have no site. Of
  /// several, none may.
  void SortReportData();
};

/// Whether `a` stands before `b` in a site report: by sector name, then by antenna position, both
/// without regard to case. Both records must have a site.
TARNBEAMDATABASE_EXPORT bool ReportDataLessThan(const IAntennaAlignmentReportData* a,
                                                const IAntennaAlignmentReportData* b);
