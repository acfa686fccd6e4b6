#pragma once

#include <QString>

/// What one contender can do; each operation opens its own connections, as the library does. All throw
/// std::runtime_error or return false on failure, so that no failed run is ever measured.
class Contender {
 public:
  virtual ~Contender() = default;
  virtual bool Create() = 0;
  virtual bool SaveSiteAlignment() = 0;
  virtual bool SavePathAlignment() = 0;
  /// Reads the reports of site `site` (numbered from 1), frees what it built, and returns their number.
  virtual int ReadReports(int site) = 0;
  /// The number of sites.
  virtual int ListSites() = 0;
  virtual bool DeleteSite(int site) = 0;
  /// Deletes the first report of a site.
  virtual bool DeleteReport(int site) = 0;
  virtual bool SavePreferences() = 0;
  virtual bool RestorePreferences() = 0;
  virtual bool StoreScreens() = 0;
  virtual bool RestoreScreens() = 0;
  /// Converts the main file from `version` to the next one.
  virtual bool Convert(int version) = 0;
};
