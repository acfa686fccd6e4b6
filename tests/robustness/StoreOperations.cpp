#include "tests/robustness/StoreOperations.h"

#include <memory>
#include <set>
#include <utility>

#include "model/AlignerModel.h"
#include "model/IAntennaAlignmentReportData.h"
#include "model/IPathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tests/robustness/Allowed.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SampleAlignments.h"
#include "tests/support/SqliteCalls.h"

namespace {

QString Word(bool result) { return result ? QStringLiteral("true") : QStringLiteral("false"); }

template <typename Record>
QString Saved(Record* record, unsigned int (Record::*key)() const) {
  const std::unique_ptr<Record> owned(record);
  return owned ? QStringLiteral("key %1").arg((owned.get()->*key)()) : QStringLiteral("null");
}

template <typename Sample>
QString SaveSite(Sample sample, AlignmentDatabaseStore* store) {
  return Saved(sample.Save(store), &IAntennaAlignmentReportData::AntennaAlignmentKey);
}

template <typename Sample>
QString SavePath(Sample sample, AlignmentDatabaseStore* store) {
  return Saved(sample.Save(store), &IPathAlignmentReportData::PathAlignmentKey);
}

// A record as "values of the main file/thresholds".
template <typename Record>
QString Written(const Record& record, unsigned int key, float thirdThreshold) {
  const IMeasurementOptions& options = *record.GetMeasurementOptions();
  const QStringList values = {
      QString::number(key),
      record.Identifier(),
      record.Note(),
      QString::number(static_cast<double>(options.AzimuthOffset())),
      QString::number(static_cast<double>(record.GetMeasuredOrientation()->RollDegrees())),
      QString::number(record.GetGeolocation()->LatitudeDegreesNorth()),
      QString::number(record.GetHeight()->HeightInMeters(nullptr)),
      QString::number(record.GetMeasurementTime().toSecsSinceEpoch())};
  return QStringLiteral("%1/%2,%3,%4")
      .arg(values.join(QLatin1Char('|')))
      .arg(static_cast<double>(options.AzimuthThreshold()))
      .arg(static_cast<double>(options.TiltThreshold()))
      .arg(static_cast<double>(thirdThreshold));
}

QString SiteReports(AlignmentDatabaseStore* store) {
  QString identifier = QStringLiteral("Site 1");
  const std::unique_ptr<AntennaAlignmentPdfReportData> reports(
      store->GetAlignmentReportDataForSite(identifier));
  if (!reports) return QStringLiteral("null");
  QStringList records;
  for (const IAntennaAlignmentReportData* record : std::as_const(*reports->AlignmentData())) {
    records.append(
        Written(*record, record->AntennaAlignmentKey(), record->GetMeasurementOptions()->RollThreshold()));
  }
  return QStringLiteral("records;") + records.join(QLatin1Char(';'));
}

QString PathReports(AlignmentDatabaseStore* store) {
  const std::unique_ptr<PathAlignmentPdfReportData> reports(
      store->GetPathAlignmentReportDataForSite(QStringLiteral("Path 1")));
  if (!reports) return QStringLiteral("null");
  QStringList records;
  for (const IPathAlignmentReportData* record : std::as_const(*reports->PathData())) {
    records.append(
        Written(*record, record->PathAlignmentKey(), record->GetMeasurementOptions()->PathLengthThreshold()));
  }
  return QStringLiteral("records;") + records.join(QLatin1Char(';'));
}

QString Listed(const QVector<QString>& identifiers) {
  return QStringList(identifiers.toList()).join(QLatin1Char(';'));
}

void ChangePreferences(PreferencesModel* model, int number) {
  model->SerialNumber()->SetValue(number);
  model->UserTechId()->SetValue(QStringLiteral("tech %1").arg(number));
  model->PathLengthThreshold()->SetValue(number + 0.5);
}

QString SavePreferences(AlignmentDatabaseStore* store, int number) {
  PreferencesModel model;
  ChangePreferences(&model, number);
  return Word(store->SavePreferences(&model));
}

// "result/which of the two rows the model has taken over".
QString RestorePreferences(AlignmentDatabaseStore* store) {
  PreferencesModel model;
  const int serialNumber = model.SerialNumber()->Value();
  const double pathLength = model.PathLengthThreshold()->Value();
  QString result = Word(store->RestorePreferences(&model)) + QLatin1Char('/');
  if (model.SerialNumber()->Value() != serialNumber) result += QLatin1String("main");
  if (model.PathLengthThreshold()->Value() > pathLength ||
      model.PathLengthThreshold()->Value() < pathLength) {
    result += QLatin1String("+thresholds");
  }
  return result;
}

QString StoreScreens(AlignmentDatabaseStore* store, int number) {
  AlignerModel model;
  model.SetCurrentSiteInformation(SampleSiteAlignment(number).site.Clone());
  model.SetCurrentPathInformation(SamplePathAlignment(number).path.Clone());
  return Word(store->StoreInputContents(&model));
}

QString ClearScreens(AlignmentDatabaseStore* store) {
  AlignerModel model;
  return Word(store->StoreInputContents(&model));
}

QString RestoreScreens(AlignmentDatabaseStore* store) {
  AlignerModel model;
  QString result = Word(store->RestoreInputContents(&model)) + QLatin1Char('/');
  if (model.CurrentSiteInformation() != nullptr) result += QLatin1String("site");
  if (model.CurrentPathInformation() != nullptr) result += QLatin1String("+path");
  return result;
}

using OnStore = QString (*)(AlignmentDatabaseStore* store);

template <OnStore operation>
QString Run(const StoreVersion& version, const QString& main, const QString& thresholds) {
  const StorePointer store = version.open(main, thresholds);
  return operation(store.get());
}

QString SaveNewSite(AlignmentDatabaseStore* store) { return SaveSite(SampleSiteAlignment(9), store); }
QString SaveKnownSite(AlignmentDatabaseStore* store) {
  return SaveSite(SampleSiteAlignment(9, QStringLiteral("Site 1"), QStringLiteral("Sector 9")), store);
}
QString SaveNewPath(AlignmentDatabaseStore* store) { return SavePath(SamplePathAlignment(9), store); }
QString SaveKnownPath(AlignmentDatabaseStore* store) {
  return SavePath(SamplePathAlignment(9, QStringLiteral("Path 1")), store);
}
QString SiteIdentifiers(AlignmentDatabaseStore* store) { return Listed(store->GetSiteIdentifiers()); }
QString PathIdentifiers(AlignmentDatabaseStore* store) { return Listed(store->GetPathIdentifiers()); }
QString DeleteSite(AlignmentDatabaseStore* store) {
  QString site = QStringLiteral("Site 1");
  QString sector = QStringLiteral("Sector 1");
  return Word(store->DeleteReportsBySiteAndSector(site, sector));
}
QString DeletePath(AlignmentDatabaseStore* store) {
  QString path = QStringLiteral("Path 1");
  return Word(store->DeleteReportsByPath(path));
}
QString DeleteSiteReport(AlignmentDatabaseStore* store) {
  QString site = QStringLiteral("Site 1");
  return Word(store->DeleteReportsBySiteAndIndex(site, 0));
}
QString DeletePathReport(AlignmentDatabaseStore* store) {
  QString path = QStringLiteral("Path 1");
  return Word(store->DeleteReportsByPathAndIndex(path, 0));
}
QString SaveOtherPreferences(AlignmentDatabaseStore* store) { return SavePreferences(store, 22); }
QString StoreOtherScreens(AlignmentDatabaseStore* store) { return StoreScreens(store, 22); }
QString CreateTables(AlignmentDatabaseStore* store) { return Word(store->CreateTables()); }

QString ProbeVersion(const StoreVersion&, const QString& main, const QString&) {
  unsigned int number = 0;
  return AlignmentDatabase::GetDatabaseFileVersion(main, &number) ? QString::number(number) : Word(false);
}

// Three alignments of two sites, three of two paths, and the single-row tables.
Contents FilledFiles(const StoreVersion& version) {
  const Scene folder{Contents()};
  const LogCapture log;
  {
    const StorePointer store = version.create(folder.Main(), folder.Thresholds());
    SaveSite(SampleSiteAlignment(1), store.get());
    SaveSite(SampleSiteAlignment(2, QStringLiteral("Site 1"), QStringLiteral("Sector 2")), store.get());
    SaveSite(SampleSiteAlignment(3), store.get());
    SavePath(SamplePathAlignment(1), store.get());
    SavePath(SamplePathAlignment(2, QStringLiteral("Path 1")), store.get());
    SavePath(SamplePathAlignment(3), store.get());
    SavePreferences(store.get(), 11);
    StoreScreens(store.get(), 11);
  }
  EXPECT_EQ(log.Lines(), QStringList());
  return {ReadFile(folder.Main()), ReadFile(folder.Thresholds())};
}

std::vector<StoreOperation> Without(const std::set<Kind>& kinds) {
  std::vector<StoreOperation> operations;
  for (const StoreOperation& operation : StoreOperation::All()) {
    if (kinds.count(operation.kind) == 0) operations.push_back(operation);
  }
  return operations;
}

}  // namespace

