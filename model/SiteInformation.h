#pragma once

#include <QString>
#include <memory>

#include "TarnbeamDatabaseExport.h"
#include "model/ISiteInformation.h"

/// A site record that can be edited.
class TARNBEAMDATABASE_EXPORT SiteInformation : public ISiteInformation {
 public:
  /// Makes its target orientation from the three angles, in degrees.
  SiteInformation(const QString& siteIdentifier, const QString& sectorName, const QString& antennaPosition,
                  float targetAzimuthDegrees, float targetTiltDegrees, float targetRollDegrees);
  SiteInformation(const SiteInformation&) = delete;
  SiteInformation& operator=(const SiteInformation&) = delete;

  SiteInformation* Clone() const override;
  bool IsValid() const override;
  void SetSiteIdentifier(const QString& siteIdentifier) override;
  void SetSectorName(const QString& sectorName) override;
  void SetAntennaPosition(const QString& antennaPosition) override;
  const QString& SiteIdentifier() const override;
  const QString& SectorName() const override;
  const QString& AntennaPosition() const override;
  IOrientation* TargetOrientation() const override;
  void SetTargetOrientation(float azimuthDegrees, float tiltDegrees, float rollDegrees) override;
  ~SiteInformation() override;

 private:
  QString siteIdentifier_;
  QString sectorName_;
  QString antennaPosition_;
  std::unique_ptr<IOrientation> targetOrientation_;
};
