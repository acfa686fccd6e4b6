// Reading damaged files. The test knows every alignment that it stored, and on which pages its rows stand.
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <map>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

constexpr int pageSize = 4096;
constexpr int alignmentCount = 240;

// Told apart by every field that has room for it.
QJsonObject Numbered(QJsonObject entry, int number) {
  entry["time"] = QDateTime::fromSecsSinceEpoch(1'700'000'000 + number).toUTC().toString(Qt::ISODate);
  // Some notes go beyond a page.
  const QString note = QString("note %1 ").arg(number) + QString(number % 40 == 7 ? 9000 : number % 50, 'n');
  for (const auto& [name, value] : {std::pair<const char*, QJsonValue>{"options.note", note},
                                    {"location.latitude", number / 8.0},
                                    {"location.longitude", -number / 16.0},
                                    {"location.elevation", number},
                                    {"height.value", 10 + number / 4.0},
                                    {"target.azimuth", number},
                                    {"measured.azimuth", number + 0.5},
                                    {"options.thresholds.azimuth", 1 + number / 64.0}}) {
    entry = With(entry, name, value);
  }
  return entry;
}

// The alignments of a pair by what tells them apart.
std::map<QString, QJsonObject> ByUid(const QString& exported) {
  std::map<QString, QJsonObject> alignments;
  for (const QJsonValue& value : QJsonDocument::fromJson(exported.toUtf8()).array()) {
    const QJsonObject alignment = value.toObject();
    EXPECT_TRUE(alignments.emplace(alignment["uid"].toString(), alignment).second);
  }
  return alignments;
}

// Pages of a file by what stands on them: a table's name, an index's, or nothing.
std::map<int, QString> PageOwners(const QString& path) {
  std::map<int, QString> owners;
  for (const QString& row : Rows(path, "SELECT pageno, name, pagetype FROM dbstat")) {
    const QStringList parts = QString(row).remove('\'').split('|');
    owners[parts[0].toInt() - 1] = parts[1] + (parts[2] == "internal" ? " (interior)" : "");
  }
  return owners;
}

// Of a dump: what stands in the tables that the instrument fills.
QStringList RowLines(const QString& dump) {
  return dump.split('\n').filter(QRegularExpression("^(?!schema\\||sqlite_sequence\\|)"));
}

class SalvageTest : public ToolTest {
 protected:
  void CreateMany() {
    QJsonArray entries;
    for (int number = 0; number < alignmentCount; ++number) {
      const QString name = QString("%1 %2").arg(number % 3 == 2 ? "path" : "site").arg(number % 7);
      entries.append(Numbered(number % 3 == 2 ? PathEntry(name) : SiteEntry(name), number));
    }
    CreateFilesWith(entries);
    mainFile_ = ReadFile("m");
    thresholds_ = ReadFile("t");
    whole_ = ByUid(RunWell({"export", "m", "t"}));
    ASSERT_EQ(int(whole_.size()), alignmentCount);
  }

  struct Account {
    int kept = -1;
    int incomplete = -1;
    int lost = -1;
    bool isExact = false;
  };

  static Account AccountOf(const QString& out) {
    static const QRegularExpression last(
        "\n(\\d+) alignments? kept, (\\d+) incomplete, (at least )?(\\d+) lost\n$");
    const QRegularExpressionMatch match = last.match('\n' + out);
    EXPECT_TRUE(match.hasMatch()) << out.toStdString();
    return {match.captured(1).toInt(), match.captured(2).toInt(), match.captured(4).toInt(),
            match.captured(3).isEmpty()};
  }

  // Salvages m and t, checks all that holds for every damage, and answers how many alignments were kept; -1
  // where nothing could be told of the file at all.
  int Salvage() {
    const QByteArray mainFile = ReadFile("m");
    const QByteArray thresholds = ReadFile("t");
    for (const char* name : {"nm", "nt"}) QFile::remove(Path(name));
    const Outcome outcome = Run({"salvage", "m", "t", "nm", "nt"});
    EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
    if (outcome.status != 0) return -1;
    EXPECT_EQ(outcome.err, QString());
    EXPECT_EQ(ReadFile("m"), mainFile);
    EXPECT_EQ(ReadFile("t"), thresholds);
    EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "nm", "nt", "t"}));
    EXPECT_EQ(Run({"check", "nm", "nt", "--strict"}).status, 0);
    const std::map<QString, QJsonObject> kept = ByUid(RunWell({"export", "nm", "nt"}));
    for (const auto& [uid, alignment] : kept) {
      const auto original = whole_.find(uid);
      EXPECT_TRUE(original != whole_.end()) << "invented " << uid.toStdString();
      EXPECT_TRUE(original == whole_.end() || alignment == original->second) << uid.toStdString();
    }
    const Account account = AccountOf(outcome.out);
    EXPECT_EQ(account.kept, int(kept.size()));
    const int all = account.kept + account.incomplete + account.lost;
    EXPECT_LE(all, alignmentCount);
    EXPECT_TRUE(all == alignmentCount || !account.isExact) << outcome.out.toStdString();
    return account.kept;
  }

  const bool isFull_ = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1;
  QByteArray mainFile_;
  QByteArray thresholds_;
  std::map<QString, QJsonObject> whole_;
};

