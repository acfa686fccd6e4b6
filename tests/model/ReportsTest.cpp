#include <gtest/gtest.h>

#include <QStringList>
#include <initializer_list>
#include <memory>
#include <ostream>
#include <string>

#include "model/AntennaAlignmentReportData.h"
#include "model/PathAlignmentReportData.h"
#include "model/SiteInformation.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/model/Counted.h"
#include "tests/support/LogCapture.h"

namespace {

IAntennaAlignmentReportData* SiteRecord(const QString& sector, const QString& position) {
  auto* record = new AntennaAlignmentReportData(1, new SiteInformation("S1", sector, position, 0, 0, 0),
                                                nullptr, nullptr, nullptr, QDateTime(), nullptr);
  record->TakeOwnership();
  return record;
}

struct Label {
  QString sector;
  QString position;
};

/// Sector names and positions, in the order in which a container keeps records made from `labels`.
QStringList Sorted(const QVector<Label>& labels) {
  auto* records = new QVector<IAntennaAlignmentReportData*>();
  for (const Label& label : labels) {
    records->append(SiteRecord(label.sector, label.position));
  }
  const AntennaAlignmentPdfReportData report("S1", "S1-A-Report", records);
  EXPECT_EQ(report.AlignmentData(), records);
  QStringList sorted;
  for (const IAntennaAlignmentReportData* record : *report.AlignmentData()) {
    const ISiteInformation* site = record->GetSiteInformation();
    sorted.append(site->SectorName() + ' ' + site->AntennaPosition());
  }
  return sorted;
}

TEST(AntennaAlignmentPdfReportDataTest, SortsBySectorThenPositionWithoutRegardToCase) {
  EXPECT_EQ(Sorted({{"b", "1"}, {"A", "2"}, {"a", "1"}}), QStringList({"a 1", "A 2", "b 1"}));
}

TEST(AntennaAlignmentPdfReportDataTest, KeepsRecordsThatAreInOrder) {
  EXPECT_EQ(Sorted({{"a", "1"}, {"a", "2"}, {"b", "1"}}), QStringList({"a 1", "a 2", "b 1"}));
}

TEST(AntennaAlignmentPdfReportDataTest, LeavesEmptyAndSingleVectorsAsTheyAre) {
  EXPECT_EQ(Sorted({}), QStringList());
  EXPECT_EQ(Sorted({{"a", "1"}}), QStringList({"a 1"}));
}

// With a second one it could not be compared.
TEST(AntennaAlignmentPdfReportDataTest, ASingleRecordIsAskedForNothing) {
  auto* siteless =
      new AntennaAlignmentReportData(1, nullptr, nullptr, nullptr, nullptr, QDateTime(), nullptr);
  for (IAntennaAlignmentReportData* const record :
       std::initializer_list<IAntennaAlignmentReportData*>{nullptr, siteless}) {
    const QVector<IAntennaAlignmentReportData*> given{record};
    AntennaAlignmentPdfReportData report("S1", "S1-A-Report",
                                         new QVector<IAntennaAlignmentReportData*>(given));
    report.SortReportData();
    EXPECT_EQ(*report.AlignmentData(), given);
  }
}

// The vector becomes the container's own even if there is nothing to sort.
TEST(AntennaAlignmentPdfReportDataTest, ASingleRecordsVectorIsMadeItsOwn) {
  auto* records = new QVector<IAntennaAlignmentReportData*>{SiteRecord("a", "1")};
  const QVector<IAntennaAlignmentReportData*> asGiven = *records;
  ASSERT_FALSE(records->isDetached());
  const AntennaAlignmentPdfReportData report("S1", "S1-A-Report", records);
  EXPECT_TRUE(report.AlignmentData()->isDetached());
  EXPECT_EQ(*report.AlignmentData(), asGiven);
}

TEST(AntennaAlignmentPdfReportDataTest, SortsManyRecords) {
  QVector<Label> labels;
  QStringList expected;
  for (int number = 0; number < 100; ++number) {
    const int shuffled = number * 37 % 100;
    labels.append({QString(QChar('a' + shuffled / 10)), QString::number(shuffled % 10)});
    expected.append(QString(QChar('a' + number / 10)) + ' ' + QString::number(number % 10));
  }
  EXPECT_EQ(Sorted(labels), expected);
}

TEST(AntennaAlignmentPdfReportDataTest, SortingAgainBringsLaterRecordsInOrder) {
  AntennaAlignmentPdfReportData report("S1", "S1-A-Report",
                                       new QVector<IAntennaAlignmentReportData*>{SiteRecord("b", "1")});
  IAntennaAlignmentReportData* first = SiteRecord("a", "1");
  report.AlignmentData()->append(first);
  report.SortReportData();
  EXPECT_EQ(report.AlignmentData()->first(), first);
}

TEST(AntennaAlignmentPdfReportDataTest, LeavesAVectorAloneThatSharesItsStorage) {
  auto* records = new QVector<IAntennaAlignmentReportData*>{SiteRecord("b", "1"), SiteRecord("a", "1")};
  const QVector<IAntennaAlignmentReportData*> asGiven = *records;
  IAntennaAlignmentReportData* const givenFirst = records->first();
  const AntennaAlignmentPdfReportData report("S1", "S1-A-Report", records);
  EXPECT_EQ(asGiven.first(), givenFirst);
  EXPECT_EQ(report.AlignmentData()->last(), givenFirst);
}

struct Comparison {
  const char* name;
  Label a;
  Label b;
  bool less;
};

void PrintTo(const Comparison& comparison, std::ostream* out) { *out << comparison.name; }

std::string ComparisonName(const testing::TestParamInfo<Comparison>& info) { return info.param.name; }

class ReportDataLessThanTest : public testing::TestWithParam<Comparison> {};

TEST_P(ReportDataLessThanTest, Compares) {
  const std::unique_ptr<IAntennaAlignmentReportData> a(
      SiteRecord(GetParam().a.sector, GetParam().a.position));
  const std::unique_ptr<IAntennaAlignmentReportData> b(
      SiteRecord(GetParam().b.sector, GetParam().b.position));
  EXPECT_EQ(ReportDataLessThan(a.get(), b.get()), GetParam().less);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ReportDataLessThanTest,
    testing::Values(Comparison{"LowerSectorOfHigherPosition", {"a", "2"}, {"b", "1"}, true},
                    Comparison{"HigherSectorOfLowerPosition", {"b", "1"}, {"a", "2"}, false},
                    Comparison{"LowerPositionOfSameSector", {"a", "1"}, {"a", "2"}, true},
                    Comparison{"HigherPositionOfSameSector", {"a", "2"}, {"a", "1"}, false},
                    Comparison{"Equal", {"a", "1"}, {"a", "1"}, false},
                    Comparison{"EqualButUpperCase", {"A", "L"}, {"a", "l"}, false},
                    Comparison{"EqualButLowerCase", {"a", "l"}, {"A", "L"}, false},
                    Comparison{"LowerCaseBeforeUpperCase", {"a", "1"}, {"B", "1"}, true},
                    Comparison{"UpperCaseAfterLowerCase", {"B", "1"}, {"a", "1"}, false},
                    Comparison{"PositionOfSectorInOtherCase", {"a", "left"}, {"A", "Right"}, true},
                    Comparison{"TextsNotNumbers", {"a", "10"}, {"a", "9"}, true},
                    Comparison{"EmptySector", {"", ""}, {"a", ""}, true},
                    Comparison{"ByCodeUnitNotByLocale", {"z", "1"}, {u8"\u00e4", "1"}, true},
                    Comparison{"UmlautInOtherCase", {u8"\u00c4", "1"}, {u8"\u00e4", "2"}, true}),
    ComparisonName);

TEST(PdfReportDataTest, SiteReportAnswersNameTypeAndFileName) {
  QString fileBase = "S1-A-Report";
  const AntennaAlignmentPdfReportData report("S1", fileBase, new QVector<IAntennaAlignmentReportData*>());
  EXPECT_EQ(report.Name(), "S1");
  EXPECT_EQ(&report.Name(), &report.Name());
  EXPECT_EQ(report.GetReportType(), 0);
  EXPECT_EQ(report.FileName(".pdf"), "S1-A-Report.pdf");
  EXPECT_EQ(report.FileName(""), "S1-A-Report");
}

TEST(PdfReportDataTest, PathReportAnswersNameTypeAndFileName) {
  QString fileBase = "P1-M-Report";
  const PathAlignmentPdfReportData report("P1", fileBase, new QVector<IPathAlignmentReportData*>());
  EXPECT_EQ(report.Name(), "P1");
  EXPECT_EQ(report.GetReportType(), 1);
  EXPECT_EQ(report.FileName(".pdf"), "P1-M-Report.pdf");
}

TEST(PdfReportDataTest, SiteReportDeletesEachRecordOnce) {
  QVector<int> destroyed(3, 0);
  int* counts = destroyed.data();
  auto* records = new QVector<IAntennaAlignmentReportData*>();
  SiteInformation site("S1", "Alpha", "1", 0, 0, 0);
  for (int index = 0; index < destroyed.size(); ++index) {
    records->append(new Counted<AntennaAlignmentReportData>(counts + index, 1U, &site, nullptr, nullptr,
                                                            nullptr, QDateTime(), nullptr));
  }
  auto report = std::make_unique<AntennaAlignmentPdfReportData>("S1", "S1-A-Report", records);
  EXPECT_EQ(destroyed, QVector<int>({0, 0, 0}));
  report.reset();
  EXPECT_EQ(destroyed, QVector<int>({1, 1, 1}));
}

IPathAlignmentReportData* PathRecord(int* destroyed) {
  return new Counted<PathAlignmentReportData>(destroyed, 1U, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              QDateTime(), nullptr);
}

TEST(PdfReportDataTest, PathReportKeepsTheOrderAndDeletesEachRecordOnce) {
  QVector<int> destroyed(2, 0);
  int* counts = destroyed.data();
  auto* records = new QVector<IPathAlignmentReportData*>{PathRecord(counts), nullptr, PathRecord(counts + 1)};
  const QVector<IPathAlignmentReportData*> asGiven = *records;
  auto report = std::make_unique<PathAlignmentPdfReportData>("P1", "P1-M-Report", records);
  EXPECT_EQ(report->PathData(), records);
  EXPECT_EQ(*report->PathData(), asGiven);
  report.reset();
  EXPECT_EQ(destroyed, QVector<int>({1, 1}));
}

// A copy of a vector shares its storage until the vector is freed.
template <typename Report, typename Record>
void ExpectFreesItsVector() {
  auto* records = new QVector<Record*>();
  auto report = std::make_unique<Report>("R", "R", records);
  records->reserve(1);
  const QVector<Record*> sharing = *records;
  ASSERT_FALSE(sharing.isDetached());
  report.reset();
  EXPECT_TRUE(sharing.isDetached());
}

TEST(PdfReportDataTest, ReportsFreeTheirVectors) {
  ExpectFreesItsVector<AntennaAlignmentPdfReportData, IAntennaAlignmentReportData>();
  ExpectFreesItsVector<PathAlignmentPdfReportData, IPathAlignmentReportData>();
}

TEST(PdfReportDataTest, PathReportWithoutVectorLogsAndKeepsNone) {
  const LogCapture log;
  auto report = std::make_unique<PathAlignmentPdfReportData>("P1", "P1-M-Report", nullptr);
  EXPECT_EQ(report->PathData(), nullptr);
  EXPECT_EQ(report->FileName(".pdf"), "P1-M-Report.pdf");
  report.reset();
  EXPECT_EQ(log.Lines(), QStringList("Null path data passed to PathAlignmentPdfReportData"));
  EXPECT_EQ(log.Misfits(), QStringList());
}

TEST(PdfReportDataTest, NothingIsLoggedOtherwise) {
  const LogCapture log;
  const PathAlignmentPdfReportData path("P1", "P1-M-Report", new QVector<IPathAlignmentReportData*>());
  const AntennaAlignmentPdfReportData site("S1", "S1-A-Report", new QVector<IAntennaAlignmentReportData*>());
  EXPECT_EQ(log.Lines(), QStringList());
}

}  // namespace