const std::vector<StoreOperation>& StoreOperation::All() {
  static constexpr char siteRows[] = "DELETE FROM AntennaAlignment WHERE SiteKey = ?";
  static constexpr char pathRows[] = "DELETE FROM PathAlignment WHERE PathKey = ?";
  static const std::vector<StoreOperation> operations = {
      {"CreateTables", Kind::Creates, &Run<CreateTables>, &Allowed::Creation},
      {"ProbeVersion", Kind::Reads, &ProbeVersion, &Allowed::Reading},
      {"SaveNewSite", Kind::Writes, &Run<SaveNewSite>, &Allowed::Save},
      {"SaveKnownSite", Kind::Writes, &Run<SaveKnownSite>, &Allowed::Save},
      {"SaveNewPath", Kind::Writes, &Run<SaveNewPath>, &Allowed::Save},
      {"SaveKnownPath", Kind::Writes, &Run<SaveKnownPath>, &Allowed::Save},
      {"SiteIdentifiers", Kind::Reads, &Run<SiteIdentifiers>, &Allowed::Listing},
      {"PathIdentifiers", Kind::Reads, &Run<PathIdentifiers>, &Allowed::Listing},
      {"SiteReports", Kind::Reads, &Run<SiteReports>, &Allowed::SiteReports},
      {"PathReports", Kind::Reads, &Run<PathReports>, &Allowed::PathReports, 2},
      {"DeleteSite", Kind::Writes, &Run<DeleteSite>, &Allowed::SiteDeletion, 0, true, true, siteRows},
      {"DeletePath", Kind::Writes, &Run<DeletePath>, &Allowed::PathDeletion, 0, true, true, pathRows},
      {"DeleteSiteReport", Kind::Writes, &Run<DeleteSiteReport>, &Allowed::ReportDeletion, 0, true, true},
      {"DeletePathReport", Kind::Writes, &Run<DeletePathReport>, &Allowed::ReportDeletion, 2, true, true},
      {"SavePreferences", Kind::Writes, &Run<SaveOtherPreferences>, &Allowed::PreferencesSave},
      {"RestorePreferences", Kind::Reads, &Run<RestorePreferences>, &Allowed::PreferencesRestore},
      {"StoreScreens", Kind::Writes, &Run<StoreOtherScreens>, &Allowed::ScreensStore},
      {"ClearScreens", Kind::Writes, &Run<ClearScreens>, &Allowed::ScreensClear, 0, false, true},
      {"RestoreScreens", Kind::Reads, &Run<RestoreScreens>, &Allowed::ScreensRestore},
  };
  return operations;
}