TEST_F(SalvageTest, WholeFilesAreKeptWhole) {
  CreateMany();
  EXPECT_EQ(Salvage(), alignmentCount);
  EXPECT_EQ(RunWell({"export", "nm", "nt"}), RunWell({"export", "m", "t"}));
}

// Where no row stands, nothing is lost.
TEST_F(SalvageTest, DamageBesideTheRowsLosesNothing) {
  CreateMany();
  int damaged = 0;
  for (const auto& [page, owner] : PageOwners(Path("m"))) {
    const bool isBeside = owner.startsWith("sqlite_autoindex") || owner.endsWith("(interior)") ||
                          owner == "sqlite_sequence" || owner == "Version" || owner == "Preferences" ||
                          owner == "sqlite_schema" || owner.endsWith("ScreenContents");
    if (!isBeside || page == 0) continue;
    // In the default run every other page, each in one way.
    if (++damaged % 2 == 0 && !isFull_) continue;
    const QByteArray fills("\x55\0\xff", 3);
    for (const char fill : isFull_ ? fills : fills.mid(damaged % 3, 1)) {
      SCOPED_TRACE(owner.toStdString() + " " + std::to_string(page) + " " + std::to_string(int(fill)));
      WriteFile("m", mainFile_);
      Overwrite("m", qint64(page) * pageSize, QByteArray(pageSize, fill));
      EXPECT_EQ(Salvage(), alignmentCount);
    }
  }
  EXPECT_GT(damaged, 10);
  WriteFile("m", mainFile_);
  damaged = 0;
  for (const auto& [page, owner] : PageOwners(Path("t"))) {
    if (!owner.endsWith("(interior)") && owner != "sqlite_sequence" && owner != "PreferencesPathLength")
      continue;
    ++damaged;
    SCOPED_TRACE(owner.toStdString());
    WriteFile("t", thresholds_);
    Overwrite("t", qint64(page) * pageSize, QByteArray(pageSize, '\x55'));
    EXPECT_EQ(Salvage(), alignmentCount);
  }
  EXPECT_GE(damaged, 2);
}

TEST_F(SalvageTest, LostHeadsLoseNothing) {
  CreateMany();
  for (const int size : {16, 100, pageSize}) {
    for (const char* file : {"m", "t"}) {
      SCOPED_TRACE(std::string(file) + " " + std::to_string(size));
      WriteFile("m", mainFile_);
      WriteFile("t", thresholds_);
      Overwrite(file, 0, QByteArray(size, '\x55'));
      EXPECT_EQ(Salvage(), alignmentCount);
    }
  }
  WriteFile("m", QByteArray(pageSize, '\0') + mainFile_.mid(pageSize));
  WriteFile("t", QByteArray(pageSize, '\0') + thresholds_.mid(pageSize));
  EXPECT_EQ(Salvage(), alignmentCount);
}

// A table, and what alignments that need its rows from one key to another are.
struct Needs {
  const char* file;
  const char* table;
  const char* sites;
  const char* paths;
};

