#pragma once

#include <QDateTime>
#include <QString>

#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"

// What site and path alignments have in common. Within one sample no two numbers are alike. Samples with
// other numbers differ in every value, except that the flag alternates and height sources repeat after three.
// Every float is exact in binary.
struct SampleMeasurement {
  explicit SampleMeasurement(int number)
      : time(QDateTime::fromSecsSinceEpoch(1500000000 + number)),
        location(51.5 + number, -0.125 - number, 35.25 + number, GpsDatum::Wgs84, time, true),
        measured(120.5F + Step(number), -3.25F - Step(number), 1.75F + Step(number)),
        height(22.5 + number, static_cast<HeightSource>(1 + number % 3)),
        options(0.375F + Step(number), number % 2 == 0, 2.5F + Step(number), 4.5F + Step(number),
                6.5F + Step(number), 8.5F + Step(number), QStringLiteral("note %1").arg(number),
                10UL + static_cast<unsigned long>(number)) {}

  static float Step(int number) { return static_cast<float>(number); }

  QDateTime time;
  Geolocation location;
  Orientation measured;
  Height height;
  MeasurementOptions options;
};

// A site alignment as the application hands it to a store: site "Site N", sector "Sector N", position
// "Position N". To make samples of the same site or sector, give these texts.
struct SampleSiteAlignment : SampleMeasurement {
  explicit SampleSiteAlignment(int number)
      : SampleSiteAlignment(number, QStringLiteral("Site %1").arg(number),
                            QStringLiteral("Sector %1").arg(number)) {}
  SampleSiteAlignment(int number, const QString& siteIdentifier, const QString& sectorName)
      : SampleMeasurement(number),
        site(siteIdentifier, sectorName, QStringLiteral("Position %1").arg(number), 90.5F + Step(number),
             -5.75F - Step(number), 3.125F + Step(number)) {}

  template <typename Store>
  auto Save(Store* store) {
    return store->SaveAlignmentReportData(&site, &location, &measured, &height, time, &options);
  }

  SiteInformation site;
};

// A path alignment likewise: path "Path N".
struct SamplePathAlignment : SampleMeasurement {
  explicit SamplePathAlignment(int number)
      : SamplePathAlignment(number, QStringLiteral("Path %1").arg(number)) {}
  SamplePathAlignment(int number, const QString& pathIdentifier)
      : SampleMeasurement(number),
        path(pathIdentifier, 48.75 + number, 11.625 + number, 519.5 + number),
        target(200.25F + Step(number), -7.5F - Step(number), 5.875F + Step(number)) {}

  template <typename Store>
  auto Save(Store* store) {
    return store->SavePathReportData(&path, &location, &target, &measured, &height, time, &options);
  }

  PathInformation path;
  Orientation target;
};
