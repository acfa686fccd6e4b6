#include "tool/FileMigration.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "migration/AlignmentDatabaseConverter1to2.h"
#include "migration/AlignmentDatabaseConverter2to3.h"
#include "migration/AlignmentDatabaseConverter3to4.h"
#include "migration/AlignmentDatabaseConverter4to5.h"
#include "migration/AlignmentDatabaseConverter5to6.h"
#include "migration/AlignmentDatabaseConverter6to7.h"
#include "tool/AlignmentFiles.h"
#include "tool/Console.h"
#include "tool/LibraryLog.h"

namespace {

template <typename Converter>
bool Convert(QString* path) {
  return Converter().Convert(*path);
}

// The converter at index N - 1 starts from version N.
constexpr bool (*Steps[])(QString*) = {
    Convert<AlignmentDatabaseConverter1to2>, Convert<AlignmentDatabaseConverter2to3>,
    Convert<AlignmentDatabaseConverter3to4>, Convert<AlignmentDatabaseConverter4to5>,
    Convert<AlignmentDatabaseConverter5to6>, Convert<AlignmentDatabaseConverter6to7>};
static_assert(std::size(Steps) == CurrentVersion - 1, "a version without its converter");

[[noreturn]] void FailWithErrno(const QString& path) {
  throw Failure(QStringLiteral("%1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
}

/// What was written to a file, or renamed in a folder, is on the disk afterwards.
void Sync(const QString& path) {
  const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
  const bool synced = descriptor >= 0 && fsync(descriptor) == 0;
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  errno = error;
  if (!synced) FailWithErrno(path);
}

/// Never over an existing file.
void CopyFile(const QString& from, const QString& to) {
  QFile source(from);
  if (!source.copy(to)) throw Failure(QStringLiteral("%1: %2").arg(to, source.errorString()));
  Sync(to);
  Sync(QFileInfo(to).absolutePath());
}

/// An ordinary user cannot give a file away; then the file belongs to who migrated it.
void TakeOwnerAndMode(const QString& from, const QString& to) {
  struct stat status {};
  const QByteArray name = QFile::encodeName(to);
  if (stat(QFile::encodeName(from).constData(), &status) != 0) FailWithErrno(from);
  if (chown(name.constData(), status.st_uid, status.st_gid) != 0 && errno != EPERM) FailWithErrno(to);
  if (chmod(name.constData(), status.st_mode & 07777U) != 0) FailWithErrno(to);
}

void RunSteps(const QString& shownPath, QString copy, unsigned int version) {
  for (; version < CurrentVersion; ++version) {
    QElapsedTimer timer;
    timer.start();
    LibraryLog::Clear();
    if (!Steps[version - 1](&copy)) {
      LibraryLog::Fail(
          QStringLiteral(
              "%1: version %2 could not be converted to %3; the file is as it was. Conversions work "
              "through /opt/tarnbeam/database/TemporaryDB.sqlite: that folder must exist and be "
              "writable.")
              .arg(shownPath)
              .arg(version)
              .arg(version + 1));
    }
    Console::Print(
        QStringLiteral("version %1 to %2: %3 ms\n").arg(version).arg(version + 1).arg(timer.elapsed()));
  }
}

}  // namespace

// A converter replaces the file by its own step's result. So that a later step that fails does not leave the
// file half way, all steps work on a copy beside it, and the copy takes the file's place at the end.
void MigrateFile(const QString& path, const QString& backup) {
  const unsigned int version = RequireVersion(path);
  if (version == 0 || version > CurrentVersion) {
    throw Failure(QStringLiteral("%1: is of version %2, which this program does not know (1 to %3)")
                      .arg(path)
                      .arg(version)
                      .arg(CurrentVersion));
  }
  if (version == CurrentVersion) {
    Console::Print(QStringLiteral("%1 is of version %2 already\n").arg(path).arg(CurrentVersion));
    return;
  }
  if (!backup.isEmpty()) {
    CopyFile(path, backup);
    Console::Print(QStringLiteral("copied to %1\n").arg(backup));
  }
  const QString file = QFileInfo(path).canonicalFilePath();
  const QString folder = QFileInfo(file).path();
  const QTemporaryDir workshop(file + QStringLiteral(".migrating-XXXXXX"));
  if (!workshop.isValid()) throw Failure(QStringLiteral("%1: %2").arg(folder, workshop.errorString()));
  const QString copy = workshop.filePath(QStringLiteral("main.sqlite"));
  CopyFile(file, copy);
  RunSteps(path, copy, version);
  TakeOwnerAndMode(file, copy);
  Sync(copy);
  if (std::rename(QFile::encodeName(copy).constData(), QFile::encodeName(file).constData()) != 0) {
    FailWithErrno(file);
  }
  Sync(folder);
}
