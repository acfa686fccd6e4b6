// Every call of a save failing in turn: what is logged, which rows stay in both files, what is returned.
#include <sqlite3.h>

#include <QRegularExpression>
#include <algorithm>

#include "tests/store/SavedRows.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"

namespace {

enum class Outcome { Saved, WithoutKey, Refused };

struct SaveFailure {
  QString name;
  Fault fault;
  QStringList lines;
  QString kept;  // letters of the rows that stay in the main file
  Outcome outcome;
  QString thresholdKeys;  // alignment and owner in the thresholds row; empty if there is none
};

struct Bind {
  const char* text;
  unsigned int firstVersion = 1;
  bool passedOver = false;
};

// One insert of a save.
struct Writer {
  char letter;
  const char* statement;  // what its text contains
  int occurrence;         // how many of its kind a save has made by then, itself included
  const char* label;
  std::vector<Bind> binds;
  bool logsStep = false;
};

// A kind of save: the look-up and insert of the owner, and the writers in order, the last but one being that
// of the alignment and the last that of its thresholds.
struct SaveKind {
  char letter;
  const char* lookUp;
  const char* lookUpLabel;
  const char* insert;
  const char* insertLabel;
  std::vector<Writer> writers;
};

const std::vector<Bind> orientationBinds = {{"SQL bind AzimuthInDegrees failed with "},
                                            {"SQL bind TiltInDegrees failed with "},
                                            {"SQL bind RollInDegrees failed with "}};
const std::vector<Bind> geolocationBinds = {{"SQL bind LatitudeInDegreesNorth failed with "},
                                            {"SQL bind LongitudeInDegreesEast failed with "},
                                            {"SQL bind ElevationInMeters failed with "}};
const std::vector<Bind> heightBinds = {{"SQL bind Height Value failed with ", 1, true},
                                       {"SQL bind HeightSourceKey failed with "}};

Writer Target() { return {'T', "INTO Orientation (", 1, "Insert Orientation", orientationBinds}; }
Writer Measured() { return {'M', "INTO Orientation (", 2, "Insert Orientation", orientationBinds}; }
Writer Location(char letter, int occurrence) {
  return {letter, "INTO Geolocation (", occurrence, "Insert Geolocation", geolocationBinds};
}
Writer HeightRow() { return {'H', "INTO Height (", 1, "Insert Height", heightBinds}; }

const SaveKind siteSave = {'S',
                           "FROM Sites WHERE",
                           "Select SiteKey for Site Identifier",
                           "INTO Sites (",
                           "Insert Site Identifier",
                           {Target(),
                            Measured(),
                            Location('G', 1),
                            HeightRow(),
                            {'A',
                             "INTO AntennaAlignment (",
                             1,
                             "Insert Antenna Alignment",
                             {{"SQL bind SiteKey failed with "},
                              {"SQL bind SectorName failed with "},
                              {"SQL bind AntennaPosition failed with "},
                              {"SQL bind AzimuthOffsetDegrees failed with "},
                              {"SQL bind TargetOrientationKey failed with "},
                              {"SQL bind SiteGeolocationKey failed with "},
                              {"SQL bind LinuxTimeUTC failed with "},
                              {"SQL bind MeasuredOrientationKey failed with "},
                              {"SQL bind SiteHeightKey failed with ", 1, true},
                              {"SQL bind TiltInversionValue failed with ", 3, true},
                              {"SQL bind Note failed with ", 4},
                              {"SQL bind RollPrecision failed with ", 5, true}}},
                            {'t',
                             "INTO AntennaAlignmentThresholds (",
                             1,
                             "Insert Antenna Alignment Thresholds",
                             {{"SQL bind AntennaAlignmentKey failed with "},
                              {"SQL bind SiteKey failed with "},
                              {"SQL bind AzimuthThreshold failed with "},
                              {"SQL bind TiltThreshold failed with "},
                              {"SQL bind RollThreshold failed with "}}}}};

const SaveKind pathSave = {'P',
                           "FROM Paths WHERE",
                           "Select PathKey for Path Identifier",
                           "INTO Paths (",
                           "Insert Path Identifier",
                           {Location('F', 1),
                            Target(),
                            Measured(),
                            Location('G', 2),
                            HeightRow(),
                            {'A',
                             "INTO PathAlignment (",
                             1,
                             "Save Path Info",
                             {{"SQL bind PathKey failed with "},
                              {"SQL bind SectorName failed with "},
                              {"SQL bind SectorName failed with "},
                              {"SQL bind AzimuthOffset failed with "},
                              {"SQL bind PathGeolocationKey failed with "},
                              {"SQL bind TargetOrientationKey failed with "},
                              {"SQL bind SiteGeolocationKey failed with "},
                              {"SQL bind LinuxTimeUTC failed with "},
                              {"SQL bind MeasuredOrientationKey failed with "},
                              {"SQL bind SiteHeightKey failed with "},
                              {"SQL bind TiltInversionEnabled failed with ", 3},
                              {"SQL bind Note failed with ", 7}},
                             true},
                            {'t',
                             "INTO PathAlignmentThresholds (",
                             1,
                             "Save Path Threshold Info",
                             {{"SQL bind PathAlignmentKey failed with "},
                              {"SQL bind PathKey failed with "},
                              {"SQL bind AzimuthThreshold failed with "},
                              {"SQL bind TiltThreshold failed with "},
                              {"SQL bind PathLengthThreshold failed with "}},
                             true}}};

QString Locked(const QString& text) { return text + "  failed with  5 : database is locked"; }
QString LockedBind(const char* text) {
  return QLatin1String(text) + QLatin1String(" 5 : database is locked");
}
Fault On(const char* call, const char* statement) { return Fault(call, SQLITE_BUSY).OnText(statement); }

// All failures of a save, with what each has to lead to.
class Failures {
 public:
  Failures(const SaveKind& kind, const StoreVersion& version) : version_(version) {
    AddMainConnection();
    AddOwner(kind);
    kept_ += QLatin1Char(kind.letter);
    for (const Writer& writer : kind.writers) {
      if (writer.letter == 't' && !version.HasThresholdsFile()) continue;
      AddWriter(writer);
      if (writer.letter != 't') kept_ += QLatin1Char(writer.letter);
    }
    AddEnds();
  }

