#pragma once

#include <QString>
#include <memory>

#include "TarnbeamDatabaseExport.h"
#include "model/IPathInformation.h"

/// A path record that can be edited.
class TARNBEAMDATABASE_EXPORT PathInformation : public IPathInformation {
 public:
  /// Makes its far end from latitude in degrees north, longitude in degrees east, elevation in metres.
  PathInformation(const QString& pathIdentifier, double latitudeDegreesNorth, double longitudeDegreesEast,
                  double elevationMeters);
  PathInformation(const PathInformation&) = delete;
  PathInformation& operator=(const PathInformation&) = delete;

  PathInformation* Clone() const override;
  bool IsValid() const override;
  void Clear() override;
  void SetPathIdentifier(const QString& pathIdentifier) override;
  void SetPathLocation(double latitudeDegreesNorth, double longitudeDegreesEast,
                       double elevationMeters) override;
  const QString& PathIdentifier() const override;
  IGeolocation* PathLocation() const override;
  ~PathInformation() override;

 private:
  QString pathIdentifier_;
  std::unique_ptr<IGeolocation> pathLocation_;
};
