// Files that a converter does not expect, and paths that lead to unexpected places.
#include <unistd.h>

#include "tests/migration/ConversionTest.h"

namespace {

// A converter and the version of the file that it is given.
struct Pairing {
  Converter converter;
  int file;
};

std::vector<Pairing> WrongPairings() {
  std::vector<Pairing> pairings;
  for (const Converter& converter : Converters()) {
    for (int file = 1; file <= 7; ++file) {
      if (file != converter.source) pairings.push_back({converter, file});
    }
  }
  return pairings;
}

// Tables in the order of the steps, with the number of their columns in each version.
struct ColumnCounts {
  const char* table;
  int counts[7];
};
constexpr ColumnCounts columnCounts[] = {
    {"AntennaAlignment", {10, 10, 11, 12, 13, 13, 13}},
    {"PathAlignment", {11, 11, 12, 12, 12, 12, 13}},
    {"Preferences", {25, 29, 31, 32, 33, 34, 35}},
};

using SourceTest = ConversionTest;
INSTANTIATE_TEST_SUITE_P(Converters, SourceTest, testing::ValuesIn(Converters()), NameOf);

void MakeFile(int version, const QString& path) {
  LoadGolden(qMin(version, 6), path);
  ASSERT_TRUE(version < 7 || ConvertToCurrent(6, path));
}

QStringList WrongPairingLines(const Pairing& pairing) {
  for (const ColumnCounts& columns : columnCounts) {
    const int expected = columns.counts[pairing.converter.source - 1];
    const int met = columns.counts[pairing.file - 1];
    if (expected == met) continue;
    const CopiedTableTexts& texts = TextsOf(columns.table);
    QStringList lines = texts.CopyFailure(pairing.converter);
    lines[0] =
        QStringLiteral(
            "SQL  %1  failed with  1 : table TemporaryDB.%2 has %3 columns but %4 values were supplied")
            .arg(texts.copyLabel, texts.table)
            .arg(expected)
            .arg(met);
    return Aborted(pairing.converter, lines, texts.abort);
  }
  return {};
}

bool IsPassedOver(const Pairing& pairing) { return pairing.converter.source + pairing.file == 3; }

TEST(SourceVersion, WrongOnesFailAtTheCopy) {
  const TemporaryFolder folder(scratchFolder);
  for (const Pairing& pairing : WrongPairings()) {
    if (IsPassedOver(pairing)) continue;
    SCOPED_TRACE(testing::Message() << testing::PrintToString(pairing.converter) << " given "
                                    << pairing.file);
    MakeFile(pairing.file, folder.Main());
    const QByteArray before = ContentOf(folder.Main());
    const Converted converted = Convert(pairing.converter, folder.Main());
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(converted.lines, WrongPairingLines(pairing));
    EXPECT_EQ(ContentOf(folder.Main()), before);
    EXPECT_EQ(QFile::exists(scratchPath), !pairing.converter.removesScratch);
    QFile::remove(scratchPath);
  }
}

// Of the tables whose copy counts, versions 1 and 2 have the same columns; the preferences are lost.
TEST(SourceVersion, FirstTwoPassEachOther) {
  const TemporaryFolder folder(scratchFolder);
  const QString copyFailed =
      "SQL  Copy Preferences Table  failed with  1 : table TemporaryDB.Preferences has ";
  const struct {
    Pairing pairing;
    QStringList lines;
    const char* version;
  } cases[] = {
      {{ConverterFrom(1), 2},
       {copyFailed + "25 columns but 29 values were supplied",
        "failed to retrieve accelerometer calibration values",
        "Calibration constants found to have invalid values"},
       "2"},
      {{ConverterFrom(2), 1},
       QStringList{copyFailed + "29 columns but 25 values were supplied"} + CleanupLines(),
       "3"},
  };
  for (const auto& [pairing, lines, version] : cases) {
    SCOPED_TRACE(version);
    MakeFile(pairing.file, folder.Main());
    const Converted converted = Convert(pairing.converter, folder.Main());
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(converted.lines, lines);
    EXPECT_EQ(Rows(folder.Main(), "SELECT * FROM Version"), QStringList{version});
    EXPECT_EQ(Rows(folder.Main(), "SELECT * FROM Preferences"), QStringList());
    EXPECT_EQ(Rows(folder.Main(), "SELECT count(*) FROM AntennaAlignment"), QStringList{"5"});
  }
}

// A row that refers to nothing: the copy of its table fails if the copy declares the reference.
TEST_P(SourceTest, ForeignKeyViolations) {
  const struct {
    const char* table;
    const char* column;
    int since;
  } references[] = {
      {"AntennaAlignment", "SiteKey", 1},           {"AntennaAlignment", "TargetOrientationKey", 1},
      {"AntennaAlignment", "LocationKey", 2},       {"AntennaAlignment", "MeasuredOrientationKey", 1},
      {"AntennaAlignment", "SiteHeightKey", 1},     {"PathAlignment", "PathKey", 1},
      {"PathAlignment", "TargetOrientationKey", 1}, {"PathAlignment", "LocationKey", 2},
      {"PathAlignment", "PathLocationKey", 1},      {"PathAlignment", "MeasuredOrientationKey", 1},
      {"PathAlignment", "SiteHeightKey", 1},
  };
  for (const auto& [table, column, since] : references) {
    SCOPED_TRACE(testing::Message() << table << '.' << column);
    Load();
    RunSql(Main(), QStringLiteral("UPDATE %1 SET %2 = 99 WHERE RowID = 1").arg(table, column));
    const QByteArray before = ContentOf(Main());
    const Converted converted = Convert(Tested(), Main());
    EXPECT_EQ(converted.result, Tested().source < since);
    if (converted.result) continue;
    const CopiedTableTexts& texts = TextsOf(table);
    QStringList lines = texts.CopyFailure(Tested());
    lines[0] =
        QStringLiteral("SQL  %1  failed with  19 : FOREIGN KEY constraint failed").arg(texts.copyLabel);
    EXPECT_EQ(converted.lines, Aborted(Tested(), lines, texts.abort));
    ExpectUntouched(before, !Tested().removesScratch);
  }
}

// Until version 2 the far end of a path is declared to be an orientation: the first step requires one, the
// later ones require a location.
TEST_P(SourceTest, FarEndOfAPath) {
  RunSql(Main(),
         "INSERT INTO Geolocation VALUES (70, 1.5, 2.5, 3.5);"
         "UPDATE PathAlignment SET PathLocationKey = 70 WHERE RowID = 1");
  EXPECT_EQ(Convert(Tested(), Main()).result, Tested().source != 1);
  Load();
  RunSql(Main(),
         "INSERT INTO Orientation VALUES (70, 1.5, 2.5, 3.5);"
         "UPDATE PathAlignment SET PathLocationKey = 70 WHERE RowID = 1");
  EXPECT_EQ(Convert(Tested(), Main()).result, Tested().source == 1);
}

TEST_P(SourceTest, NoDatabase) {
  QFile file(Main());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(QByteArray(4096, 'x'));
  file.close();
  const QByteArray before = ContentOf(Main());
  const Converted converted = Convert(Tested(), Main());
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines,
            Aborted(Tested(), {"SQL  Attach temporary db  failed with  26 : file is not a database"},
                    "UpdateVersion"));
  ExpectUntouched(before, !Tested().removesScratch);
}

