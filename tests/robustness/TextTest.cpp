// Texts of every kind through saves, lists, reports, deletions, preferences and screens of every version.
#include <memory>

#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"

namespace {

struct Sample {
  const char* name;
  QString text;
  QString stored;  // what comes back
};

QString Repeated(int count) { return QStringLiteral("0123456789abcdef").repeated(count / 16); }

// A character of every plane, the first of each that is not a surrogate or a noncharacter.
QString EveryPlane() {
  QVector<char32_t> points;
  for (char32_t plane = 0; plane <= 16; ++plane) points.append(plane * 0x10000 + 0x1234);
  return QString::fromUcs4(points.constData(), points.size());
}

std::vector<Sample> Samples() {
  const auto same = [](const char* name, const QString& text) { return Sample{name, text, text}; };
  const QString cut = QString(QStringLiteral("before")) + QChar(0) + QStringLiteral("after");
  return {
      same("Quotes", QStringLiteral("'a' \"b\" `c` ''d''")),
      {"Nul", cut, QStringLiteral("before")},
      same("Megabyte", Repeated(1 << 20)),
      same("EveryPlane", EveryPlane()),
      same("RightToLeft", QString::fromUtf8(u8"\u202bموقع برج\u202c אתר 7")),
      same("Combining", QString::fromUtf8(u8"e\u0301 \u00e9 \ufb01 \ufeff")),
      same("LineBreaks", QStringLiteral("a\nb\r\nc\td\\n")),
      same("Statement", QStringLiteral("'); DROP TABLE Sites; --")),
      same("Pattern", QStringLiteral("%_?*[a-z]$1:x@y")),
      same("Number", QStringLiteral("007")),
      same("Keyword", QStringLiteral("NULL")),
      same("Blanks", QStringLiteral("  leading and trailing  ")),
  };
}

using VersionAndSample = std::tuple<StoreVersion, Sample>;

void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

class TextTest : public testing::TestWithParam<VersionAndSample> {
 protected:
  const StoreVersion& version_ = std::get<StoreVersion>(GetParam());
  const Sample& sample_ = std::get<Sample>(GetParam());
  StoreFiles files_;
  StorePointer store_ = version_.create(files_.Main(), files_.Thresholds());
};

TEST_P(TextTest, SiteIsSavedListedReportedAndDeleted) {
  SampleSiteAlignment other(1);
  std::unique_ptr<IAntennaAlignmentReportData> record(other.Save(store_.get()));
  SampleSiteAlignment sample(2, sample_.text, sample_.text);
  sample.site.SetAntennaPosition(sample_.text);
  const MeasurementOptions options(0.5F, false, 1, 1, 1, 1, sample_.text, 0);
  record.reset(store_->SaveAlignmentReportData(&sample.site, &sample.location, &sample.measured,
                                               &sample.height, sample.time,
                                               const_cast<MeasurementOptions*>(&options)));
  ASSERT_NE(record, nullptr);
  EXPECT_TRUE(store_->GetSiteIdentifiers().contains(sample_.stored));
  EXPECT_EQ(store_->GetSiteIdentifiers().size(), 2);

  QString identifier = sample_.text;
  QString sector;
  const std::unique_ptr<AntennaAlignmentPdfReportData> reports(
      store_->GetAlignmentReportDataForSite(identifier));
  ASSERT_EQ(reports->AlignmentData()->size(), 1);
  const IAntennaAlignmentReportData& read = *reports->AlignmentData()->first();
  EXPECT_EQ(read.GetSiteInformation()->SiteIdentifier(), sample_.stored);
  EXPECT_EQ(read.GetSiteInformation()->SectorName(), sample_.stored);
  EXPECT_EQ(read.GetSiteInformation()->AntennaPosition(), sample_.stored);
  EXPECT_EQ(read.Note(), version_.HasSiteNote() ? sample_.stored : QString());

  EXPECT_EQ(files_.Lines(), QStringList());
  EXPECT_TRUE(store_->DeleteReportsBySiteAndSector(identifier, sector));
  EXPECT_EQ(store_->GetSiteIdentifiers(), QVector<QString>{other.site.SiteIdentifier()});
  // A deletion writes the keys that it goes by.
  files_.Lines();
}

TEST_P(TextTest, PathIsSavedListedReportedAndDeleted) {
  SamplePathAlignment other(1);
  std::unique_ptr<IPathAlignmentReportData> record(other.Save(store_.get()));
  SamplePathAlignment sample(2, sample_.text);
  MeasurementOptions options(0.5F, false, 1, 1, 1, 1, sample_.text, 0);
  record.reset(store_->SavePathReportData(&sample.path, &sample.location, &sample.target, &sample.measured,
                                          &sample.height, sample.time, &options));
  ASSERT_NE(record, nullptr);
  EXPECT_TRUE(store_->GetPathIdentifiers().contains(sample_.stored));
  EXPECT_EQ(files_.Lines(), QStringList());

  QString identifier = sample_.text;
  {
    const std::unique_ptr<PathAlignmentPdfReportData> reports(
        store_->GetPathAlignmentReportDataForSite(identifier));
    ASSERT_EQ(reports->PathData()->size(), 1);
    const IPathAlignmentReportData& read = *reports->PathData()->first();
    EXPECT_EQ(read.GetPathInformation()->PathIdentifier(), sample_.stored);
    EXPECT_EQ(read.Note(), version_.HasPathNote() ? sample_.stored : QString());
  }
  // Path reports leave their connections open, and those read-lock nothing once they are read to the end.
  SqliteCalls::CloseLeaked();

  EXPECT_TRUE(store_->DeleteReportsByPath(identifier));
  EXPECT_EQ(store_->GetPathIdentifiers(), QVector<QString>{other.path.PathIdentifier()});
  // Reports of paths write that their connections stay open, a deletion its keys.
  files_.Lines();
}

TEST_P(TextTest, PreferencesComeBack) {
  PreferencesModel saved;
  saved.CalibrationDate()->SetValue(sample_.text);
  saved.BluetoothDisplayName()->SetValue(sample_.text);
  saved.UserTechId()->SetValue(sample_.text);
  ASSERT_TRUE(store_->SavePreferences(&saved));
  PreferencesModel read;
  const QString name = read.BluetoothDisplayName()->Value();
  const QString technician = read.UserTechId()->Value();
  ASSERT_TRUE(store_->RestorePreferences(&read));
  EXPECT_EQ(read.CalibrationDate()->Value(), sample_.stored);
  EXPECT_EQ(read.BluetoothDisplayName()->Value(), version_.number >= 3 ? sample_.stored : name);
  EXPECT_EQ(read.UserTechId()->Value(), version_.number == 7 ? sample_.stored : technician);
}

TEST_P(TextTest, ScreensComeBack) {
  AlignerModel saved;
  saved.SetCurrentSiteInformation(new SiteInformation(sample_.text, sample_.text, sample_.text, 1, 2, 3));
  saved.SetCurrentPathInformation(new PathInformation(sample_.text, 1, 2, 3));
  ASSERT_TRUE(store_->StoreInputContents(&saved));
  AlignerModel read;
  ASSERT_TRUE(store_->RestoreInputContents(&read));
  EXPECT_EQ(read.CurrentSiteInformation()->SiteIdentifier(), sample_.stored);
  EXPECT_EQ(read.CurrentSiteInformation()->SectorName(), sample_.stored);
  EXPECT_EQ(read.CurrentSiteInformation()->AntennaPosition(), sample_.stored);
  EXPECT_EQ(read.CurrentPathInformation()->PathIdentifier(), sample_.stored);
}

INSTANTIATE_TEST_SUITE_P(All, TextTest,
                         testing::Combine(testing::ValuesIn(StoreVersion::All()),
                                          testing::ValuesIn(Samples())),
                         [](const testing::TestParamInfo<VersionAndSample>& tested) {
                           return std::string(std::get<Sample>(tested.param).name) + "Version" +
                                  std::to_string(std::get<StoreVersion>(tested.param).number);
                         });

// Bytes that are not UTF-8, written by other hands: each is read as a replacement character, and the rest of
// the text stays readable.
class ForeignTextTest : public CreatedStoreTest {};

TEST_P(ForeignTextTest, InvalidUtf8IsReadAsReplacements) {
  SampleSiteAlignment sample(1);
  const std::unique_ptr<IAntennaAlignmentReportData> record(sample.Save(store_.get()));
  RunSql(Main(), QStringLiteral("UPDATE AntennaAlignment SET SectorName = CAST(x'61FF62C362' AS TEXT);"
                                "INSERT INTO Sites (SiteIdentifier) VALUES (CAST(x'FE' AS TEXT))"));
  const QString replacement(QChar::ReplacementCharacter);
  QString identifier = QStringLiteral("Site 1");
  const std::unique_ptr<AntennaAlignmentPdfReportData> reports(
      store_->GetAlignmentReportDataForSite(identifier));
  ASSERT_EQ(reports->AlignmentData()->size(), 1);
  EXPECT_EQ(reports->AlignmentData()->first()->GetSiteInformation()->SectorName(),
            QStringLiteral("a") + replacement + QStringLiteral("b") + replacement + QStringLiteral("b"));
  EXPECT_TRUE(store_->GetSiteIdentifiers().contains(replacement));
}

INSTANTIATE_FOR_ALL_VERSIONS(ForeignTextTest);

}  // namespace
