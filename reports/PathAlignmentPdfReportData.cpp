#include "reports/PathAlignmentPdfReportData.h"

#include <QDebug>
#include <QMessageLogger>
#include <utility>

PathAlignmentPdfReportData::PathAlignmentPdfReportData(QString name, const QString& fileBase,
                                                       QVector<IPathAlignmentReportData*>* data)
    : PdfReportData(std::move(name), fileBase, data) {
  if (data == nullptr) {
    // As LogDebug() of core/ writes it, which reports/ does not include: category "default", and no file,
    // line or function, so that the line reads alike in every build type.
    QMessageLogger(nullptr, 0, nullptr).debug().noquote()
        << "Null path data passed to PathAlignmentPdfReportData";
  }
}

PathAlignmentPdfReportData::~PathAlignmentPdfReportData() = default;

int PathAlignmentPdfReportData::GetReportType() const { return 1; }

QVector<IPathAlignmentReportData*>* PathAlignmentPdfReportData::PathData() const { return Records(); }