TEST_P(SourceTest, TableIsMissing) {
  for (const CopiedTableTexts& texts : CopiedTables()) {
    if (Tested().source <= 2 && texts.abort == QByteArray("UpdatePreferencesTable")) continue;
    SCOPED_TRACE(texts.table);
    Load();
    RunSql(Main(), QStringLiteral("DROP TABLE %1").arg(texts.table));
    const QByteArray before = ContentOf(Main());
    const Converted converted = Convert(Tested(), Main());
    QStringList lines = texts.CopyFailure(Tested());
    lines[0] =
        QStringLiteral("SQL  %1  failed with  1 : no such table: main.%2").arg(texts.copyLabel, texts.table);
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(converted.lines, Aborted(Tested(), lines, texts.abort));
    ExpectUntouched(before, !Tested().removesScratch);
  }
}

// Opening creates the file; an empty one has no tables.
TEST_P(SourceTest, NoFile) {
  QFile::remove(Main());
  const Converted converted = Convert(Tested(), Main());
  EXPECT_FALSE(converted.result);
  EXPECT_EQ(converted.lines,
            Aborted(Tested(), {"SQL  Copy Sites Table  failed with  1 : no such table: main.Sites"},
                    "UpdateSitesTable"));
  EXPECT_EQ(ContentOf(Main()), QByteArray());
}

