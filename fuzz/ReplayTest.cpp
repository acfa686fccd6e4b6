// Hostile files without a fuzzer: seeds, inputs that once broke something, and every page of a file damaged.
#include <gtest/gtest.h>

#include <QDir>
#include <ostream>

#include "fuzz/HostileFiles.h"
#include "fuzz/Seeds.h"
#include "tests/support/PrintQt.h"

void PrintTo(const Target& target, std::ostream* out) { *out << target.name; }

namespace {

constexpr int pageSize = 512;

QStringList FilesIn(const QString& folder) {
  QStringList paths;
  for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files)) paths << file.filePath();
  return paths;
}

QString SeedFolder(Side side) {
  return QStringLiteral(TARNBEAM_SEED_FOLDER) + QLatin1String(side == Side::Main ? "/main" : "/thresholds");
}

QByteArray CurrentFile(Side side) { return Seeds::Read(SeedFolder(side) + QLatin1String("/current.sqlite")); }

class HostileFilesTest : public testing::TestWithParam<Target> {
 protected:
  void ExpectNothingBreaks(const QByteArray& input, const QString& what) {
    EXPECT_EQ(GetParam().Run(input), QString()) << qPrintable(what);
  }
  void ExpectNothingBreaks(const QString& path) { ExpectNothingBreaks(Seeds::Read(path), path); }
};

// A target without a folder of regressions has never had a finding.
TEST_P(HostileFilesTest, KnownInputsBreakNothing) {
  const QStringList seeds = FilesIn(SeedFolder(GetParam().side));
  ASSERT_FALSE(seeds.isEmpty());
  const QString regressions =
      QStringLiteral(TARNBEAM_SOURCE_FOLDER "/fuzz/regressions/") + QLatin1String(GetParam().name);
  for (const QString& path : seeds + FilesIn(regressions)) ExpectNothingBreaks(path);
}

TEST_P(HostileFilesTest, ADamagedPageBreaksNothing) {
  const QByteArray whole = CurrentFile(GetParam().side);
  ASSERT_GT(whole.size(), pageSize);
  for (int page = 0; page < whole.size(); page += pageSize) {
    for (const char byte : {'\x00', '\xff'}) {
      QByteArray damaged = whole;
      damaged.replace(page, pageSize, QByteArray(pageSize, byte));
      ExpectNothingBreaks(damaged, QStringLiteral("page at %1, bytes %2").arg(page).arg(byte));
    }
  }
}

TEST_P(HostileFilesTest, ATruncatedFileBreaksNothing) {
  const QByteArray whole = CurrentFile(GetParam().side);
  for (int size = 0; size < whole.size(); size += pageSize / 2) {
    ExpectNothingBreaks(whole.left(size), QStringLiteral("%1 bytes").arg(size));
  }
}

INSTANTIATE_TEST_SUITE_P(All, HostileFilesTest, testing::ValuesIn(Target::All()),
                         [](const auto& target) { return std::string(target.param.name); });

TEST(TargetsTest, AreThoseThatTheBuildRuns) {
  QStringList names;
  for (const Target& target : Target::All()) names << QLatin1String(target.name);
  EXPECT_EQ(names, QStringLiteral(TARNBEAM_FUZZ_TARGETS).split(QLatin1Char(',')));
}

long long Meets(const char* target, const QByteArray& input, long long Met::*count) {
  const long long before = Target::HasMet().*count;
  EXPECT_EQ(Target::Named(QLatin1String(target))->Run(input), QString());
  return Target::HasMet().*count - before;
}

QByteArray Hostile(const char* name) {
  return Seeds::Read(SeedFolder(Side::Main) + QLatin1Char('/') + QLatin1String(name));
}

// The page of the table Sites is made unreadable, so that listing identifiers steps without end.
TEST(GuardedInputTest, EndsALoopThatNeverGetsDone) {
  QByteArray damaged = CurrentFile(Side::Main);
  const auto page = damaged.indexOf("Site 1") / pageSize * pageSize;
  ASSERT_GT(page, 0);
  damaged.replace(page, pageSize, QByteArray(pageSize, '\xff'));
  EXPECT_EQ(Meets("read_main", damaged, &Met::endlessLoops), 1);
}

TEST(GuardedInputTest, InterruptsRowsWithoutEnd) {
  EXPECT_EQ(Meets("read_main", Hostile("main_endless_sites.sqlite"), &Met::interrupted), 1);
}

TEST(GuardedInputTest, InterruptsAStatementThatCalculatesWithoutEnd) {
  EXPECT_EQ(Meets("probe_main", Hostile("main_endless_work.sqlite"), &Met::interrupted), 1);
}

// Two connections for every path that is read, and as many for the path that is not there.
TEST(GuardedInputTest, ClosesWhatPathRetrievalLeavesOpen) {
  EXPECT_EQ(Meets("read_main", CurrentFile(Side::Main), &Met::leftOpen), 2 * 3);
}

TEST(GuardedInputTest, LetsAnIntactFilePass) {
  for (const auto count : {&Met::endlessLoops, &Met::interrupted}) {
    EXPECT_EQ(Meets("read_main", CurrentFile(Side::Main), count), 0);
  }
}

}  // namespace