constexpr Needs allNeeds[] = {
    {"m", "Orientation", "TargetOrientationKey BETWEEN %1 AND %2 OR MeasuredOrientationKey BETWEEN %1 AND %2",
     "TargetOrientationKey BETWEEN %1 AND %2 OR MeasuredOrientationKey BETWEEN %1 AND %2"},
    {"m", "Geolocation", "LocationKey BETWEEN %1 AND %2",
     "LocationKey BETWEEN %1 AND %2 OR PathLocationKey BETWEEN %1 AND %2"},
    {"m", "Height", "SiteHeightKey BETWEEN %1 AND %2", "SiteHeightKey BETWEEN %1 AND %2"},
    {"m", "Sites", "SiteKey BETWEEN %1 AND %2", "0"},
    {"m", "Paths", "0", "PathKey BETWEEN %1 AND %2"},
    {"m", "AntennaAlignment", "AntennaAlignmentKey BETWEEN %1 AND %2", "0"},
    {"m", "PathAlignment", "0", "PathAlignmentKey BETWEEN %1 AND %2"},
    {"t", "AntennaAlignmentThresholds", "AntennaAlignmentKey BETWEEN %1 AND %2", "0"},
    {"t", "PathAlignmentThresholds", "0", "PathAlignmentKey BETWEEN %1 AND %2"}};

QString Between(QString condition, int first, int last) {
  return condition.replace("%1", QString::number(first)).replace("%2", QString::number(last));
}

// The alignments, as "s5" and "p7", that need rows of a table from one key to another.
QSet<QString> Needing(const QString& mainFile, const Needs& needs, int first, int last) {
  const QStringList keys =
      Rows(mainFile, QString("SELECT 's' || AntennaAlignmentKey FROM AntennaAlignment WHERE %1 UNION ALL "
                             "SELECT 'p' || PathAlignmentKey FROM PathAlignment WHERE %2")
                         .arg(Between(needs.sites, first, last), Between(needs.paths, first, last)));
  return {keys.begin(), keys.end()};
}

// What goes with each page of a file that has rows on it, "m 17". Keys were given without gaps, so the number
// of rows on each leaf tells which stand there; a row that goes beyond its page says which it is by its path.
std::map<QString, QSet<QString>> LostWithPages(const QString& folder) {
  std::map<QString, QSet<QString>> lost;
  for (const Needs& needs : allNeeds) {
    const QString file = folder + '/' + needs.file;
    std::map<QString, int> firstKeys;
    int last = 0;
    for (const QString& row :
         Rows(file, QString("SELECT pageno - 1, ncell, path, pagetype FROM dbstat WHERE name = '%1' "
                            "AND pagetype <> 'internal' ORDER BY pagetype, path")
                        .arg(needs.table))) {
      const QStringList parts = QString(row).remove('\'').split('|');
      int first = last + 1;
      int upTo = last = last + parts[1].toInt();
      if (parts[3] == "overflow") {
        const QString leaf = parts[2].section('/', 0, -2) + '/';
        first = upTo = firstKeys.at(leaf) + parts[2].section('/', -1).section('+', 0, 0).toInt(nullptr, 16);
      } else {
        firstKeys[parts[2]] = first;
      }
      lost[QString(needs.file) + ' ' + parts[0]] = Needing(folder + "/m", needs, first, upTo);
    }
  }
  return lost;
}

// A page with rows takes with it the alignments that need those, and no others: some of the pages, with
// TARNBEAM_FULL_SWEEPS=1 all of them.
TEST_F(SalvageTest, OnlyWhatStandsOnThePageIsLost) {
  CreateMany();
  int number = 0;
  for (const auto& [page, lost] : LostWithPages(Folder())) {
    if (number++ % 5 != 0 && !isFull_) continue;
    SCOPED_TRACE(page.toStdString());
    EXPECT_FALSE(lost.isEmpty());
    Overwrite(page.left(1), page.mid(2).toLongLong() * pageSize, QByteArray(pageSize, '\x55'));
    EXPECT_EQ(Salvage(), alignmentCount - lost.size());
    WriteFile("m", mainFile_);
    WriteFile("t", thresholds_);
  }
  // One at least of each of the nine tables.
  EXPECT_GE(number, 9);
}

