#include "reports/AntennaAlignmentPdfReportData.h"

#include <algorithm>
#include <utility>

#include "model/ISiteInformation.h"

AntennaAlignmentPdfReportData::AntennaAlignmentPdfReportData(QString name, const QString& fileBase,
                                                             QVector<IAntennaAlignmentReportData*>* data)
    : PdfReportData(std::move(name), fileBase, data) {
  SortReportData();
}

AntennaAlignmentPdfReportData::~AntennaAlignmentPdfReportData() = default;

int AntennaAlignmentPdfReportData::GetReportType() const { return 0; }

QVector<IAntennaAlignmentReportData*>* AntennaAlignmentPdfReportData::AlignmentData() const {
  return Records();
}

void AntennaAlignmentPdfReportData::SortReportData() {
  // std::sort promises what qSort promised before it was deprecated: equal records in any order.
  QVector<IAntennaAlignmentReportData*>& records = *Records();
  std::sort(records.begin(), records.end(), ReportDataLessThan);
}

bool ReportDataLessThan(const IAntennaAlignmentReportData* a, const IAntennaAlignmentReportData* b) {
  const ISiteInformation* siteOfA = a->GetSiteInformation();
  const ISiteInformation* siteOfB = b->GetSiteInformation();
  const QString sectorOfA = siteOfA->SectorName().toLower();
  const QString sectorOfB = siteOfB->SectorName().toLower();
  if (sectorOfA < sectorOfB) {
    return true;
  }
  return sectorOfA == sectorOfB &&
         siteOfA->AntennaPosition().toLower() < siteOfB->AntennaPosition().toLower();
}