  const std::vector<SaveFailure>& All() const { return all_; }

 private:
  void Add(const QString& name, const Fault& fault, const QStringList& lines, Outcome outcome,
           const QString& kept, const QString& thresholdKeys = QString()) {
    all_.push_back({name, fault, lines, kept, outcome, thresholdKeys});
  }

  static Fault OnMain(const char* call, const char* text = "") {
    return On(call, text).OnFile("main.sqlite");
  }
  static Fault OnThresholds(const char* call, const char* text = "") {
    return On(call, text).OnFile("thresholds.sqlite");
  }

  void AddMainConnection() {
    Add("open", OnMain("open_v2"), {"Can't open database: rval= 5 : database is locked"}, Outcome::Refused,
        "");
    Add("begin", OnMain("exec", "BEGIN"), {Locked("SQL  Begin Transaction")}, Outcome::WithoutKey, "",
        "-1|-1");
  }

  void AddOwner(const SaveKind& kind) {
    const QString bind = LockedBind("SQL bind failed with ");
    Add("look-up prepare", On("prepare", kind.lookUp),
        {Locked(QStringLiteral("SQL prepare  ") + kind.lookUpLabel)}, Outcome::WithoutKey, "", "-1|-1");
    Add("look-up bind", On("bind", kind.lookUp), {bind}, Outcome::WithoutKey, "", "-1|-1");
    QString everything{QLatin1Char(kind.letter)};
    for (const Writer& writer : kind.writers) everything += QLatin1Char(writer.letter);
    Add("look-up step", On("step", kind.lookUp), {}, Outcome::Saved, everything.remove('t'), "1|1");
    Add("insert prepare", On("prepare", kind.insert),
        {Locked(QStringLiteral("SQL prepare  ") + kind.insertLabel)}, Outcome::WithoutKey, "", "-1|0");
    // The key is that of the connection's last insert, and there has been none yet.
    Add("insert bind", On("bind", kind.insert), {bind}, Outcome::WithoutKey, "", "-1|0");
    Add("insert step", On("step", kind.insert), {}, Outcome::WithoutKey, "", "-1|0");
  }