// Pages overwritten, ends cut off and heads lost, in either file.
class Damaging {
 public:
  Damaging(int seed, const QByteArray& mainFile, const QByteArray& thresholds)
      : random_(quint32(seed)), files_{mainFile, thresholds} {
    const int hits = 1 + random_.bounded(4);
    for (int hit = 0; hit < hits; ++hit) Hit(random_.bounded(4) == 0 ? 1 : 0);
  }
  const QByteArray& File(int number) const { return files_[number]; }
  // Pages that were overwritten, if nothing else was done; else none.
  QStringList OnlyPages() const { return hasOnlyPages_ ? pages_ : QStringList(); }

 private:
  void Hit(int number) {
    QByteArray& file = files_[number];
    const int page = random_.bounded(static_cast<int>(file.size() / pageSize));
    const int kind = random_.bounded(6);
    if (kind == 0 && page > 2) {
      file.truncate(page * pageSize + random_.bounded(pageSize));
      hasOnlyPages_ = false;
    } else if (kind == 1) {
      file.replace(0, 100, QByteArray(100, char(random_.bounded(256))));
      hasOnlyPages_ = false;
    } else {
      const bool isNoise = random_.bounded(2) == 0;
      const char fill = char(random_.bounded(256));
      for (int at = 0; at < pageSize; ++at) {
        file[page * pageSize + at] = isNoise ? char(random_.bounded(256)) : fill;
      }
      pages_.append(QString(number == 0 ? "m %1" : "t %1").arg(page));
    }
  }

  QRandomGenerator random_;
  QByteArray files_[2];
  QStringList pages_;
  bool hasOnlyPages_ = true;
};

// Hundreds with TARNBEAM_FULL_SWEEPS=1. Where nothing but pages of rows and indices was hit, exactly what
// stood there is lost.
TEST_F(SalvageTest, SeededDamages) {
  CreateMany();
  const std::map<QString, QSet<QString>> lostWith = LostWithPages(Folder());
  QSet<QString> beside;
  for (const auto& [page, owner] : PageOwners(Path("m"))) {
    if (owner.startsWith("sqlite_autoindex")) beside.insert(QString("m %1").arg(page));
  }
  const int damages = isFull_ ? 400 : 12;
  int keptOfAll = 0;
  int told = 0;
  for (int seed = 1; seed <= damages; ++seed) {
    SCOPED_TRACE(seed);
    const Damaging damage(seed, mainFile_, thresholds_);
    WriteFile("m", damage.File(0));
    WriteFile("t", damage.File(1));
    const int kept = Salvage();
    EXPECT_GE(kept, 0);
    keptOfAll += kept;
    QSet<QString> lost;
    bool canTell = !damage.OnlyPages().isEmpty();
    for (const QString& page : damage.OnlyPages()) {
      const auto found = lostWith.find(page);
      canTell = canTell && (found != lostWith.end() || beside.contains(page));
      if (found != lostWith.end()) lost += found->second;
    }
    told += canTell ? 1 : 0;
    EXPECT_TRUE(!canTell || kept == alignmentCount - lost.size()) << kept << " kept, lost " << lost.size();
    if (HasFailure()) return;
  }
  RecordProperty("kept", keptOfAll);
  RecordProperty("told", told);
  EXPECT_GT(told, 2);
  EXPECT_GT(keptOfAll, damages * alignmentCount / 10);
}

// One byte is another: what it makes of a row cannot be kept, and keeps no other from being read.
TEST_F(SalvageTest, TwoSitesOfOneNameAreNotBelieved) {
  CreateFilesWith({SiteEntry("Tower 1"), SiteEntry("Tower 2"), SiteEntry("Tower 3")});
  const auto at = ReadFile("m").indexOf("Tower 2", PageOf("m", "Sites") * pageSize);
  ASSERT_LT(at, (PageOf("m", "Sites") + 1) * pageSize);
  Overwrite("m", at, "Tower 1");
  const QString out = RunWell({"salvage", "m", "t", "nm", "nt"});
  EXPECT_TRUE(
      out.endsWith("incomplete: site alignment 1, which needs Sites 1\n"
                   "incomplete: site alignment 2, which needs Sites 2\n"
                   "1 alignment kept, 2 incomplete, 0 lost\n"))
      << out.toStdString();
  EXPECT_TRUE(out.contains("\nSites: 1 row read, others cannot be read\n"));
  EXPECT_EQ(Run({"check", "nm", "nt", "--strict"}).status, 0);
}

