#include "reports/AntennaAlignmentPdfReportData.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "model/ISiteInformation.h"

namespace {

/// What records are ordered by: the sector's name, then the antenna's position, in lower case.
struct SortKey {
  explicit SortKey(const IAntennaAlignmentReportData* record)
      : sector(record->GetSiteInformation()->SectorName().toLower()),
        position(record->GetSiteInformation()->AntennaPosition().toLower()) {}

  bool operator<(const SortKey& other) const {
    const int bySector = sector.compare(other.sector);
    return bySector != 0 ? bySector < 0 : position < other.position;
  }

  QString sector;
  QString position;
};

}  // namespace

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

// Orders by ReportDataLessThan(), with each record's key made once instead of at every comparison. Records
// that are equal may come in any order.
void AntennaAlignmentPdfReportData::SortReportData() {
  QVector<IAntennaAlignmentReportData*>& records = *Records();
  records.detach();
  if (records.size() < 2) return;
  std::vector<std::pair<SortKey, IAntennaAlignmentReportData*>> keyed;
  keyed.reserve(static_cast<size_t>(records.size()));
  for (IAntennaAlignmentReportData* record : std::as_const(records))
    keyed.emplace_back(SortKey(record), record);
  std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::transform(keyed.cbegin(), keyed.cend(), records.begin(),
                 [](const auto& entry) { return entry.second; });
}

bool ReportDataLessThan(const IAntennaAlignmentReportData* a, const IAntennaAlignmentReportData* b) {
  return SortKey(a) < SortKey(b);
}