  void AddWriter(const Writer& writer) {
    // If a writer fails: the alignment's undoes the main file, the one after it leaves all of it.
    const bool early = writer.letter != 'A' && writer.letter != 't';
    const Outcome outcome = early ? Outcome::WithoutKey : Outcome::Refused;
    const QString kept = writer.letter == 'A' ? QString() : kept_;
    const QString keys = early ? "-1|1" : "";
    const QString name = QLatin1Char(writer.letter) + QStringLiteral(" ") + writer.label;
    Add(name + " prepare", On("prepare", writer.statement).At(writer.occurrence),
        {Locked(QStringLiteral("SQL prepare  ") + writer.label)}, outcome, kept, keys);
    Add(name + " step", On("step", writer.statement).At(writer.occurrence),
        writer.logsStep ? QStringList{"SQL last step failed with  5 : database is locked"} : QStringList(),
        outcome, kept, keys);
    int count = 0;
    for (const Bind& bind : writer.binds) {
      if (bind.firstVersion > version_.number) continue;
      ++count;
      const int at = (writer.occurrence - 1) * static_cast<int>(writer.binds.size()) + count;
      const QString bindName = name + " bind " + QString::number(count);
      // A bind that is passed over leaves its column NULL, which none of them accepts: the step then fails
      // silently. So the one line is there in both cases.
      Add(bindName, On("bind", writer.statement).At(at), {LockedBind(bind.text)}, outcome, kept, keys);
      if (bind.passedOver)
        passedOver_.push_back({bindName, On("bind", writer.statement).At(at).Performed(), bind.text});
    }
  }

  void AddEnds() {
    const QString end = Locked("SQL  End Transaction");
    // The result of the end is ignored, and closing rolls back.
    Add("end", OnMain("exec", "END"), {end}, Outcome::Saved, "", "1|1");
    for (const PassedOver& bind : passedOver_) {
      Add(bind.name + " performed", bind.fault, {LockedBind(bind.text)}, Outcome::Saved, kept_, "1|1");
    }
    if (!version_.HasThresholdsFile()) return;
    Add("thresholds open", OnThresholds("open_v2"), {"Can't open database: rval= 5 : database is locked"},
        Outcome::Refused, kept_);
    Add("thresholds begin", OnThresholds("exec", "BEGIN"), {Locked("SQL  Begin Transaction")},
        Outcome::Refused, kept_);
    Add("thresholds end", OnThresholds("exec", "END"), {end}, Outcome::Saved, kept_);
  }

  struct PassedOver {
    QString name;
    Fault fault;
    const char* text;
  };

