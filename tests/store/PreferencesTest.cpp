// Saving and restoring preferences.
#include "store/PreferenceColumns.h"

#include <sqlite3.h>

#include "model/IModelObserver.h"
#include "schema/SchemaVersion7.h"
#include "store/StoreDescription.h"
#include "tests/model/CountingObserver.h"
#include "tests/store/SamplePreferences.h"
#include "tests/store/StoreVersions.h"
#include "tests/support/SqliteCalls.h"

namespace {

class PreferencesTest : public CreatedStoreTest {
 protected:
  std::vector<PreferenceSample> Samples() const { return MainSamplesOf(Version().number); }
  bool HasThresholds() const { return Version().HasThresholdsFile(); }

  QStringList MainRow() const { return MainRow(ColumnsOf(Samples()).join(", ")); }
  QStringList MainRow(const QString& columns) const {
    return Rows(Main(), QStringLiteral("SELECT %1 FROM Preferences WHERE rowid = 1").arg(columns));
  }
  QStringList PathLengthRow() const {
    return Rows(Thresholds(), QStringLiteral("SELECT rowid, * FROM PreferencesPathLength"));
  }
  // The observers of all settings in column order, as far as they are restored.
  QVector<ObservableModel*> Restored(IPreferencesModel* model) const {
    QVector<ObservableModel*> settings;
    for (const PreferenceSample& sample : Samples()) {
      if (QByteArray(sample.column) != "AzimuthOffset") settings << sample.setting(model);
    }
    if (HasThresholds()) settings << model->PathLengthThresholdEnabled() << model->PathLengthThreshold();
    return settings;
  }
  static void Observe(IPreferencesModel* model, IModelObserver* observer) {
    for (const auto* samples : {&MainSamples(), &PathLengthSamples()}) {
      for (const PreferenceSample& sample : *samples) sample.setting(model)->AddObserver(observer);
    }
  }

  SamplePreferences model_;
};

TEST_P(PreferencesTest, NullIsRefusedBeforeAnyFileIsOpened) {
  SqliteCalls::Reset();
  EXPECT_FALSE(store_->SavePreferences(nullptr));
  EXPECT_FALSE(store_->RestorePreferences(nullptr));
  EXPECT_EQ(SqliteCalls::Count("open_v2"), 0);
}

// The statements and the table of columns must not drift apart.
TEST_P(PreferencesTest, StatementsNameTheColumnsOfTheVersionInOrder) {
  const SchemaTexts& texts = StoreDescription::Of(Version().number).texts;
  const QStringList columns = ColumnsOf(Samples());
  QStringList marks;
  while (marks.size() < columns.size()) marks << "?";
  const QString save = QString(texts.savePreferences).remove(' ');
  const QString restore = QString(texts.restorePreferences).remove(' ');
  EXPECT_EQ(save, QStringLiteral("INSERTORREPLACEINTOPreferences(RowID,%1)VALUES(1,%2)")
                      .arg(columns.join(','), marks.join(',')));
  EXPECT_EQ(restore, QStringLiteral("SELECT%1FROMPreferencesWHERE(RowID=1)").arg(columns.join(',')));

  const PreferenceColumns table = PreferenceColumns::OfMainRow(Version().number);
  ASSERT_EQ(table.count, columns.size());
  for (int index = 0; index < table.count; ++index) {
    EXPECT_EQ(QString(table.first[index].name), columns[index]);
    EXPECT_EQ(table.first[index].firstVersion, Samples()[static_cast<std::size_t>(index)].firstVersion);
  }
  // All that the file's table has, in its order, except the language.
  QStringList inTable = Rows(Main(), QStringLiteral("SELECT name FROM pragma_table_info('Preferences')"));
  inTable.replaceInStrings("'", "").removeAll("Language");
  EXPECT_EQ(inTable, columns);
}

TEST_P(PreferencesTest, SavedColumnByColumn) {
  AssignSamples(&model_);
  EXPECT_TRUE(store_->SavePreferences(&model_));
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT rowid FROM Preferences")), QStringList("1"));
  EXPECT_EQ(MainRow(), QStringList(WrittenBy(Samples())));
  if (HasThresholds()) {
    EXPECT_EQ(PathLengthRow(), QStringList("1|" + WrittenBy(PathLengthSamples())));
  }
}

TEST_P(PreferencesTest, EachFlagHasItsOwnColumn) {
  for (const PreferenceSample& flag : Samples()) {
    if (!IsFlag(flag)) continue;
    SCOPED_TRACE(flag.column);
    ClearFlags(&model_);
    flag.assign(&model_);
    EXPECT_TRUE(store_->SavePreferences(&model_));
    QStringList set;
    for (const PreferenceSample& other : Samples()) {
      if (IsFlag(other) && MainRow(other.column) == QStringList("1")) set << other.column;
    }
    EXPECT_EQ(set, QStringList(flag.column));

    // And comes back only to its own setting: what a second model then writes is the same row.
    const QStringList row = MainRow();
    SamplePreferences restored;
    EXPECT_TRUE(store_->RestorePreferences(&restored));
    ClearFlags(&model_);
    EXPECT_TRUE(store_->SavePreferences(&model_));
    EXPECT_TRUE(store_->SavePreferences(&restored));
    EXPECT_EQ(MainRow(), row);
  }
}

// Everything comes back except the azimuth offset, which is saved and never restored.
TEST_P(PreferencesTest, RoundTripColumnByColumn) {
  AssignSamples(&model_);
  EXPECT_TRUE(store_->SavePreferences(&model_));
  SamplePreferences restored;
  ASSERT_TRUE(restored.AzimuthOffset()->AssignValueWithKey(103));
  EXPECT_TRUE(store_->RestorePreferences(&restored));
  EXPECT_EQ(restored.AzimuthOffset()->CurrentValue()->Key(), 103U);
  EXPECT_TRUE(store_->SavePreferences(&restored));
  QString expected = WrittenBy(Samples());
  EXPECT_EQ(MainRow(), QStringList(expected.replace("101|102|103", "101|103|103")));
  if (HasThresholds()) {
    EXPECT_EQ(PathLengthRow(), QStringList("1|" + WrittenBy(PathLengthSamples())));
  }
}

TEST_P(PreferencesTest, ObserversAreToldInTheOrderOfTheColumns) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  CountingObserver observer;
  Observe(&model_, &observer);
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_EQ(observer.changed, Restored(&model_));
}

