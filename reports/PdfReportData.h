#pragma once

#include <QString>
#include <QVector>

#include "TarnbeamDatabaseExport.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "reports/IPdfReportData.h"

/// What both report containers have in common: they hold their texts and own their records.
template <typename Record>
class TARNBEAMDATABASE_EXPORT PdfReportData : public IPdfReportData {
 public:
  PdfReportData(const PdfReportData&) = delete;
  PdfReportData& operator=(const PdfReportData&) = delete;

  /// @copydoc IReportData::Name
  const QString& Name() const override;
  /// @copydoc IPdfReportData::FileName
  QString FileName(QString suffix) const override;

  /// Deletes every record, from the last to the first, and the vector.
  virtual ~PdfReportData();

 protected:
  /// Takes ownership of `records` and of every record in it.
  PdfReportData(QString name, const QString& fileBase, QVector<Record*>* records);

  /// As given at construction.
  QVector<Record*>* Records() const { return records_; }

 private:
  const QString name_;
  const QString fileBase_;
  QVector<Record*>* const records_;
};

extern template class PdfReportData<IAntennaAlignmentReportData>;
extern template class PdfReportData<IPathAlignmentReportData>;
