#include <cstdio>
#include <memory>

#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/SiteInformation.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "store/AlignmentDatabaseVersion7.h"

int main() {
  std::unique_ptr<AlignmentDatabaseVersion7> store(
      AlignmentDatabaseVersion7::Create("main.sqlite", "thresholds.sqlite"));

  QString siteName = "Höhe 7";
  SiteInformation site(siteName, "North", "A1", 120.0f, -2.0f, 0.0f);  // target azimuth, tilt, roll
  Geolocation location(47.3769, 8.5417, 408.0, GpsDatum::Wgs84, QDateTime::currentDateTime(), true);
  Orientation measured(121.5f, -2.25f, 0.5f);
  Height height(31.5, HeightSource::Manual);
  MeasurementOptions options(0.0f, false, 2.0f, 1.0f, 1.0f, -1.0f, "after the storm", 0);
  std::unique_ptr<IAntennaAlignmentReportData> saved(store->SaveAlignmentReportData(
      &site, &location, &measured, &height, QDateTime::currentDateTime(), &options));
  if (!saved) return 1;

  std::unique_ptr<AntennaAlignmentPdfReportData> report(store->GetAlignmentReportDataForSite(siteName));
  if (!report) return 1;
  for (const IAntennaAlignmentReportData* record : *report->AlignmentData())
    std::printf("%s %s: off by %.2f degrees, %s\n", qPrintable(record->Identifier()),
                qPrintable(record->GetSiteInformation()->SectorName()), record->AzimuthErrorDegrees(),
                record->IsWithinThresholds() ? "within thresholds" : "to be corrected");
}
