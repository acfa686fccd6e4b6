// Files written by the store of an earlier version, converted, and read by the current store.
#include <QVariant>
#include <memory>

#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/AllStores.h"
#include "tests/migration/ConversionTest.h"
#include "tests/support/SampleAlignments.h"

namespace {

// What is asked of a store here, whatever its class.
struct EarlierStore {
  int version;
  void (*write)(const TemporaryFolder& folder);
};

void FillPreferences(IPreferencesModel* model) {
  model->DistanceUnits()->AssignValueWithKey(1);
  model->AutoShutoffDelay()->AssignValueWithKey(3);
  model->TimeZone()->AssignValueWithKey(17);
  model->GeoidFormat()->AssignValueWithKey(1);
  model->ShowTarget()->SetValue(false);
  model->AzimuthThreshold()->SetValue(1.25);
  model->AccelerometerXOffset()->SetValue(0.125);
  model->AccelerometerZGain()->SetValue(0.875);
  model->CalibrationDate()->SetValue(QString::fromUtf8("März"));
  model->SerialNumber()->SetValue(4711);
  model->AccelerometerCalibrated()->SetValue(false);
  model->GNSSFileCRC()->SetValue(-77);
  model->TiltIndicatorEnabled()->SetValue(false);
  model->RollIndicatorEnabled()->SetValue(false);
  model->TiltInversionEnabled()->SetValue(true);
  model->BluetoothDisplayName()->SetValue("Mast 7");
  model->RollPrecision()->SetValue(true);
  model->UserTechId()->SetValue("tech");
}

// The settings above, in the order of their columns.
QString Described(IPreferencesModel* model) {
  QStringList values;
  const auto add = [&](const auto& value) { values.append(QVariant(value).toString()); };
  add(model->DistanceUnits()->CurrentValue()->Key());
  add(model->AutoShutoffDelay()->CurrentValue()->Key());
  add(model->ShowTarget()->Value());
  add(model->AzimuthThreshold()->Value());
  add(model->AccelerometerXOffset()->Value());
  add(model->CalibrationDate()->Value());
  add(model->SerialNumber()->Value());
  add(model->TimeZone()->CurrentValue()->Key());
  add(model->AccelerometerZGain()->Value());
  add(model->AccelerometerCalibrated()->Value());
  add(model->GNSSFileCRC()->Value());
  add(model->TiltIndicatorEnabled()->Value());
  add(model->RollIndicatorEnabled()->Value());
  add(model->TiltInversionEnabled()->Value());
  add(model->BluetoothDisplayName()->Value());
  add(model->RollPrecision()->Value());
  add(model->GeoidFormat()->CurrentValue()->Key());
  add(model->UserTechId()->Value());
  return values.join(QLatin1Char(','));
}

QString Described(const IOrientation* orientation) {
  return QStringLiteral("%1/%2/%3")
      .arg(static_cast<double>(orientation->AzimuthDegrees()))
      .arg(static_cast<double>(orientation->TiltDegrees()))
      .arg(static_cast<double>(orientation->RollDegrees()));
}

QString Described(const IGeolocation* location) {
  return QStringLiteral("%1/%2/%3")
      .arg(location->LatitudeDegreesNorth())
      .arg(location->LongitudeDegreesEast())
      .arg(location->ElevationMeters());
}

QString Described(const IHeight* height) {
  bool valid = false;
  const double meters = height->HeightInMeters(&valid);
  return QStringLiteral("%1m type %2").arg(meters).arg(static_cast<int>(height->HeightType()));
}

QString Described(const IMeasurementOptions* options) {
  return QStringLiteral("offset %1 inversion %2 note '%3' roll precision %4 thresholds %5/%6/%7/%8")
      .arg(static_cast<double>(options->AzimuthOffset()))
      .arg(options->TiltInversionEnabled())
      .arg(options->Note())
      .arg(options->RollPrecision())
      .arg(static_cast<double>(options->AzimuthThreshold()))
      .arg(static_cast<double>(options->TiltThreshold()))
      .arg(static_cast<double>(options->RollThreshold()))
      .arg(static_cast<double>(options->PathLengthThreshold()));
}

template <typename Record>
QString DescribedMeasurement(const Record& record) {
  return QStringList{Described(record.GetGeolocation()), Described(record.GetMeasuredOrientation()),
                     Described(record.GetHeight()),
                     QString::number(record.GetMeasurementTime().toSecsSinceEpoch()),
                     Described(record.GetMeasurementOptions())}
      .join(QStringLiteral("; "));
}

QString Described(const ISiteInformation* site) {
  return QStringList{site->SiteIdentifier(), site->SectorName(), site->AntennaPosition(),
                     Described(site->TargetOrientation())}
      .join(QStringLiteral("; "));
}

QString Described(const IPathInformation* path) {
  return path->PathIdentifier() + QStringLiteral("; ") + Described(path->PathLocation());
}

// What a file of `version` keeps of the options, and what the steps after it and the missing thresholds add.
MeasurementOptions Kept(const MeasurementOptions& options, int version, bool ofSite) {
  const bool hasNote = ofSite && version >= 4;
  const bool hasRollPrecision = ofSite && version >= 5;
  return MeasurementOptions(options.AzimuthOffset(), version >= 3 && options.TiltInversionEnabled(), 0.0F,
                            0.0F, 0.0F, -1.0F, hasNote ? options.Note() : QString(),
                            hasRollPrecision ? static_cast<unsigned long>(options.RollPrecision()) : 0UL);
}

// Height type 1 means GPS until version 5; from version 6 on that is type 3.
Height Kept(const Height& height, int version) {
  bool valid = false;
  const bool changes = version <= 5 && static_cast<int>(height.HeightType()) == 1;
  return Height(height.HeightInMeters(&valid), changes ? static_cast<HeightSource>(3) : height.HeightType());
}

QString Expected(const SampleMeasurement& sample, int version, bool ofSite) {
  const Height height = Kept(sample.height, version);
  const MeasurementOptions options = Kept(sample.options, version, ofSite);
  return QStringList{Described(&sample.location), Described(&sample.measured), Described(&height),
                     QString::number(sample.time.toSecsSinceEpoch()), Described(&options)}
      .join(QStringLiteral("; "));
}

// Samples 1 to 3 have the height types 2, 3 and 1.
constexpr int sampleCount = 3;

template <typename Store>
void Write(const TemporaryFolder& folder) {
  const std::unique_ptr<Store> store(Store::Create(folder.Main(), folder.Thresholds()));
  for (int number = 1; number <= sampleCount; ++number) {
    const std::unique_ptr<IAntennaAlignmentReportData> site(SampleSiteAlignment(number).Save(store.get()));
    const std::unique_ptr<IPathAlignmentReportData> path(SamplePathAlignment(number).Save(store.get()));
    ASSERT_TRUE(site && path);
  }
  PreferencesModel preferences;
  FillPreferences(&preferences);
  ASSERT_TRUE(store->SavePreferences(&preferences));
  AlignerModel screens;
  screens.SetCurrentSiteInformation(SampleSiteAlignment(8).site.Clone());
  screens.SetCurrentPathInformation(SamplePathAlignment(9).path.Clone());
  ASSERT_TRUE(store->StoreInputContents(&screens));
}

class RoundTripTest : public testing::TestWithParam<EarlierStore> {
 protected:
  RoundTripTest() : folder_(scratchFolder) {}