// While the observers of the main file's columns run, its transaction is open.
TEST_P(PreferencesTest, ObserversAreToldInsideTheTransaction) {
  class Watcher : public IModelObserver {
   public:
    void ModelChanged(ObservableModel*) override {
      ++told;
      execs << SqliteCalls::TakeTrace().filter("TRANSACTION");
    }
    int told = 0;
    QStringList execs;
  } watcher;
  EXPECT_TRUE(store_->SavePreferences(&model_));
  // All but the azimuth offset.
  const auto settings = Restored(&model_).mid(0, static_cast<int>(Samples().size()) - 1);
  for (ObservableModel* setting : settings) setting->AddObserver(&watcher);
  SqliteCalls::Record();
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_EQ(watcher.told, settings.size());
  EXPECT_EQ(watcher.execs, QStringList{"exec BEGIN TRANSACTION; = 0"});
}

TEST_P(PreferencesTest, ValuesThatNothingMatchesOrThatAreWiderThanTheSetting) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  RunSql(Main(),
         QStringLiteral("UPDATE Preferences SET DistanceUnits = 7, TimeZone = 4294967294, "
                        "ShowTarget = -3, CalibrationDate = CAST(x'c3a9' AS TEXT), SerialNumber = -5"));
  ASSERT_TRUE(model_.DistanceUnits()->AssignValueWithKey(102));
  model_.ShowTarget()->SetValue(false);
  CountingObserver observer;
  model_.DistanceUnits()->AddObserver(&observer);
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_EQ(model_.DistanceUnits()->CurrentValue()->Key(), 102U);
  EXPECT_TRUE(observer.changed.isEmpty());
  EXPECT_EQ(model_.TimeZone()->CurrentValue()->Key(), 4294967294U);
  EXPECT_TRUE(model_.ShowTarget()->Value());
  EXPECT_EQ(model_.CalibrationDate()->Value(), QString::fromUtf8("é"));
  EXPECT_EQ(model_.SerialNumber()->Value(), -5);
}

TEST_P(PreferencesTest, RollPrecisionIsOnOrOff) {
  if (Version().number < 5) {
    EXPECT_EQ(ColumnsOf(Samples()).filter("RollPrecision"), QStringList());
    return;
  }
  EXPECT_TRUE(store_->SavePreferences(&model_));
  for (const char* stored : {"2", "-1", "1", "0"}) {
    RunSql(Main(), QStringLiteral("UPDATE Preferences SET RollPrecision = %1").arg(stored));
    EXPECT_TRUE(store_->RestorePreferences(&model_));
    EXPECT_EQ(model_.RollPrecision()->Value(), QByteArray(stored) != "0");
    EXPECT_TRUE(store_->SavePreferences(&model_));
    EXPECT_EQ(MainRow("RollPrecision"), QStringList(QByteArray(stored) != "0" ? "1" : "0"));
  }
}

