#include "reports/PdfReportData.h"

#include <utility>

template <typename Record>
PdfReportData<Record>::PdfReportData(QString name, const QString& fileBase, QVector<Record*>* records)
    : name_(std::move(name)), fileBase_(fileBase), records_(records) {}

template <typename Record>
PdfReportData<Record>::~PdfReportData() {
  while (records_ != nullptr && !records_->isEmpty()) {
    delete records_->takeLast();
  }
  delete records_;
}

template <typename Record>
const QString& PdfReportData<Record>::Name() const {
  return name_;
}

template <typename Record>
QString PdfReportData<Record>::FileName(QString suffix) const {
  return fileBase_ + suffix;
}

template class PdfReportData<IAntennaAlignmentReportData>;
template class PdfReportData<IPathAlignmentReportData>;
