#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "store/AllStores.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

// A store under the base that all versions share. It is destroyed through its own class, the only one with
// a virtual destructor.
using StorePointer = std::unique_ptr<AlignmentDatabaseStore, void (*)(AlignmentDatabaseStore*)>;

using ConnectionPointer = std::unique_ptr<sqlite3, void (*)(sqlite3*)>;

// One schema version as the tests see it: how its store is made, and what its files have.
struct StoreVersion {
  using Factory = StorePointer (*)(const QString& mainPath, const QString& thresholdsPath);

  unsigned int number;
  Factory open;
  Factory create;

  // The columns of the alignment tables that not every version has.
  bool HasTiltInversion() const { return number >= 3; }
  bool HasSiteNote() const { return number >= 4; }
  bool HasRollPrecision() const { return number >= 5; }
  bool HasPathNote() const { return number >= 7; }
  // Whether the version keeps thresholds in a second file. The others never touch their second path.
  bool HasThresholdsFile() const { return number >= 7; }
  // Whether deleting alignments deletes what they refer to as well.
  bool DeletesAssociatedRecords() const { return number >= 3; }

  static const std::vector<StoreVersion>& All();
};

template <typename Store>
StorePointer OwnStore(Store* store) {
  return {store, [](AlignmentDatabaseStore* base) { delete static_cast<Store*>(base); }};
}

template <typename Store>
StoreVersion MakeStoreVersion(unsigned int number) {
  return {
      number,
      [](const QString& main, const QString& thresholds) { return OwnStore(Store::Open(main, thresholds)); },
      [](const QString& main, const QString& thresholds) {
        return OwnStore(Store::Create(main, thresholds));
      }};
}

inline const std::vector<StoreVersion>& StoreVersion::All() {
  static const std::vector<StoreVersion> versions = [] {
    unsigned int number = 0;
    const auto all = AllStores::Table(
        [&number](auto store) { return MakeStoreVersion<typename decltype(store)::Type>(++number); });
    return std::vector<StoreVersion>(all.begin(), all.end());
  }();
  return versions;
}

inline void PrintTo(const StoreVersion& version, std::ostream* out) { *out << "version " << version.number; }

inline std::string StoreVersionName(const testing::TestParamInfo<StoreVersion>& info) {
  return "Version" + std::to_string(info.param.number);
}

// Runs the tests of a fixture over all schema versions.
#define INSTANTIATE_FOR_ALL_VERSIONS(fixture) \
  INSTANTIATE_TEST_SUITE_P(All, fixture, testing::ValuesIn(StoreVersion::All()), StoreVersionName)

// The protected operations of every store, to be called as (store->*&Operations::SaveHeight)(…): naming
// them through this class is what grants access, the store itself may be of any version.
struct Operations : AlignmentDatabaseStore {
  using AlignmentDatabase::BeginTransaction;
  using AlignmentDatabase::CloseDatabase;
  using AlignmentDatabase::EndTransaction;
  using AlignmentDatabase::ExecuteNonQueryCommand;
  using AlignmentDatabase::FinalizeStatement;
  using AlignmentDatabase::InitializeVersionTable;
  using AlignmentDatabase::OpenDatabase;
  using AlignmentDatabase::OpenSecondDatabase;
  using AlignmentDatabase::PrepareStatement;
  using AlignmentDatabase::QDateToUnixUtc;
  using AlignmentDatabase::RollBack;
  using AlignmentDatabase::UnixUtcToQDate;

  using AlignmentDatabaseStore::GetIDForPathIdentifier;
  using AlignmentDatabaseStore::GetIDForSiteIdentifier;
  using AlignmentDatabaseStore::SaveAntennaAlignment;
  using AlignmentDatabaseStore::SaveAntennaAlignmentThresholds;
  using AlignmentDatabaseStore::SaveGeolocation;
  using AlignmentDatabaseStore::SaveHeight;
  using AlignmentDatabaseStore::SaveOrientation;
  using AlignmentDatabaseStore::SavePathAlignment;
  using AlignmentDatabaseStore::SavePathAlignmentThresholds;
  using AlignmentDatabaseStore::SavePathIdentifier;
  using AlignmentDatabaseStore::SaveSiteIdentifier;

  using AlignmentDatabaseStore::DeleteAssociatedRecordsByKeys;
  using AlignmentDatabaseStore::DeletePathByKey;
  using AlignmentDatabaseStore::DeleteSiteByKey;
  using AlignmentDatabaseStore::GenericBatchKeyDelete;
  using AlignmentDatabaseStore::GetAllRelatedPathKeys;
  using AlignmentDatabaseStore::GetAllRelatedSiteKeys;
  using AlignmentDatabaseStore::GetSinglePathMeasurementKeys;
  using AlignmentDatabaseStore::GetSingleSiteMeasurementKeys;

  using AlignmentDatabaseStore::RestoreCurrentPathInformation;
  using AlignmentDatabaseStore::RestoreCurrentSiteInformation;
  using AlignmentDatabaseStore::SaveCurrentPathInformation;
  using AlignmentDatabaseStore::SaveCurrentSiteInformation;
};

// Saves a sample alignment, which has to succeed, and lets go of its record.
template <typename Sample>
void SaveSample(const StorePointer& store, Sample sample) {
  const auto* record = sample.Save(store.get());
  EXPECT_NE(record, nullptr);
  delete record;
}

// A folder of the test's own with the paths of two files in it that do not exist yet, and the log. Lines that
// a test does not take with Lines() make it fail, and so do lines that are not plain debug lines.
class StoreFiles {
 public:
  ~StoreFiles() {
    EXPECT_EQ(log_.Lines(), QStringList()) << "lines that the test did not look at";
    EXPECT_EQ(log_.Misfits(), QStringList());
  }

  QString Main() const { return folder_.Main(); }
  QString Thresholds() const { return folder_.Thresholds(); }
  const TemporaryFolder& Folder() const { return folder_; }
  // Lines written since the last call.
  QStringList Lines() { return log_.TakeLines(); }

 private:
  TemporaryFolder folder_;
  LogCapture log_;
};

// Tests over every schema version, on files that do not exist yet.
class StoreVersionTest : public testing::TestWithParam<StoreVersion> {
 protected:
  static const StoreVersion& Version() { return GetParam(); }

  StorePointer Open() const { return Version().open(Main(), Thresholds()); }
  StorePointer Create() const { return Version().create(Main(), Thresholds()); }

  QString Main() const { return files_.Main(); }
  QString Thresholds() const { return files_.Thresholds(); }
  QStringList Lines() { return files_.Lines(); }

  StoreFiles files_;
};

// The same with a store whose files are created.
class CreatedStoreTest : public StoreVersionTest {
 protected:
  // Calls a protected operation of the store.
  template <typename Operation, typename... Arguments>
  auto Call(Operation operation, Arguments&&... arguments) {
    return std::invoke(operation, *store_, std::forward<Arguments>(arguments)...);
  }

  // Connections of the library's own, foreign keys enforced; closed when they go out of scope.
  ConnectionPointer OpenMain() {
    using OpenFile = sqlite3* (AlignmentDatabase::*)(bool);
    return {Call(static_cast<OpenFile>(&Operations::OpenDatabase), false), &Operations::CloseDatabase};
  }
  ConnectionPointer OpenThresholds() {
    return {Call(&Operations::OpenSecondDatabase, false), &Operations::CloseDatabase};
  }

  StorePointer store_ = Create();
};