// Another application's model may have a setting that was never given a value.
class PreferencesWithoutUnits : public SamplePreferences {
 public:
  EnumeratedSetting<DistanceUnitsSetting>* DistanceUnits() override { return &units_; }

 private:
  EnumeratedSetting<DistanceUnitsSetting> units_{{}, nullptr};
};

TEST_P(PreferencesTest, ASettingWithoutValueIsStoredAsZero) {
  PreferencesWithoutUnits model;
  EXPECT_TRUE(store_->SavePreferences(&model));
  EXPECT_EQ(MainRow("DistanceUnits"), QStringList("0"));
}

TEST_P(PreferencesTest, ANullTextIsEmpty) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  model_.CalibrationDate()->SetValue("before");
  SqliteCalls::Arm(Fault("column_text", SQLITE_NOMEM));
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_EQ(model_.CalibrationDate()->Value(), QString(""));
}

TEST_P(PreferencesTest, EachSaveResetsTheLanguage) {
  const bool hasLanguage = Version().number >= 4;
  EXPECT_TRUE(store_->SavePreferences(&model_));
  if (hasLanguage) RunSql(Main(), QStringLiteral("UPDATE Preferences SET Language = 7"));
  SqliteCalls::Record();
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_TRUE(store_->SavePreferences(&model_));
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("Language"), QStringList());
  if (hasLanguage) {
    EXPECT_EQ(MainRow("Language"), QStringList("0"));
  }
}

// ---- binds

// The row that was there stays, and nothing after the column is bound.
TEST_P(PreferencesTest, EachBindOfTheMainRowCanFail) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  const QStringList before = MainRow();
  AssignSamples(&model_);
  int position = 0;
  for (const PreferenceSample& sample : Samples()) {
    SCOPED_TRACE(sample.column);
    ++position;
    SqliteCalls::Reset();
    SqliteCalls::Record();
    SqliteCalls::Arm(Fault("bind", SQLITE_NOMEM).At(position));
    EXPECT_FALSE(store_->SavePreferences(&model_));
    EXPECT_EQ(SqliteCalls::FiredCount(), 1);
    EXPECT_EQ(SqliteCalls::Count("bind"), position);
    EXPECT_EQ(SqliteCalls::Count("step"), 0);
    EXPECT_EQ(SqliteCalls::Count("open_v2"), 1);
    const QString last = SqliteCalls::TakeTrace().filter(QRegularExpression("^bind_")).last();
    EXPECT_TRUE(last.startsWith(QStringLiteral("%1 %2, ").arg(sample.bind).arg(position)))
        << last.toStdString();
    EXPECT_EQ(Lines(), QStringList(QString(sample.bindFailure) + " 7 : out of memory"));
  }
  SqliteCalls::Reset();
  EXPECT_EQ(MainRow(), before);
}

// ---- every other failure

struct PreferencesBranch {
  const char* name;
  Fault fault;
  QStringList lines;
  bool result;
  bool main = true;        // written, or applied to the model
  bool thresholds = true;  // likewise
};

const QString cannotOpen = QStringLiteral("Can't open database: rval= 14 : unable to open database file");
const QString busy = QStringLiteral("  failed with  5 : database is locked");
const QString noMemory = QStringLiteral("  failed with  7 : out of memory");

Fault OpeningOf(const char* file) { return Fault("open_v2", SQLITE_CANTOPEN).OnFile(file); }

std::vector<PreferencesBranch> SaveBranches(bool hasThresholds) {
  std::vector<PreferencesBranch> branches{
      {"Open", OpeningOf("main.sqlite"), {cannotOpen}, false, false, false},
      {"Prepare",
       Fault("prepare_v2", SQLITE_NOMEM).OnText("INTO Preferences "),
       {"SQL prepare  Save Preferences" + noMemory},
       false,
       false,
       false},
      {"Step", Fault("step", SQLITE_BUSY).OnText("INTO Preferences "), {}, false, false, false},
      {"StepRow", Fault("step", SQLITE_ROW).OnText("INTO Preferences "), {}, false, false, false},
  };
  if (!hasThresholds) return branches;
  const char* const row = "INTO PreferencesPathLength";
  const PreferencesBranch thresholds[] = {
      {"OpenThresholds", OpeningOf("thresholds.sqlite"), {cannotOpen}, false, true, false},
      {"PrepareThresholds",
       Fault("prepare_v2", SQLITE_NOMEM).OnText(row),
       {"SQL prepare  Save Preferences Thresholds" + noMemory},
       true,
       true,
       false},
      {"BindEnabled",
       Fault("bind_int", SQLITE_NOMEM).OnText(row),
       {"SQL bind path length threshold enabled failed with  7 : out of memory"},
       true,
       true,
       false},
      {"BindThreshold",
       Fault("bind_double", SQLITE_NOMEM).OnText(row),
       {"SQL bind path length threshold failed with  7 : out of memory"},
       true,
       true,
       false},
      {"StepThresholds", Fault("step", SQLITE_BUSY).OnText(row), {}, true, true, false},
  };
  branches.insert(branches.end(), std::begin(thresholds), std::end(thresholds));
  return branches;
}