TEST_F(SalvageTest, AnAngleThatNoInstrumentCanReadIsNotBelieved) {
  CreateFilesWith({SiteEntry("A"), SiteEntry("B"), SiteEntry("C")});
  RunSql(Path("m"), "UPDATE Orientation SET AzimuthDegrees = 1e39 WHERE OrientationKey = 1");
  const Account account = AccountOf(RunWell({"salvage", "m", "t", "nm", "nt"}));
  EXPECT_GE(account.kept, 1);
  EXPECT_GE(account.incomplete, 1);
  EXPECT_EQ(account.kept + account.incomplete + account.lost, 3);
  EXPECT_EQ(Run({"check", "nm", "nt", "--strict"}).status, 0);
}

TEST_F(SalvageTest, ARowWithoutAValueThatItMustHaveIsNotBelieved) {
  CreateFilesWith({SiteEntry("A"), SiteEntry("B"), SiteEntry("C"), SiteEntry("D"), SiteEntry("E")});
  const QString change =
      "UPDATE sqlite_schema SET sql = replace(sql, '%1', '%2') WHERE name = 'AntennaAlignment'";
  RunSql(Path("m"), "PRAGMA writable_schema = 1; " +
                        change.arg("Note TEXT NOT NULL DEFAULT ", "Note TEXT     DEFAULT "));
  RunSql(Path("m"), "UPDATE AntennaAlignment SET Note = NULL WHERE AntennaAlignmentKey = 5");
  RunSql(Path("m"), "PRAGMA writable_schema = 1; " +
                        change.arg("Note TEXT     DEFAULT ", "Note TEXT NOT NULL DEFAULT "));
  ASSERT_EQ(Rows(Path("m"), "SELECT count(*) FROM AntennaAlignment WHERE quote(Note) = 'NULL'"),
            QStringList{"1"});
  const Account account = AccountOf(RunWell({"salvage", "m", "t", "nm", "nt"}));
  EXPECT_GE(account.kept, 1);
  EXPECT_LT(account.kept, 5);
  EXPECT_EQ(account.kept + account.incomplete + account.lost, 5);
  EXPECT_EQ(Run({"check", "nm", "nt", "--strict"}).status, 0);
}

// Each of the pages has a thousand times one record of two megabytes, all of it one page.
TEST_F(SalvageTest, RecordsThatSharePagesDoNotKeepItBusy) {
  CreateFilesWith({SiteEntry("S")});
  constexpr int pages = 600;
  const int overflow = int(ReadFile("m").size() / pageSize) + 1;
  const auto twoBytes = [](int number) { return QByteArray(1, char(number >> 8)) + char(number & 0xFF); };
  QByteArray last = QByteArray(2, '\0') + twoBytes(overflow) + QByteArray(pageSize - 4, '\0');
  constexpr int cellAt = 2100;
  // 489 bytes of the record stand on the page itself, and 480 times 4092 on the other.
  QByteArray leaf = QByteArray("\x0D\0\0", 3) + twoBytes(1000) + twoBytes(cellAt) + '\0';
  for (int cell = 0; cell < 1000; ++cell) leaf += twoBytes(cellAt);
  leaf += QByteArray(cellAt - int(leaf.size()), '\0');
  leaf += QByteArray("\xF7\xF4\x69\x01", 4) + QByteArray(489, '\0') + last.left(4);
  leaf += QByteArray(pageSize - int(leaf.size()), '\0');
  WriteFile("m", ReadFile("m") + last + leaf.repeated(pages));
  EXPECT_TRUE(
      RunWell({"salvage", "m", "t", "nm", "nt"}).endsWith("\n1 alignment kept, 0 incomplete, 0 lost\n"));
}

// What is said of the tables of a main file with one alignment of each kind.
const QString ofMain = QStringLiteral(
    "AntennaAlignment: 1 row read\n"
    "Geolocation: 3 rows read\n"
    "Height: 2 rows read\n"
    "Orientation: 4 rows read\n"
    "PathAlignment: 1 row read\n"
    "PathScreenContents: 0 rows read\n"
    "Paths: 1 row read\n"
    "Preferences: 0 rows read\n"
    "SiteScreenContents: 0 rows read\n"
    "Sites: 1 row read\n");
