#pragma once

#include <QDateTime>

#include "TarnbeamDatabaseExport.h"
#include "model/IHeight.h"
#include "model/ObservableModel.h"

/// A height that can be changed and observed. A new one is valid.
class TARNBEAMDATABASE_EXPORT Height : public IHeight, public ObservableModel {
 public:
  /// Metres.
  Height(double heightInMeters, HeightSource heightType);

  void AddObserver(IModelObserver* observer) override;
  void RemoveObserver(IModelObserver* observer) override;
  void NotifyObserversOfChange() override;
  Height* Clone() const override;
  bool IsValid() const override;
  void Invalidate() override;
  void SetHeight(double meters, HeightSource type) override;
  void SetHeightInMeters(double meters) override;
  void SetHeightInFeet(double feet) override;
  void SetHeightType(HeightSource type) override;
  double HeightInFeet(bool* valid) const override;
  bool IsFromGps() const override;
  QDateTime MeasurementTime() const override;
  void SetMeasurementTime(const QDateTime& time) override;
  double UncertaintyInMeters() const override;
  void SetUncertaintyInMeters(double meters) override;
  HeightSource HeightType() const override;
  double HeightInMeters(bool* valid) const override;
  ~Height() override;

 private:
  double heightInMeters_;
  HeightSource heightType_;
  bool valid_ = true;
  QDateTime measurementTime_;
  double uncertaintyInMeters_ = 0.0;
};