TEST_P(PreferencesTest, FailuresOfSaving) {
  for (const PreferencesBranch& branch : SaveBranches(HasThresholds())) {
    SCOPED_TRACE(branch.name);
    SamplePreferences before;
    EXPECT_TRUE(store_->SavePreferences(&before));
    const QStringList mainBefore = MainRow();
    const QStringList pathLengthBefore = HasThresholds() ? PathLengthRow() : QStringList();
    SamplePreferences model;
    AssignSamples(&model);
    SqliteCalls::Arm(branch.fault);
    EXPECT_EQ(store_->SavePreferences(&model), branch.result);
    EXPECT_TRUE(SqliteCalls::Fired());
    SqliteCalls::Reset();
    EXPECT_EQ(Lines(), branch.lines);
    EXPECT_EQ(MainRow(), branch.main ? QStringList(WrittenBy(Samples())) : mainBefore);
    if (HasThresholds()) {
      EXPECT_EQ(PathLengthRow(), pathLengthBefore);
    }
  }
}

// Nothing is changed inside a transaction, in neither file: each row is its own.
TEST_P(PreferencesTest, SavingUsesNoTransaction) {
  SqliteCalls::Reset();
  SqliteCalls::Record();
  EXPECT_TRUE(store_->SavePreferences(&model_));
  EXPECT_EQ(SqliteCalls::TakeTrace().filter("TRANSACTION"), QStringList());
}

std::vector<PreferencesBranch> RestoreBranches(bool hasThresholds) {
  const char* const select = "FROM Preferences WHERE";
  std::vector<PreferencesBranch> branches{
      {"Open",
       OpeningOf("main.sqlite"),
       {cannotOpen, "Failed to open database in RestorePreferences"},
       false,
       false,
       false},
      {"Begin",
       Fault("exec", SQLITE_BUSY).OnFile("main.sqlite").OnText("BEGIN"),
       {"SQL  Begin Transaction" + busy},
       false,
       false,
       false},
      {"Prepare",
       Fault("prepare_v2", SQLITE_NOMEM).OnText(select),
       {"SQL prepare  Restore preferences" + noMemory, "Failed to prepare statement in prefernces statement"},
       false,
       false,
       false},
      {"Step", Fault("step", SQLITE_BUSY).OnText(select), {}, false, false, false},
      {"StepDone", Fault("step", SQLITE_DONE).OnText(select), {}, false, false, false},
      {"Commit",
       Fault("exec", SQLITE_BUSY).OnFile("main.sqlite").OnText("END"),
       {"SQL  End Transaction" + busy},
       true},
  };
  if (!hasThresholds) return branches;
  const char* const row = "FROM PreferencesPathLength";
  const PreferencesBranch thresholds[] = {
      {"OpenThresholds",
       OpeningOf("thresholds.sqlite"),
       {cannotOpen, "Failed to open database in RestorePreferenceThresholds"},
       false,
       true,
       false},
      {"BeginThresholds",
       Fault("exec", SQLITE_BUSY).OnFile("thresholds.sqlite").OnText("BEGIN"),
       {"SQL  Begin Transaction" + busy},
       true,
       true,
       false},
      {"PrepareThresholds",
       Fault("prepare_v2", SQLITE_NOMEM).OnText(row),
       {"SQL prepare  Restore preferences threshold" + noMemory,
        "Failed to prepare statement in prefernces threshold statement"},
       true,
       true,
       false},
      {"StepThresholds", Fault("step", SQLITE_BUSY).OnText(row), {}, true, true, false},
      {"CommitThresholds",
       Fault("exec", SQLITE_BUSY).OnFile("thresholds.sqlite").OnText("END"),
       {"SQL  End Transaction" + busy},
       true},
  };
  branches.insert(branches.end(), std::begin(thresholds), std::end(thresholds));
  return branches;
}