  const StoreVersion& version_;
  QString kept_;
  std::vector<SaveFailure> all_;
  std::vector<PassedOver> passedOver_;
};

unsigned int KeyOf(const IAntennaAlignmentReportData& record) { return record.AntennaAlignmentKey(); }
unsigned int KeyOf(const IPathAlignmentReportData& record) { return record.PathAlignmentKey(); }

class SaveFailuresTest : public CreatedStoreTest {
 protected:
  // Saves `sample` in fresh files with one failure, and checks all that it has to leave.
  template <typename Sample>
  void Check(const SaveFailure& failure, Sample sample, const QMap<char, QString>& rows,
             const QString& thresholdsRow) {
    SCOPED_TRACE(failure.name.toStdString());
    WriteFreshFiles();
    SqliteCalls::Reset();
    SqliteCalls::Arm(failure.fault);
    const auto* record = sample.Save(store_.get());
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    EXPECT_EQ(Lines(), failure.lines);
    EXPECT_EQ(SavedRows(Main()), Chosen(rows, failure.kept));
    if (Version().HasThresholdsFile()) {
      EXPECT_EQ(SavedRows(Thresholds()), failure.thresholdKeys.isEmpty()
                                             ? QStringList()
                                             : QStringList{thresholdsRow.arg(failure.thresholdKeys)});
    } else {
      EXPECT_FALSE(QFile::exists(Thresholds()));
    }
    if (failure.outcome == Outcome::Refused) {
      EXPECT_EQ(record, nullptr);
    } else if (record != nullptr) {
      EXPECT_EQ(KeyOf(*record), failure.outcome == Outcome::Saved ? 1U : 4294967295U);
    } else {
      ADD_FAILURE() << "no record";
    }
    delete record;
  }

  QMap<char, QString> SiteRows() const {
    return {{'S', "Sites|1|1|'Site 2'"},
            {'T', "Orientation|1|1|92.5|-7.75|5.125"},
            {'M', "Orientation|2|2|122.5|-5.25|3.75"},
            {'G', "Geolocation|1|1|53.5|-2.125|37.25"},
            {'H', "Height|1|1|24.5|3"},
            {'A', "AntennaAlignment|1|1|1|'Sector 2'|'Position 2'|2.375|1|1|1500000002|2|1" +
                      SiteColumnsOfSample2(Version())}};
  }
  QMap<char, QString> PathRows() const {
    return {{'P', "Paths|1|1|'Path 2'"},
            {'F', "Geolocation|1|1|50.75|13.625|521.5"},
            {'T', "Orientation|1|1|202.25|-9.5|7.875"},
            {'M', "Orientation|2|2|122.5|-5.25|3.75"},
            {'G', "Geolocation|2|2|53.5|-2.125|37.25"},
            {'H', "Height|1|1|24.5|3"},
            {'A',
             "PathAlignment|1|1|1|'ZZZ'|'ZZZ'|2.375|1|1|2|1500000002|2|1" + PathColumnsOfSample2(Version())}};
  }

  static constexpr char siteThresholds[] = "AntennaAlignmentThresholds|1|1|%1|4.5|6.5|8.5";
  static constexpr char pathThresholds[] = "PathAlignmentThresholds|1|1|%1|4.5|6.5|10.5";

 private:
  static QStringList Chosen(const QMap<char, QString>& rows, const QString& letters) {
    QStringList chosen;
    for (const QChar letter : letters) chosen.append(rows.value(letter.toLatin1()));
    std::sort(chosen.begin(), chosen.end());
    return chosen;
  }

