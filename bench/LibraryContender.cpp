#include "bench/LibraryContender.h"

#include "bench/Sample.h"
#include "migration/AllConverters.h"
#include "model/AlignerModel.h"
#include "model/AntennaAlignmentReportData.h"
#include "model/PathAlignmentReportData.h"
#include "model/PreferencesModel.h"
#include "reports/AntennaAlignmentPdfReportData.h"
#include "store/AlignmentDatabaseVersion7.h"
#include "tests/support/SampleAlignments.h"

namespace {

template <typename Converter>
bool ConvertBy(QString path) {
  return Converter().Convert(path);
}

class LibraryContender : public Contender {
 public:
  LibraryContender() {
    filled_.SetCurrentSiteInformation(site_.site.Clone());
    filled_.SetCurrentPathInformation(path_.path.Clone());
  }

  bool Create() override { return AlignmentDatabaseVersion7(main_, thresholds_).CreateTables(); }
  bool SaveSiteAlignment() override {
    return std::unique_ptr<IAntennaAlignmentReportData>(site_.Save(&store_)) != nullptr;
  }
  bool SavePathAlignment() override {
    return std::unique_ptr<IPathAlignmentReportData>(path_.Save(&store_)) != nullptr;
  }
  int ReadReports(int site) override {
    QString identifier = Identifier(site);
    const std::unique_ptr<AntennaAlignmentPdfReportData> reports(
        store_.GetAlignmentReportDataForSite(identifier));
    return reports->AlignmentData()->size();
  }
  int ListSites() override { return store_.GetSiteIdentifiers().size(); }
  bool DeleteSite(int site) override {
    QString identifier = Identifier(site);
    QString sector;
    return store_.DeleteReportsBySiteAndSector(identifier, sector);
  }
  bool DeleteReport(int site) override {
    QString identifier = Identifier(site);
    return store_.DeleteReportsBySiteAndIndex(identifier, 0);
  }
  bool SavePreferences() override { return store_.SavePreferences(&preferences_); }
  bool RestorePreferences() override { return store_.RestorePreferences(&preferences_); }
  bool StoreScreens() override { return store_.StoreInputContents(&filled_); }
  bool RestoreScreens() override {
    return store_.RestoreInputContents(&restored_) && restored_.HasCurrentSite() &&
           restored_.HasCurrentPath();
  }
  bool Convert(int version) override {
    static constexpr auto converters =
        AllConverters::Table([](auto converter) { return &ConvertBy<typename decltype(converter)::Type>; });
    return converters.at(static_cast<std::size_t>(version - 1))(main_);
  }

 private:
  static QString Identifier(int site) { return QLatin1String("Site ") + QString::number(site); }

  const QString main_ = QLatin1String(Paths::main);
  const QString thresholds_ = QLatin1String(Paths::thresholds);
  AlignmentDatabaseVersion7 store_{main_, thresholds_};
  SampleSiteAlignment site_{1};
  SamplePathAlignment path_{1};
  PreferencesModel preferences_;
  AlignerModel filled_;
  AlignerModel restored_;
};

}  // namespace

std::unique_ptr<Contender> MakeLibraryContender() { return std::make_unique<LibraryContender>(); }
