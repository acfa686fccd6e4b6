#include "tests/robustness/Scene.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "tests/support/DatabaseDump.h"

namespace {

void PutBack(const QString& path, const QByteArray& bytes) {
  for (const char* suffix : {"", "-journal"}) QFile::remove(path + QLatin1String(suffix));
  if (!bytes.isNull()) WriteFile(path, bytes);
}

// The lines of `lines` that `others` does not have, each as often as it is missing there.
QStringList Without(const QStringList& lines, QStringList others) {
  QStringList rest;
  for (const QString& line : lines) {
    if (!others.removeOne(line)) rest.append(line);
  }
  return rest;
}

}  // namespace

QByteArray ReadFile(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray bytes = file.readAll();
  return bytes.isNull() ? QByteArray("") : bytes;
}

void WriteFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
  ASSERT_EQ(file.write(bytes), bytes.size());
}

QStringList LinesOf(const QString& path) {
  if (ReadFile(path).isEmpty()) return {};
  QStringList lines = DumpDatabase(path).split(QLatin1Char('\n'));
  lines.removeAll(QString());
  QStringList kept;
  for (const QString& line : lines) {
    if (!line.contains(QLatin1String("sqlite_sequence"))) kept.append(line);
  }
  return kept;
}

QString TableOf(const QString& line) {
  const bool schema = line.startsWith(QLatin1String("schema|"));
  return line.section(QLatin1Char('|'), schema ? 1 : 0, schema ? 1 : 0);
}

Scene::Scene(const Contents& start, const QString& parentFolder)
    : folder_(parentFolder + QLatin1String("/sweep-XXXXXX")), start_(start) {
  EXPECT_TRUE(folder_.isValid()) << folder_.errorString().toStdString();
  Restore();
  mainLines_ = LinesOf(Main());
  thresholdsLines_ = LinesOf(Thresholds());
}

QString Scene::FolderForSweeps() {
  const QFileInfo memory(QStringLiteral("/dev/shm"));
  return memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
}

void Scene::Restore() {
  PutBack(Main(), start_.main);
  PutBack(Thresholds(), start_.thresholds);
}

void Scene::ExpectSound() const {
  for (const QString& path : {Main(), Thresholds()}) {
    if (!QFile::exists(path)) continue;
    EXPECT_EQ(IntegrityCheck(path), QStringLiteral("ok")) << path.toStdString();
    EXPECT_EQ(ForeignKeyCheck(path), QStringList()) << path.toStdString();
  }
}

Change Scene::ChangeOf(const QString& path, const QByteArray& bytesBefore, const QStringList& before) {
  if (ReadFile(path) == bytesBefore) return {};
  const QStringList after = LinesOf(path);
  return {Without(after, before), Without(before, after)};
}
