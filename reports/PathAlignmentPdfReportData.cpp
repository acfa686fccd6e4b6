#include "reports/PathAlignmentPdfReportData.h"

#include <QDebug>
#include <QMessageLogger>
#include <utility>

PathAlignmentPdfReportData::PathAlignmentPdfReportData(QString name, const QString& fileBase,
                                                       QVector<IPathAlignmentReportData*>* data)
    : PdfReportData(std::move(name), fileBase, data) {
  if (data == nullptr) {
    // Category "default" without file, line and function: the same in every kind of build.
    QMessageLogger(nullptr, 0, nullptr).debug().noquote()
        << "Null path data passed to PathAlignmentPdfReportData";
  }
}

PathAlignmentPdfReportData::~PathAlignmentPdfReportData() = default;

int PathAlignmentPdfReportData::GetReportType() const { return 1; }

QVector<IPathAlignmentReportData*>* PathAlignmentPdfReportData::PathData() const { return Records(); }