  static int Version() { return GetParam().version; }

  // Writes, converts and opens.
  void SetUp() override {
    GetParam().write(folder_);
    ASSERT_FALSE(QFile::exists(folder_.Thresholds()));
    ASSERT_TRUE(ConvertToCurrent(Version(), folder_.Main()));
    store_.reset(CurrentStore::Create(folder_.Main(), folder_.Thresholds()));
    unsigned int found = 0;
    EXPECT_TRUE(AlignmentDatabase::GetDatabaseFileVersion(folder_.Main(), &found));
    EXPECT_EQ(found, currentSchemaVersion);
  }

  TemporaryFolder folder_;
  std::unique_ptr<CurrentStore> store_;
};

std::string NameOfStore(const testing::TestParamInfo<EarlierStore>& info) {
  return "Version" + std::to_string(info.param.version);
}

std::vector<EarlierStore> EarlierStores() {
  int version = 0;
  const auto stores = AllStores::Table([&version](auto store) {
    return EarlierStore{++version, &Write<typename decltype(store)::Type>};
  });
  return {stores.begin(), stores.end() - 1};
}

INSTANTIATE_TEST_SUITE_P(Stores, RoundTripTest, testing::ValuesIn(EarlierStores()), NameOfStore);

TEST_P(RoundTripTest, SiteAlignments) {
  EXPECT_EQ(store_->GetSiteIdentifiers(), (QVector<QString>{"Site 1", "Site 2", "Site 3"}));
  for (int number = 1; number <= sampleCount; ++number) {
    const SampleSiteAlignment sample(number);
    QString identifier = sample.site.SiteIdentifier();
    const std::unique_ptr<AntennaAlignmentPdfReportData> report(
        store_->GetAlignmentReportDataForSite(identifier));
    ASSERT_TRUE(report && report->AlignmentData()->size() == 1);
    const IAntennaAlignmentReportData& record = *report->AlignmentData()->first();
    EXPECT_EQ(record.AntennaAlignmentKey(), static_cast<unsigned int>(number));
    EXPECT_EQ(Described(record.GetSiteInformation()), Described(&sample.site));
    EXPECT_EQ(DescribedMeasurement(record), Expected(sample, Version(), true));
  }
}

TEST_P(RoundTripTest, PathAlignments) {
  EXPECT_EQ(store_->GetPathIdentifiers(), (QVector<QString>{"Path 1", "Path 2", "Path 3"}));
  for (int number = 1; number <= sampleCount; ++number) {
    const SamplePathAlignment sample(number);
    const std::unique_ptr<PathAlignmentPdfReportData> report(
        store_->GetPathAlignmentReportDataForSite(sample.path.PathIdentifier()));
    ASSERT_TRUE(report && report->PathData()->size() == 1);
    const IPathAlignmentReportData& record = *report->PathData()->first();
    EXPECT_EQ(record.PathAlignmentKey(), static_cast<unsigned int>(number));
    EXPECT_EQ(Described(record.GetPathInformation()), Described(&sample.path));
    EXPECT_EQ(Described(record.GetTargetOrientation()), Described(&sample.target));
    EXPECT_EQ(DescribedMeasurement(record), Expected(sample, Version(), false));
  }
  // Every retrieval leaves its two connections and their statements open.
  SqliteLeakGuard::ExpectLeaked(2 * sampleCount, 2 * sampleCount);
}

TEST_P(RoundTripTest, Preferences) {
  PreferencesModel expected;
  FillPreferences(&expected);
  if (Version() == 1) {
    expected.AutoShutoffDelay()->AssignValueWithKey(1);
    expected.AccelerometerCalibrated()->SetValue(true);
    expected.GNSSFileCRC()->SetValue(0);
    expected.TiltIndicatorEnabled()->SetValue(true);
    expected.RollIndicatorEnabled()->SetValue(true);
  }
  if (Version() <= 2) {
    expected.TiltInversionEnabled()->SetValue(false);
    expected.BluetoothDisplayName()->SetValue("Tarnbeam");
  }
  if (Version() <= 4) expected.RollPrecision()->SetValue(false);
  if (Version() <= 5) expected.GeoidFormat()->AssignValueWithKey(0);
  expected.UserTechId()->SetValue("tbm001");
  PreferencesModel restored;
  EXPECT_TRUE(store_->RestorePreferences(&restored));
  EXPECT_EQ(Described(&restored), Described(&expected));
}

TEST_P(RoundTripTest, Screens) {
  const SampleSiteAlignment site(8);
  const SamplePathAlignment path(9);
  AlignerModel screens;
  EXPECT_TRUE(store_->RestoreInputContents(&screens));
  ASSERT_TRUE(screens.HasCurrentSite() && screens.HasCurrentPath());
  EXPECT_EQ(Described(screens.CurrentSiteInformation()), Described(&site.site));
  EXPECT_EQ(Described(screens.CurrentPathInformation()), Described(&path.path));
}

}  // namespace