const QString ofThresholds = QStringLiteral(
    "AntennaAlignmentThresholds: 1 row read\n"
    "PathAlignmentThresholds: 1 row read\n"
    "PreferencesPathLength: 0 rows read\n");

// Where the page of a table is lost: the lines about it, and about what goes with it.
TEST_F(SalvageTest, RowsAreCountedAndLossesNamed) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  mainFile_ = ReadFile("m");
  EXPECT_EQ(RunWell({"salvage", "m", "t", "nm", "nt"}),
            ofMain + ofThresholds + "2 alignments kept, 0 incomplete, 0 lost\n");
  struct Loss {
    const char* table;
    const char* read;
    const char* told;
  };
  for (const Loss& loss : std::initializer_list<Loss>{{"Height", "2 rows",
                                                       "incomplete: site alignment 1, which needs Height 1\n"
                                                       "incomplete: path alignment 1, which needs Height 2\n"
                                                       "0 alignments kept, 2 incomplete, 0 lost\n"},
                                                      {"Sites", "1 row",
                                                       "incomplete: site alignment 1, which needs Sites 1\n"
                                                       "1 alignment kept, 1 incomplete, 0 lost\n"},
                                                      {"AntennaAlignment", "1 row",
                                                       "lost: site alignments 1\n"
                                                       "1 alignment kept, 0 incomplete, 1 lost\n"}}) {
    WriteFile("m", mainFile_);
    Overwrite("m", qint64(PageOf("m", loss.table)) * pageSize, QByteArray(pageSize, '\x55'));
    for (const char* name : {"nm", "nt"}) ASSERT_TRUE(QFile::remove(Path(name)));
    QString expected = '\n' + ofMain;
    expected.replace(QString("\n%1: %2 read\n").arg(loss.table, loss.read),
                     QString("\n%1: 0 rows read, others cannot be read\n").arg(loss.table));
    EXPECT_EQ(RunWell({"salvage", "m", "t", "nm", "nt"}), expected.mid(1) + ofThresholds + loss.told);
  }
}

TEST_F(SalvageTest, WithoutThresholdsFile) {
  CreateFilesWith({SiteEntry("S"), PathEntry("P")});
  EXPECT_EQ(RunWell({"salvage", "m", "nm", "nt"}),
            ofMain +
                "without a thresholds file: all alignments that are kept have no thresholds\n"
                "2 alignments kept, 0 incomplete, 0 lost\n");
  RunSql(Path("t"),
         "UPDATE AntennaAlignmentThresholds SET AzimuthThreshold = 0, TiltThreshold = 0, RollThreshold = 0;"
         "UPDATE PathAlignmentThresholds SET AzimuthThreshold = 0, TiltThreshold = 0, PathLengthThreshold = "
         "-1");
  EXPECT_EQ(RunWell({"export", "nm", "nt"}), RunWell({"export", "m", "t"}));
}

TEST_F(SalvageTest, EarlierVersionsBecomeTheCurrentOne) {
  for (int version = 1; version <= 6; ++version) {
    SCOPED_TRACE(version);
    const QString name = QString("v%1").arg(version);
    LoadEarlier(name, version);
    const QString before = RunWell({"export", name});
    QFile golden(QString(TARNBEAM_GOLDEN_FOLDER "/version_%1_as_7.txt").arg(version));
    ASSERT_TRUE(golden.open(QIODevice::ReadOnly));
    const QStringList converted = RowLines(QString::fromUtf8(golden.readAll()));
    // Without the record of its version, too.
    for (const bool hasVersion : {true, false}) {
      const QString to = name + (hasVersion ? "a" : "b");
      if (!hasVersion) Overwrite(name, PageOf(name, "Version") * pageSize, QByteArray(pageSize, '\x55'));
      RunWell({"salvage", name, to + ".m", to + ".t"});
      EXPECT_EQ(RunWell({"version", to + ".m"}), "7\n");
      EXPECT_EQ(Run({"check", to + ".m", to + ".t", "--strict"}).status, 0);
      EXPECT_EQ(ByUid(RunWell({"export", to + ".m", to + ".t"})), ByUid(before));
      EXPECT_EQ(RowLines(DumpDatabase(Path(to + ".m"))), converted);
    }
  }
}

