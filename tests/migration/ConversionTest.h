#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "tests/migration/Converters.h"
#include "tests/support/DatabaseDump.h"
#include "tests/support/FileCalls.h"
#include "tests/support/LogCapture.h"
#include "tests/support/SqliteCalls.h"
#include "tests/support/SqliteLeakGuard.h"
#include "tests/support/TemporaryFolder.h"

// Files and folders that conversions work with.

const QString scratchFolder = QStringLiteral("/opt/tarnbeam/database");
const QString scratchPath = scratchFolder + QStringLiteral("/TemporaryDB.sqlite");

QByteArray ContentOf(const QString& path);
QString GoldenFile(const QString& name);
// Expected dump of the golden file of `source` after its conversion to `target`.
QString GoldenDump(int source, int target);
void LoadGolden(int version, const QString& path);
dev_t FileSystemOf(const QString& path);
// A folder on another file system than that of the scratch file. Fails the test if there is none.
QString FolderOnOtherFileSystem();

// Compares whole dumps; a difference is shown line by line.
void ExpectDump(const QString& path, const QString& expected);

struct Converted {
  bool result;
  QStringList lines;
};

// Converts and keeps the lines, each of which must be a plain debug line.
Converted Convert(const Converter& converter, const QString& path);
// The codes that a guard is told of meanwhile, in order.
struct Watched {
  Converted converted;
  QVector<int> codes;
};
Watched ConvertWatched(const Converter& converter, const QString& path);
// With every converter from `source` on; false as soon as one fails.
bool ConvertToCurrent(int source, const QString& path);

// A main file beside the scratch file, in a folder of its own, recreated from the golden file of the
// converter's source version.
class ConversionTest : public testing::TestWithParam<Converter> {
 protected:
  ConversionTest() : ConversionTest(scratchFolder) {}
  explicit ConversionTest(const QString& parent);
  ~ConversionTest() override;

  static const Converter& Tested() { return GetParam(); }
  QString Main() const { return folder_.Main(); }
  QString Expected() const { return GoldenDump(Tested().source, Tested().source + 1); }
  void Load();

  // Converts under the armed faults, one of which must be met, and disarms them.
  Converted ConvertWithFault() { return ConvertWithFault(Main()); }
  static Converted ConvertWithFault(const QString& path);
  // The conversion fails with these lines; everything is then as the converter leaves it.
  void ExpectFailure(const QStringList& lines);
  void ExpectFailure(const Fault& fault, const QStringList& lines);
  void ExpectUntouched(const QByteArray& before, bool scratchLeft) const;
  // The conversion succeeds with these lines. The caller looks at the file.
  void ExpectSuccess(const QStringList& lines);
  void ExpectSuccess(const Fault& fault, const QStringList& lines);
  // The lines of a conversion in which nothing goes wrong.
  static QStringList PlainLines() { return Tested().cleansUp ? CleanupLines() : QStringList(); }

  TemporaryFolder folder_;
  QByteArray loaded_;  // the main file as Load left it

 private:
  void ExpectResult(bool result, const QStringList& lines);
};

inline Fault Failing(const char* calls, const char* text) { return Fault(calls, SQLITE_IOERR).OnText(text); }

inline std::string NameOf(const testing::TestParamInfo<Converter>& info) {
  return "From" + std::to_string(info.param.source);
}
void PrintTo(const Converter& converter, std::ostream* out);
