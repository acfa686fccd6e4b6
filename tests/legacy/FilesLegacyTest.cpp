// What the stores of versions 1 to 6 do to files: the main file alone, with the columns of the version.
#include <sqlite3.h>

#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/store/SamplePreferences.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"

namespace {

using LegacyFilesTest = StoreVersionTest;

// Every operation of the interface, over a second path that cannot be opened: opening it would be noticed.
TEST_P(LegacyFilesTest, TheSecondPathIsNeverOpened) {
  SqliteLeakGuard::ExpectLeaked(2, 2);  // the two retrievals of a path
  SqliteCalls::Record();
  const StorePointer store = Version().create(Main(), "/no such folder/thresholds.sqlite");
  SamplePreferences preferences;
  AlignerModel screens;
  QString site = QStringLiteral("Site 1");
  QString path = QStringLiteral("Path 2");
  QString sector;
  delete SampleSiteAlignment(1).Save(store.get());
  delete SamplePathAlignment(2).Save(store.get());
  delete store->GetAlignmentReportDataForSite(site);
  delete store->GetPathAlignmentReportDataForSite(path);
  EXPECT_EQ(store->GetSiteIdentifiers(), QVector<QString>{site});
  EXPECT_EQ(store->GetPathIdentifiers(), QVector<QString>{path});
  EXPECT_TRUE(store->SavePreferences(&preferences));
  EXPECT_TRUE(store->RestorePreferences(&preferences));
  EXPECT_TRUE(store->StoreInputContents(&screens));
  EXPECT_TRUE(store->RestoreInputContents(&screens));
  EXPECT_TRUE(store->DeleteReportsBySiteAndIndex(site, 0));
  EXPECT_TRUE(store->DeleteReportsByPathAndIndex(path, 0));
  EXPECT_TRUE(store->DeleteReportsBySiteAndSector(site, sector));
  EXPECT_TRUE(store->DeleteReportsByPath(path));
  store->Close();
  const QStringList opened = SqliteCalls::TakeTrace().filter("open_v2");
  EXPECT_EQ(opened.filter("main.sqlite").size(), opened.size());
  EXPECT_EQ(opened.size(), 17);  // one for the creation and for each call, two where a retrieval comes first
  Lines();
}

// Preferences of the model that the version has no column for are neither written nor read.
TEST_P(LegacyFilesTest, PreferencesOfLaterVersionsAreLeftAlone) {
  const StorePointer store = Create();
  SamplePreferences saved;
  AssignSamples(&saved);
  EXPECT_TRUE(store->SavePreferences(&saved));
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT %1 FROM Preferences")
                             .arg(ColumnsOf(MainSamplesOf(Version().number)).join(", "))),
            QStringList(WrittenBy(MainSamplesOf(Version().number))));
  SamplePreferences restored;
  restored.UserTechId()->SetValue("kept");
  restored.PathLengthThreshold()->SetValue(77.0);
  ASSERT_TRUE(restored.GeoidFormat()->AssignValueWithKey(134));
  EXPECT_TRUE(store->RestorePreferences(&restored));
  EXPECT_EQ(restored.UserTechId()->Value(), QString("kept"));
  EXPECT_EQ(restored.PathLengthThreshold()->Value(), 77.0);
  EXPECT_EQ(restored.GeoidFormat()->CurrentValue()->Key(), Version().number >= 6 ? 133U : 134U);
  EXPECT_EQ(restored.SerialNumber()->Value(), -2147483647 - 1);
}

// The column is there from version 4 on, keeps what a tool has written until the next save, and reaches no
// setting of the model.
TEST_P(LegacyFilesTest, TheLanguageReachesNoSetting) {
  const bool hasLanguage = Version().number >= 4;
  EXPECT_EQ(Version().create(Main(), Thresholds())->Version(), Version().number);
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT count(*) FROM pragma_table_info('Preferences') WHERE name = "
                                        "'Language'")),
            QStringList(hasLanguage ? "1" : "0"));
  const StorePointer store = Open();
  SamplePreferences model;
  AssignSamples(&model);
  EXPECT_TRUE(store->SavePreferences(&model));
  const QString columns = ColumnsOf(MainSamplesOf(Version().number)).join(", ");
  const QStringList row = Rows(Main(), QStringLiteral("SELECT %1 FROM Preferences").arg(columns));
  if (hasLanguage) RunSql(Main(), QStringLiteral("UPDATE Preferences SET Language = 5"));
  EXPECT_TRUE(store->RestorePreferences(&model));
  EXPECT_TRUE(store->SavePreferences(&model));
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT %1 FROM Preferences").arg(columns)), row);
}

std::vector<StoreVersion> EarlierVersions() {
  std::vector<StoreVersion> versions = StoreVersion::All();
  versions.pop_back();
  return versions;
}

INSTANTIATE_TEST_SUITE_P(All, LegacyFilesTest, testing::ValuesIn(EarlierVersions()), StoreVersionName);

}  // namespace