// Which settings were told of a change says what was applied.
TEST_P(PreferencesTest, FailuresOfRestoring) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  for (const PreferencesBranch& branch : RestoreBranches(HasThresholds())) {
    SCOPED_TRACE(branch.name);
    SamplePreferences model;
    CountingObserver observer;
    Observe(&model, &observer);
    SqliteCalls::Arm(branch.fault);
    EXPECT_EQ(store_->RestorePreferences(&model), branch.result);
    EXPECT_TRUE(SqliteCalls::Fired());
    SqliteCalls::Reset();
    EXPECT_EQ(Lines(), branch.lines);
    QVector<ObservableModel*> expected = branch.main ? Restored(&model) : QVector<ObservableModel*>();
    if (branch.main && HasThresholds() && !branch.thresholds) expected.resize(expected.size() - 2);
    EXPECT_EQ(observer.changed, expected);
  }
}

TEST_P(PreferencesTest, ARowThatCannotBeRolledBackIsOneLineMore) {
  SqliteCalls::Arm(Fault("exec", SQLITE_BUSY).OnText("ROLLBACK"));
  EXPECT_FALSE(store_->RestorePreferences(&model_));
  EXPECT_EQ(Lines(), QStringList("SQL  Roll Back" + busy));
}

// A new store has no row. The model keeps what it was built with.
TEST_P(PreferencesTest, WithoutARowNothingIsRestored) {
  CountingObserver observer;
  Observe(&model_, &observer);
  EXPECT_FALSE(store_->RestorePreferences(&model_));
  EXPECT_TRUE(observer.changed.isEmpty());
  if (!HasThresholds()) return;
  EXPECT_TRUE(store_->SavePreferences(&model_));
  RunSql(Thresholds(), QStringLiteral("DELETE FROM PreferencesPathLength"));
  EXPECT_TRUE(store_->RestorePreferences(&model_));
  EXPECT_EQ(observer.changed, Restored(&model_).mid(0, 33));
}

// The row is found by its row id, not by being there.
TEST_P(PreferencesTest, OnlyRowOneCounts) {
  EXPECT_TRUE(store_->SavePreferences(&model_));
  RunSql(Main(), QStringLiteral("UPDATE Preferences SET rowid = 2"));
  EXPECT_FALSE(store_->RestorePreferences(&model_));
  EXPECT_TRUE(store_->SavePreferences(&model_));
  EXPECT_EQ(Rows(Main(), QStringLiteral("SELECT rowid FROM Preferences ORDER BY 1")),
            QStringList({"1", "2"}));
}

INSTANTIATE_FOR_ALL_VERSIONS(PreferencesTest);

TEST(PreferencesTextsTest, OfTheCurrentVersionAreToTheLetter) {
  const SchemaTexts texts = SchemaVersion7();
  EXPECT_STREQ(texts.savePreferences,
               "INSERT OR REPLACE INTO Preferences (RowID,DistanceUnits,AzimuthOffset,DateFormat, "
               "CoordinateFormat, DatumFormat, HeightSource, AutoShutoffDelay,ShowCrosshairs,ShowTarget, "
               "CameraEnabled, BluetoothEnabled, AzimuthThreshold, TiltThreshold, RollThreshold, "
               "AccelerometerXOffset, AccelerometerYOffset, CalibrationDate, SerialNumber, TimeZone, "
               "SerialNumberValid, SoundEnabled, AccelerometerXGain, DaylightSavingsEnabled, "
               "AccelerometerZOffset, AccelerometerZGain, AccelerometerCalibrated, GNSSFileCRC, "
               "TiltIndicatorEnabled, RollIndicatorEnabled, TiltInversionEnabled, BluetoothDisplayName, "
               "RollPrecision, GeoidFormat, UserTechId ) VALUES "
               "(1,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
  EXPECT_STREQ(
      texts.restorePreferences,
      "SELECT DistanceUnits,AzimuthOffset,DateFormat, CoordinateFormat, DatumFormat, HeightSource, "
      "AutoShutoffDelay,ShowCrosshairs,ShowTarget, CameraEnabled, BluetoothEnabled, AzimuthThreshold, "
      "TiltThreshold, RollThreshold, AccelerometerXOffset, AccelerometerYOffset, CalibrationDate, "
      "SerialNumber, TimeZone, SerialNumberValid, SoundEnabled, AccelerometerXGain, "
      "DaylightSavingsEnabled, AccelerometerZOffset, AccelerometerZGain, AccelerometerCalibrated, "
      "GNSSFileCRC,TiltIndicatorEnabled, RollIndicatorEnabled, TiltInversionEnabled, "
      "BluetoothDisplayName, RollPrecision, GeoidFormat, UserTechId FROM Preferences WHERE (RowID=1)");
}

}  // namespace