bool StoreOperation::NeverReturnsWithout(const QString& call) const {
  return spinsWithout != nullptr &&
         call == QStringLiteral("prepare_v2 %1 = 0").arg(QLatin1String(spinsWithout));
}

std::vector<StoreOperation> StoreOperation::Writing() { return Without({Kind::Creates, Kind::Reads}); }

std::vector<StoreOperation> StoreOperation::OnFiles() { return Without({Kind::Creates}); }

Contents StartOf(const StoreOperation& operation, const StoreVersion& version) {
  return operation.kind == Kind::Creates ? Contents() : FilledFiles(version);
}

Outcome RunOn(const Scene& scene, const StoreOperation& operation, const StoreVersion& version) {
  const QString result = operation.run(version, scene.Main(), scene.Thresholds());
  SqliteCalls::CloseLeaked();
  return {result, scene.MainChange(), scene.ThresholdsChange()};
}

bool IsFullResult(const QString& result) {
  const QStringList failures = {QString(), QStringLiteral("null"), QStringLiteral("key 4294967295")};
  return !failures.contains(result) && !result.startsWith(QLatin1String("false")) &&
         result != QLatin1String("records;");
}

std::string VersionAndOperationName(const testing::TestParamInfo<VersionAndOperation>& info) {
  return std::string(std::get<StoreOperation>(info.param).name) + "Version" +
         std::to_string(std::get<StoreVersion>(info.param).number);
}
