#include "model/SiteInformation.h"

#include "model/Orientation.h"

ISiteInformation::~ISiteInformation() = default;

SiteInformation::SiteInformation(const QString& siteIdentifier, const QString& sectorName,
                                 const QString& antennaPosition, float targetAzimuthDegrees,
                                 float targetTiltDegrees, float targetRollDegrees)
    : siteIdentifier_(siteIdentifier),
      sectorName_(sectorName),
      antennaPosition_(antennaPosition),
      targetOrientation_(
          std::make_unique<Orientation>(targetAzimuthDegrees, targetTiltDegrees, targetRollDegrees)) {}

SiteInformation::~SiteInformation() = default;

SiteInformation* SiteInformation::Clone() const {
  return new SiteInformation(siteIdentifier_, sectorName_, antennaPosition_,
                             targetOrientation_->AzimuthDegrees(), targetOrientation_->TiltDegrees(),
                             targetOrientation_->RollDegrees());
}

bool SiteInformation::IsValid() const { return !siteIdentifier_.isEmpty(); }

void SiteInformation::SetSiteIdentifier(const QString& siteIdentifier) { siteIdentifier_ = siteIdentifier; }

void SiteInformation::SetSectorName(const QString& sectorName) { sectorName_ = sectorName; }

void SiteInformation::SetAntennaPosition(const QString& antennaPosition) {
  antennaPosition_ = antennaPosition;
}

const QString& SiteInformation::SiteIdentifier() const { return siteIdentifier_; }

const QString& SiteInformation::SectorName() const { return sectorName_; }

const QString& SiteInformation::AntennaPosition() const { return antennaPosition_; }

IOrientation* SiteInformation::TargetOrientation() const { return targetOrientation_.get(); }

void SiteInformation::SetTargetOrientation(float azimuthDegrees, float tiltDegrees, float rollDegrees) {
  targetOrientation_ = std::make_unique<Orientation>(azimuthDegrees, tiltDegrees, rollDegrees);
}
