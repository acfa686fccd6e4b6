#pragma once

#include <gtest/gtest.h>

#include <QStringList>

#include "model/Geolocation.h"
#include "model/Height.h"
#include "model/MeasurementOptions.h"
#include "model/Orientation.h"
#include "model/PathInformation.h"
#include "model/SiteInformation.h"

// Records that write down what they are asked, and that can lack an inner object.
inline QStringList asked;

template <typename Answer>
Answer Asked(const char* name, Answer answer) {
  asked.append(name);
  return answer;
}

class AskedOrientation : public Orientation {
 public:
  AskedOrientation() : Orientation(1, 2, 3) {}
  float AzimuthDegrees() const override { return Asked("AzimuthDegrees", 1.0F); }
  float TiltDegrees() const override { return Asked("TiltDegrees", 2.0F); }
  float RollDegrees() const override { return Asked("RollDegrees", 3.0F); }
};

class AskedGeolocation : public Geolocation {
 public:
  AskedGeolocation() : Geolocation(1, 2, 3, GpsDatum::Wgs84, QDateTime(), true) {}
  double LatitudeDegreesNorth() const override { return Asked("Latitude", 1.0); }
  double LongitudeDegreesEast() const override { return Asked("Longitude", 2.0); }
  double ElevationMeters() const override { return Asked("Elevation", 3.0); }
};

class AskedHeight : public Height {
 public:
  AskedHeight() : Height(1, static_cast<HeightSource>(2)) {}
  HeightSource HeightType() const override { return Asked("HeightType", Height::HeightType()); }
  double HeightInMeters(bool* valid) const override {
    EXPECT_NE(valid, nullptr);
    if (valid != nullptr) *valid = false;
    return Asked("HeightInMeters", 1.0);
  }
};

class AskedSite : public SiteInformation {
 public:
  explicit AskedSite(IOrientation* target)
      : SiteInformation("Site", "Sector", "Position", 0, 0, 0), target_(target) {}
  const QString& SiteIdentifier() const override {
    return *Asked("SiteIdentifier", &SiteInformation::SiteIdentifier());
  }
  const QString& SectorName() const override { return *Asked("SectorName", &SiteInformation::SectorName()); }
  const QString& AntennaPosition() const override {
    return *Asked("AntennaPosition", &SiteInformation::AntennaPosition());
  }
  IOrientation* TargetOrientation() const override { return Asked("TargetOrientation", target_); }

 private:
  IOrientation* const target_;
};

class AskedPath : public PathInformation {
 public:
  explicit AskedPath(IGeolocation* farEnd) : PathInformation("Path", 0, 0, 0), farEnd_(farEnd) {}
  const QString& PathIdentifier() const override {
    return *Asked("PathIdentifier", &PathInformation::PathIdentifier());
  }
  IGeolocation* PathLocation() const override { return Asked("PathLocation", farEnd_); }

 private:
  IGeolocation* const farEnd_;
};

class AskedOptions : public MeasurementOptions {
 public:
  AskedOptions() : MeasurementOptions(0, false, 0, 0, 0, 0, QString(), 0) {}
  float AzimuthOffset() const override { return Asked("AzimuthOffset", 1.0F); }
  bool TiltInversionEnabled() const override { return Asked("TiltInversionEnabled", true); }
  QString Note() const override { return Asked("Note", QString("note")); }
  int RollPrecision() const override { return Asked("RollPrecision", 2); }
  float AzimuthThreshold() const override { return Asked("AzimuthThreshold", 3.0F); }
  float TiltThreshold() const override { return Asked("TiltThreshold", 4.0F); }
  float RollThreshold() const override { return Asked("RollThreshold", 5.0F); }
  float PathLengthThreshold() const override { return Asked("PathLengthThreshold", 6.0F); }
};
