#include "tests/migration/ConversionTest.h"

#include <sys/stat.h>

#include <algorithm>

#include "core/OperationGuard.h"

QByteArray ContentOf(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return file.readAll();
}

QString GoldenFile(const QString& name) { return QStringLiteral(TARNBEAM_GOLDEN_FOLDER "/") + name; }

QString GoldenDump(int source, int target) {
  return QString::fromUtf8(
      ContentOf(GoldenFile(QStringLiteral("version_%1_as_%2.txt").arg(source).arg(target))));
}

void LoadGolden(int version, const QString& path) {
  QFile::remove(path);
  LoadSqlFile(path, GoldenFile(QStringLiteral("version_%1.sql").arg(version)));
}

dev_t FileSystemOf(const QString& path) {
  struct stat status {};
  EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0) << path.toStdString();
  return status.st_dev;
}

QString FolderOnOtherFileSystem() {
  for (const QString& folder : {QStringLiteral("/dev/shm"), QDir::tempPath()}) {
    if (QFileInfo(folder).isWritable() && FileSystemOf(folder) != FileSystemOf(scratchFolder)) return folder;
  }
  ADD_FAILURE() << "no writable folder on another file system than " << scratchFolder.toStdString();
  return QDir::tempPath();
}

void ExpectDump(const QString& path, const QString& expected) {
  EXPECT_EQ(DumpDatabase(path).toStdString(), expected.toStdString());
}

Converted Convert(const Converter& converter, const QString& path) {
  QString argument = path;
  const LogCapture log;
  const bool result = converter.convert(argument);
  EXPECT_EQ(argument, path);
  EXPECT_EQ(log.Misfits(), QStringList());
  return {result, log.Lines()};
}

Watched ConvertWatched(const Converter& converter, const QString& path) {
  const OperationGuard guard;
  Watched watched{Convert(converter, path), {}};
  for (const OperationGuard::Failure& failure : guard.Failures()) watched.codes.append(failure.code);
  EXPECT_EQ(guard.Succeeded(), watched.codes.isEmpty());
  return watched;
}

bool ConvertToCurrent(int source, const QString& path) {
  const std::vector<Converter>& all = Converters();
  return std::all_of(all.begin() + source - 1, all.end(),
                     [&](const Converter& converter) { return Convert(converter, path).result; });
}

ConversionTest::ConversionTest(const QString& parent) : folder_(parent) {
  QFile::remove(scratchPath);
  Load();
}

ConversionTest::~ConversionTest() { QFile::remove(scratchPath); }

void ConversionTest::Load() {
  LoadGolden(Tested().source, Main());
  loaded_ = ContentOf(Main());
}

Converted ConversionTest::ConvertWithFault(const QString& path) {
  const Converted converted = Convert(Tested(), path);
  EXPECT_TRUE(SqliteCalls::Fired() || FileCalls::Fired()) << "the fault was not met";
  SqliteCalls::Reset();
  FileCalls::Reset();
  return converted;
}

void ConversionTest::ExpectUntouched(const QByteArray& before, bool scratchLeft) const {
  EXPECT_TRUE(ContentOf(Main()) == before) << "the main file has changed";
  EXPECT_EQ(QFile::exists(scratchPath), scratchLeft);
  EXPECT_EQ(QDir(folder_.Folder()).entryList(QDir::Files | QDir::Hidden), QStringList{"main.sqlite"});
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "");
}

void ConversionTest::ExpectFailure(const QStringList& lines) {
  const QByteArray before = ContentOf(Main());
  ExpectResult(false, lines);
  ExpectUntouched(before, !Tested().removesScratch);
}

void ConversionTest::ExpectFailure(const Fault& fault, const QStringList& lines) {
  SqliteCalls::Arm(fault);
  ExpectFailure(lines);
}

void ConversionTest::ExpectSuccess(const QStringList& lines) {
  ExpectResult(true, lines);
  EXPECT_FALSE(QFile::exists(scratchPath));
  EXPECT_STREQ(SqliteLeakGuard::Complaint(), "");
}

void ConversionTest::ExpectSuccess(const Fault& fault, const QStringList& lines) {
  SqliteCalls::Arm(fault);
  ExpectSuccess(lines);
}

void ConversionTest::ExpectResult(bool result, const QStringList& lines) {
  const Converted converted = ConvertWithFault();
  EXPECT_EQ(converted.result, result);
  EXPECT_EQ(converted.lines, lines);
}

void PrintTo(const Converter& converter, std::ostream* out) {
  *out << "converter from version " << converter.source;
}