TEST_P(SourceTest, LeftOverScratchFileIsReplaced) {
  for (const bool removable : {true, false}) {
    SCOPED_TRACE(removable);
    Load();
    LoadGolden(Tested().source, scratchPath);
    // Leaves rows with which nothing would collide.
    RunSql(scratchPath, "DELETE FROM Version; DELETE FROM Preferences");
    if (!removable) FileCalls::Arm(Fault("unlink", EACCES).OnFile("TemporaryDB.sqlite"));
    const Converted converted = Convert(Tested(), Main());
    EXPECT_EQ(FileCalls::Fired(), !removable);
    FileCalls::Reset();
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(converted.lines, PlainLines());
    ExpectDump(Main(), Expected());
  }
}

QString JournalOf(const QString& path) { return path + QStringLiteral("-journal"); }

// The file and its journal as a power cut in the middle of a transaction leaves them.
void InterruptTransaction(const QString& path) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(path.toLocal8Bit().constData(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db,
                         "PRAGMA cache_size = 1; BEGIN; UPDATE Orientation SET TiltDegrees = 5;"
                         "UPDATE Sites SET SiteIdentifier = SiteIdentifier || 'x'; DELETE FROM Geolocation;"
                         "INSERT INTO Height SELECT NULL, 1.5, 0 FROM Height a, Height b, Height c, Height d",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  for (const QString& file : {path, JournalOf(path)}) ASSERT_TRUE(QFile::copy(file, file + ".kept"));
  sqlite3_close(db);
  for (const QString& file : {path, JournalOf(path)}) {
    QFile::remove(file);
    ASSERT_TRUE(QFile::rename(file + ".kept", file));
  }
  ASSERT_TRUE(ContentOf(JournalOf(path)).startsWith("\xd9\xd5\x05\xf9")) << "not ready to be played back";
}

// The journal of a scratch file that is gone must not be played back into the new one.
TEST_P(SourceTest, LeftOverScratchJournalIsDiscarded) {
  for (const bool fileLeft : {true, false}) {
    SCOPED_TRACE(fileLeft);
    Load();
    LoadGolden(Tested().source, scratchPath);
    InterruptTransaction(scratchPath);
    if (!fileLeft) QFile::remove(scratchPath);
    const Converted converted = Convert(Tested(), Main());
    EXPECT_TRUE(converted.result);
    EXPECT_EQ(converted.lines, PlainLines());
    ExpectDump(Main(), Expected());
    EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
    EXPECT_FALSE(QFile::exists(JournalOf(scratchPath)));
  }
}

// The main file's journal must be played back, before the file is copied: later, it would tear the new one.
TEST_P(SourceTest, InterruptedTransactionIsUndoneFirst) {
  InterruptTransaction(Main());
  const Converted converted = Convert(Tested(), Main());
  EXPECT_TRUE(converted.result);
  EXPECT_EQ(converted.lines, PlainLines());
  EXPECT_FALSE(QFile::exists(JournalOf(Main())));
  ExpectDump(Main(), Expected());
  EXPECT_EQ(IntegrityCheck(Main()), QString("ok"));
}

TEST_P(SourceTest, ScratchFileItselfIsRefused) {
  const auto expectRefused = [](const QString& path) {
    SCOPED_TRACE(path.toStdString());
    const Converted converted = Convert(Tested(), path);
    EXPECT_FALSE(converted.result);
    EXPECT_EQ(converted.lines, QStringList{"The temporary database itself cannot be converted:  " + path});
  };
  const QString places[] = {scratchPath, folder_.Path("folder/TemporaryDB.sqlite"),
                            scratchFolder + "/../database/TemporaryDB.sqlite"};
  ASSERT_TRUE(QFile::link(scratchFolder, folder_.Path("folder")));
  for (const QString& path : places) expectRefused(path);
  EXPECT_FALSE(QFile::exists(scratchPath));

  LoadGolden(Tested().source, scratchPath);
  const QByteArray before = ContentOf(scratchPath);
  const QString symbolic = folder_.Path("symbolic.sqlite");
  const QString hard = folder_.Path("hard.sqlite");
  ASSERT_TRUE(QFile::link(scratchPath, symbolic));
  ASSERT_EQ(link(scratchPath.toLocal8Bit().constData(), hard.toLocal8Bit().constData()), 0);
  for (const QString& path : places) expectRefused(path);
  expectRefused(symbolic);
  expectRefused(hard);
  EXPECT_EQ(ContentOf(scratchPath), before);
}

// A link in the scratch file's place is removed; what it leads to belongs to somebody else.
TEST_P(SourceTest, LinkAtTheScratchPath) {
  const QString target = folder_.Path("precious");
  QFile file(target);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("content");
  file.close();
  for (const bool removable : {false, true}) {
    SCOPED_TRACE(removable);
    ASSERT_TRUE(QFile::link(target, scratchPath));
    if (!removable) FileCalls::Arm(Fault("unlink", EACCES).OnFile("TemporaryDB.sqlite").Times(2));
    const Converted converted = Convert(Tested(), Main());
    FileCalls::Reset();
    EXPECT_EQ(converted.result, removable);
    EXPECT_EQ(converted.lines, removable ? PlainLines() : Aborted(Tested(), {}, "CreateTemporaryDatabase"));
    EXPECT_EQ(ContentOf(target), QByteArray("content"));
    QFile::remove(scratchPath);
  }
}

TEST_P(SourceTest, WhatTheSchemaDoesNotNameIsDropped) {
  RunSql(Main(),
         "PRAGMA page_size = 1024; VACUUM; PRAGMA user_version = 5; PRAGMA application_id = 6;"
         "PRAGMA journal_mode = WAL; CREATE TABLE Own (V); CREATE VIEW OwnView AS SELECT * FROM Sites;"
         "CREATE INDEX OwnIndex ON Sites (SiteIdentifier);"
         "CREATE TRIGGER OwnTrigger AFTER INSERT ON Sites BEGIN DELETE FROM Sites; END");
  const QString hard = folder_.Path("hard.sqlite");
  ASSERT_EQ(link(Main().toLocal8Bit().constData(), hard.toLocal8Bit().constData()), 0);
  const QByteArray before = ContentOf(hard);
  EXPECT_TRUE(Convert(Tested(), Main()).result);
  ExpectDump(Main(), Expected());
  EXPECT_EQ(Rows(Main(), "PRAGMA page_size"), QStringList{"4096"});
  EXPECT_EQ(Rows(Main(), "PRAGMA user_version"), QStringList{"0"});
  EXPECT_EQ(Rows(Main(), "PRAGMA application_id"), QStringList{"0"});
  EXPECT_EQ(Rows(Main(), "PRAGMA journal_mode"), QStringList{"'delete'"});
  EXPECT_EQ(ContentOf(hard), before);
}

// The link stays; the file that it leads to is replaced.
TEST_P(SourceTest, PathThroughALink) {
  const QString link = folder_.Path("link.sqlite");
  ASSERT_TRUE(QFile::link("main.sqlite", link));
  EXPECT_TRUE(Convert(Tested(), link).result);
  EXPECT_TRUE(QFileInfo(link).isSymLink());
  EXPECT_EQ(QFileInfo(link).canonicalFilePath(), QFileInfo(Main()).canonicalFilePath());
  EXPECT_FALSE(QFileInfo(Main()).isSymLink());
  ExpectDump(Main(), Expected());
}

TEST_P(SourceTest, PathOutsideAscii) {
  const QString path = folder_.Path(QString::fromUtf8("Höhe 北'\".sqlite"));
  ASSERT_TRUE(QFile::rename(Main(), path));
  EXPECT_TRUE(Convert(Tested(), path).result);
  ExpectDump(path, Expected());
}

}  // namespace