TEST_F(SalvageTest, NamesMayBeAnything) {
  CreateFilesWith({SiteEntry("S")});
  for (const QString name : {" ", ":memory:", "file:x?mode=ro", "%1", "a\nb", "*?[", "Å'\""}) {
    const QString said = RunWell({"salvage", "m", "t", name, name + ".t"});
    EXPECT_EQ(said.section('\n', -2), "1 alignment kept, 0 incomplete, 0 lost\n");
    EXPECT_EQ(RunWell({"salvage", name, name + ".t", name + ".m", name + ".n"}), said);
  }
  EXPECT_EQ(FilesInFolder().size(), 3 + 7 * 4);
}

TEST_F(SalvageTest, FilesThatCannotBeWritten) {
  CreateFilesWith({SiteEntry("S")});
  ASSERT_TRUE(QDir(Folder()).mkdir("ro"));
  ASSERT_TRUE(QFile::rename(Path("m"), Path("ro/m")) && QFile::rename(Path("t"), Path("ro/t")));
  for (const char* name : {"ro/m", "ro/t"}) ASSERT_TRUE(QFile::setPermissions(Path(name), QFile::ReadOwner));
  ASSERT_TRUE(QFile::setPermissions(Path("ro"), QFile::ReadOwner | QFile::ExeOwner));
  EXPECT_EQ(RunUnprivileged({"salvage", "ro/m", "ro/t", "nm", "nt"}).status, 0);
  const Outcome outcome = RunUnprivileged({"salvage", "ro/m", "ro/t", "ro/nm", "ro/nt"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnbeam-db: ro/nm: Permission denied\n");
  ASSERT_TRUE(QFile::setPermissions(Path("ro"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  EXPECT_EQ(QDir(Path("ro")).entryList(QDir::Files), (QStringList{"m", "t"}));
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "nm", "nt", "ro"}));
}

TEST_F(SalvageTest, Refusals) {
  CreateFilesWith({SiteEntry("S")});
  ExpectFailure({"salvage", "m", "t", "m", "nt"}, "m: exists already");
  ExpectFailure({"salvage", "m", "t", "nm", "nm"}, "nm: cannot be main and thresholds file at once");
  ExpectFailure({"salvage", "m", "./m", "nm", "nt"}, "m: cannot be main and thresholds file at once");
  ExpectFailure({"salvage", "none", "t", "nm", "nt"}, "none: no such file");
  ExpectFailure({"salvage", "m", "none", "nm", "nt"}, "none: no such file");
  ExpectFailure({"salvage", "m", "t", "no/nm", "nt"}, "no/nm: No such file or directory");
  {
    const Holder holder(Path("t"), "BEGIN EXCLUSIVE");
    ExpectFailure({"salvage", "m", "t", "nm", "nt", "--wait", "0"}, InUse("t"), 3);
  }
  WriteFile("text", QByteArray(100'000, 'x'));
  ExpectFailure(
      {"salvage", "text", "nm", "nt"},
      "text: neither its version nor its tables can be made out; if it is of version 7, give THRESHOLDS", 4);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 6");
  ExpectFailure({"salvage", "m", "t", "nm", "nt"},
                "m: is of version 6, which has no thresholds file: leave THRESHOLDS out" + hint, 2);
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 8");
  ExpectFailure({"salvage", "m", "t", "nm", "nt"}, "m: is of version 8, newer than this program knows (7)",
                4);
  EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "t", "text"}));
}

// Then the columns tell it.
TEST_F(SalvageTest, TwoVersionsThatNobodyKnowsAreNotBelieved) {
  CreateFilesWith({SiteEntry("S")});
  const QString exported = RunWell({"export", "m", "t"});
  RunSql(Path("m"), "UPDATE Version SET VersionNumber = 8; INSERT INTO Version VALUES (9)");
  RunWell({"salvage", "m", "t", "nm", "nt"});
  EXPECT_EQ(RunWell({"export", "nm", "nt"}), exported);
}

}  // namespace