  static QByteArray Content(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  static void Write(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  void WriteFreshFiles() const {
    Write(Main(), main_);
    if (Version().HasThresholdsFile()) Write(Thresholds(), thresholds_);
  }

  const QByteArray main_ = Content(Main());
  const QByteArray thresholds_ = Content(Thresholds());
};

TEST_P(SaveFailuresTest, OfSites) {
  const Failures failures(siteSave, Version());
  for (const SaveFailure& failure : failures.All()) {
    Check(failure, SampleSiteAlignment(2), SiteRows(), siteThresholds);
  }
  // Calls of every writer, with and without the optional columns and the thresholds.
  EXPECT_EQ(failures.All().size(), std::vector<size_t>({41, 41, 43, 44, 46, 46, 56})[Version().number - 1]);
}

TEST_P(SaveFailuresTest, OfPaths) {
  const Failures failures(pathSave, Version());
  for (const SaveFailure& failure : failures.All()) {
    Check(failure, SamplePathAlignment(2), PathRows(), pathThresholds);
  }
  EXPECT_EQ(failures.All().size(), std::vector<size_t>({46, 46, 47, 47, 47, 47, 58})[Version().number - 1]);
}

TEST_P(SaveFailuresTest, ARollBackThatFailsIsLoggedAndLeftToTheClose) {
  SqliteCalls::Arm(On("prepare_v2", "INTO AntennaAlignment ("));
  SqliteCalls::Arm(On("exec", "ROLLBACK"));
  SampleSiteAlignment sample(2);
  EXPECT_EQ(sample.Save(store_.get()), nullptr);
  EXPECT_EQ(Lines(),
            (QStringList{Locked("SQL prepare  Insert Antenna Alignment"), Locked("SQL  Roll Back")}));
  EXPECT_EQ(SavedRows(Main()), QStringList());
}

TEST_P(SaveFailuresTest, ACloseThatFailsIsLogged) {
  SqliteCalls::Arm(Fault("close", SQLITE_BUSY).OnFile("main.sqlite"));
  SaveSample(store_, SampleSiteAlignment(2));
  EXPECT_EQ(Lines(), QStringList{"sqlite3_close failed with  5 database is locked"});
  SqliteLeakGuard::ExpectLeaked(1, 0);
}

// The failed step of the look-up is taken for an unknown site, but the site is there already.
TEST_P(SaveFailuresTest, AnExistingSiteThatIsNotFoundIsNotInsertedTwice) {
  SaveSample(store_, SampleSiteAlignment(2));
  SqliteCalls::Arm(On("step", "FROM Sites WHERE"));
  SampleSiteAlignment sample(2);
  const std::unique_ptr<IAntennaAlignmentReportData> record(sample.Save(store_.get()));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->AntennaAlignmentKey(), 4294967295U);
  EXPECT_EQ(SavedRows(Main()).size(), 6);
  if (Version().HasThresholdsFile()) {
    EXPECT_EQ(SavedRows(Thresholds()).value(1), "AntennaAlignmentThresholds|2|2|-1|0|4.5|6.5|8.5");
  }
}

// The step reports a row instead of done: no insert does, so it is a failure.
TEST_P(SaveFailuresTest, OnlyDoneIsSuccess) {
  SqliteCalls::Arm(Fault("step", SQLITE_ROW).OnText("INTO PathAlignment ("));
  SamplePathAlignment sample(2);
  EXPECT_EQ(sample.Save(store_.get()), nullptr);
  EXPECT_EQ(Lines(), QStringList{"SQL last step failed with  100 : another row available"});
}

INSTANTIATE_FOR_ALL_VERSIONS(SaveFailuresTest);

class ThresholdFailuresTest : public CreatedStoreTest {
 protected:
  // The transaction that is begun, and how it ends, if `sample` is saved and its thresholds are not.
  template <typename Sample>
  QStringList TransactionsOf(Sample sample, const char* insert) {
    SqliteCalls::Reset();
    SqliteCalls::Arm(On("step", insert));
    SqliteCalls::Record();
    EXPECT_EQ(sample.Save(store_.get()), nullptr);
    Lines();
    return SqliteCalls::TakeTrace().filter(QRegularExpression("^exec .*(TRANSACTION|ROLLBACK)"));
  }
};

// The rollback is not left to the closing of the connection.
TEST_P(ThresholdFailuresTest, FailedThresholdsAreRolledBack) {
  for (const QStringList& transactions :
       {TransactionsOf(SampleSiteAlignment(2), "INTO AntennaAlignmentThresholds ("),
        TransactionsOf(SamplePathAlignment(2), "INTO PathAlignmentThresholds (")}) {
    EXPECT_EQ(transactions, (QStringList{"exec BEGIN TRANSACTION; = 0", "exec END TRANSACTION; = 0",
                                         "exec BEGIN TRANSACTION; = 0", "exec ROLLBACK; = 0"}));
  }
}

INSTANTIATE_TEST_SUITE_P(Current, ThresholdFailuresTest, testing::Values(StoreVersion::All().back()),
                         StoreVersionName);

}  // namespace
