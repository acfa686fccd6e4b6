#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"

class IOrientation;

/// A sector antenna at a cell site and the orientation it should have. The order of the virtual
/// operations is binary interface.
class TARNBEAMDATABASE_EXPORT ISiteInformation {
 public:
  /// A copy, owned by the caller.
  virtual ISiteInformation* Clone() const = 0;

  /// Whether the site has an identifier.
  virtual bool IsValid() const = 0;

  /// The name by which the site is found.
  virtual void SetSiteIdentifier(const QString& siteIdentifier) = 0;
  /// The sector that the antenna serves.
  virtual void SetSectorName(const QString& sectorName) = 0;
  /// The antenna's place in its sector.
  virtual void SetAntennaPosition(const QString& antennaPosition) = 0;
  /// The name by which the site is found.
  virtual const QString& SiteIdentifier() const = 0;
  /// The sector that the antenna serves.
  virtual const QString& SectorName() const = 0;
  /// The antenna's place in its sector.
  virtual const QString& AntennaPosition() const = 0;

  /// The orientation the antenna should have. Owned by the site; replaced by `SetTargetOrientation`.
  virtual IOrientation* TargetOrientation() const = 0;

  /// Replaces the target orientation; angles in degrees.
  virtual void SetTargetOrientation(float azimuthDegrees, float tiltDegrees, float rollDegrees) = 0;

  virtual ~ISiteInformation();
};
