#include "bench/Content.h"

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include "bench/Sample.h"
#include "model/AlignerModel.h"
#include "model/PathInformation.h"
#include "model/PreferencesModel.h"
#include "model/SiteInformation.h"
#include "store/AllStores.h"

namespace fs = std::filesystem;

namespace {

template <typename Store>
void CreateBy(const QString& main, const QString& thresholds) {
  Store store(main, thresholds);
  PreferencesModel preferences;
  AlignerModel screens;
  screens.SetCurrentSiteInformation(new SiteInformation(QStringLiteral("Site"), QStringLiteral("Sector"),
                                                        QStringLiteral("Position"), 1.0F, 2.0F, 3.0F));
  screens.SetCurrentPathInformation(new PathInformation(QStringLiteral("Path"), 1.0, 2.0, 3.0));
  if (!store.CreateTables() || !store.SavePreferences(&preferences) || !store.StoreInputContents(&screens)) {
    throw std::runtime_error("cannot create the files");
  }
}

void CreateFiles(int version, const QString& main, const QString& thresholds) {
  static constexpr auto creators =
      AllStores::Table([](auto store) { return &CreateBy<typename decltype(store)::Type>; });
  creators.at(static_cast<std::size_t>(version - 1))(main, thresholds);
}

class Database {
 public:
  explicit Database(const std::string& path) {
    if (sqlite3_open(path.c_str(), &db_) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(db_));
  }
  ~Database() { sqlite3_close(db_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs statements; every cell of their rows is appended to the result.
  std::vector<std::string> Run(const std::string& sql) {
    std::vector<std::string> cells;
    const auto collect = [](void* target, int count, char** values, char**) {
      for (int column = 0; column < count; ++column) {
        static_cast<std::vector<std::string>*>(target)->push_back(values[column]);
      }
      return 0;
    };
    if (sqlite3_exec(db_, sql.c_str(), collect, &cells, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(db_));
    }
    return cells;
  }

 private:
  sqlite3* db_ = nullptr;
};

/// "INSERT INTO target SELECT values" for i from `first` to `last`.
std::string InsertRange(const std::string& target, const std::string& values, int first, int last) {
  return "WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) + " WHERE " + std::to_string(first) +
         "<=" + std::to_string(last) + " UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(last) +
         ") INSERT INTO " + target + " SELECT " + values + " FROM n;";
}

constexpr char orientationValues[] = "i%360+0.5,i%90-45.25,i%60-30.125";
constexpr char geolocationValues[] = "i%90+0.123456,i%180+0.654321,i%1000+0.25";

/// Rows that alignments refer to. The key of each follows from the alignment's number, and orphans come last.
std::string Referred(int orientations, int geolocations, int heights, int orphans) {
  return InsertRange("Orientation(AzimuthDegrees,TiltDegrees,RollDegrees)", orientationValues, 1,
                     orientations + orphans) +
         InsertRange("Geolocation(LatitudeDegreesNorth,LongitudeDegreesEast,ElevationMeters)",
                     geolocationValues, 1, geolocations + orphans) +
         InsertRange("Height(HeightInMeters,HeightType)", "i%100+0.5,1+i%3", 1, heights + orphans);
}

std::string MainRows(const Content& content) {
  const int sites = content.firstSite + content.others;
  const std::string first = std::to_string(content.firstSite);
  const std::string count = std::to_string(sites);
  const int otherSites = (content.others + content.perSite - 1) / content.perSite;
  return Referred(2 * (sites + content.paths), sites + 2 * content.paths, sites + content.paths,
                  content.orphans) +
         InsertRange("Sites(SiteIdentifier)", "'Site '||i", 1, 1 + otherSites + content.orphans) +
         InsertRange("Paths(PathIdentifier)", "'Path '||i", 1, content.paths + content.orphans) +
         InsertRange(
             "AntennaAlignment(SiteKey,SectorName,AntennaPosition,AzimuthOffsetDegrees,"
             "TargetOrientationKey,LocationKey,LinuxTimeUTC,MeasuredOrientationKey,SiteHeightKey)",
             "CASE WHEN i<=" + first + " THEN 1 ELSE 2+(i-1-" + first + ")/" +
                 std::to_string(content.perSite) +
                 " END,'Sector '||i%3,'Position '||i%12,i%10+0.5,2*i-1,i,1500000000+i,2*i,i",
             1, sites) +
         InsertRange(
             "PathAlignment(PathKey,SectorName,AntennaPosition,AzimuthOffset,PathLocationKey,"
             "TargetOrientationKey,LocationKey,LinuxTimeUTC,MeasuredOrientationKey,SiteHeightKey)",
             "i,'ZZZ','ZZZ',i%10+0.5," + count + "+2*i-1,2*(" + count + "+i)-1," + count +
                 "+2*i,1500000000+i,2*(" + count + "+i)," + count + "+i",
             1, content.paths);
}

void Fill(const Content& content, const std::string& main, const std::string& thresholds) {
  Database db(main);
  db.Run("BEGIN;" + MainRows(content) + "COMMIT;");
  if (content.version < 7) return;
  db.Run("UPDATE AntennaAlignment SET Note='note '||AntennaAlignmentKey, RollPrecision=1;");
  db.Run("ATTACH '" + thresholds +
         "' AS t; INSERT INTO t.AntennaAlignmentThresholds(AntennaAlignmentKey,SiteIdentifier,"
         "AzimuthThreshold,TiltThreshold,RollThreshold) SELECT AntennaAlignmentKey,SiteKey,2.5,1.5,0.5 "
         "FROM AntennaAlignment; DETACH t;");
}

std::string MasterName(const Content& content, const char* suffix) {
  std::string name = std::string(Paths::folder) + "/master";
  for (const int number : {content.version, content.firstSite, content.others, content.perSite, content.paths,
                           content.orphans}) {
    name += "-" + std::to_string(number);
  }
  return name + suffix;
}

}  // namespace

void Content::Install() const {
  fs::remove(Paths::main);
  fs::remove(Paths::thresholds);
  if (version == 0) return;
  const std::string main = MasterName(*this, ".sqlite");
  const std::string thresholds = MasterName(*this, "-thresholds.sqlite");
  if (!fs::exists(main)) {
    CreateFiles(version, QString::fromStdString(main), QString::fromStdString(thresholds));
    Fill(*this, main, thresholds);
  }
  fs::copy_file(main, Paths::main);
  if (version >= 7) fs::copy_file(thresholds, Paths::thresholds);
}

std::string RowCounts() {
  std::string counts;
  for (const char* path : {Paths::main, Paths::thresholds}) {
    if (!fs::exists(path)) continue;
    Database db(path);
    for (const std::string& table :
         db.Run("SELECT name FROM sqlite_schema WHERE type='table' ORDER BY name")) {
      counts += table + "=" + db.Run("SELECT count(*) FROM " + table).front() + " ";
    }
  }
  return counts;
}
