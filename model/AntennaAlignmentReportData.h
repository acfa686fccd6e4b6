#pragma once

#include "TarnbeamDatabaseExport.h"
#include "model/AlignmentReportData.h"

/// Record of a site alignment. It borrows the objects it is constructed with until `TakeOwnership` is
/// called; any of them may be null.
class TARNBEAMDATABASE_EXPORT AntennaAlignmentReportData
    : public AlignmentReportData<IAntennaAlignmentReportData> {
 public:
  /// `antennaAlignmentKey` is the key of the alignment in the main file.
  AntennaAlignmentReportData(unsigned int antennaAlignmentKey, ISiteInformation* siteInformation,
                             IGeolocation* geolocation, IOrientation* measuredOrientation, IHeight* height,
                             QDateTime measurementTime, IMeasurementOptions* measurementOptions);

  AntennaAlignmentReportData* Clone() const override;
  QString Identifier() const override;
  bool IsWithinThresholds() const override;
  ISiteInformation* GetSiteInformation() const override;
  unsigned int AntennaAlignmentKey() const override;
  ~AntennaAlignmentReportData() override;

 private:
  const unsigned int antennaAlignmentKey_;
  ISiteInformation* const siteInformation_;
};
