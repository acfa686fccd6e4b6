#include "migration/DatabaseFileSwap.h"

#include <fcntl.h>

#include <QFileInfo>
#include <cerrno>
#include <cstring>

#include "core/DebugLog.h"
#include "migration/File.h"

namespace {

/// `path` must begin with a slash.
QByteArray FolderOf(const QByteArray& path) {
  const auto last = path.lastIndexOf('/');
  return path.left(last == 0 ? 1 : last);
}

/// The log is gone, or empty, once the last connection has closed and moved its pages into the file.
bool IsLogEmpty(const QByteArray& main) {
  struct stat log {};
  if (!File::Exists(main + "-wal", &log)) return errno == ENOENT;
  return log.st_size == 0 || File::Fail(EBUSY, "replace under its write-ahead log", main);
}

bool FillBeside(const File& beside, const File& copy, mode_t mode) {
  struct stat written {};
  struct stat wanted {};
  if (!beside.Append(copy) || !beside.SetMode(mode) || !beside.Sync()) return false;
  if (!beside.Stat(&written) || !copy.Stat(&wanted)) return false;
  return written.st_size == wanted.st_size || File::Fail(EIO, "copy whole", copy.Path());
}

bool PutInPlaceAcross(const QByteArray& main, const File& copy, mode_t mode) {
  const File beside = File::MakeNew(main + ".converted-");
  if (!beside) return false;
  if (FillBeside(beside, copy, mode) && File::Rename(beside.Path(), main)) return true;
  const int error = errno;
  File::Remove(beside.Path());
  errno = error;
  return false;
}

bool PutInPlace(const QByteArray& main, const QByteArray& copyPath) {
  // Opened by its name alone: closing a descriptor that could read would release the locks that this process
  // holds on the file.
  const File old(main, O_PATH);
  const File copy(copyPath, O_RDONLY);
  struct stat status {};
  if (!old || !copy || !old.Stat(&status) || !copy.SetMode(status.st_mode) || !copy.Sync()) return false;
  if (File::Rename(copyPath, main, EXDEV)) return true;
  if (errno != EXDEV || !PutInPlaceAcross(main, copy, status.st_mode)) return false;
  File::Remove(copyPath);
  return true;
}

bool Replace(const QString& path, const QByteArray& copyPath) {
  // A link at the path stays a link: the file that it leads to is replaced.
  const QByteArray main = File::Resolved(path.toLocal8Bit());
  if (main.isEmpty() || !IsLogEmpty(main)) return false;
  // Opened beforehand, so that a folder that cannot be opened stops the swap while nothing is changed.
  const File folder(FolderOf(main), O_RDONLY | O_DIRECTORY);
  if (!folder || !PutInPlace(main, copyPath)) return false;
  // The file has been replaced; all that a failure here leaves open is whether a power cut undoes that.
  if (!folder.Sync()) LogDebug("Unable to sync the folder of the database file: ", path);
  return true;
}

/// Where the file is, or would be.
QString Place(const QString& path) {
  const QFileInfo info(path);
  const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
  return (folder.isEmpty() ? info.absolutePath() : folder) + QLatin1Char('/') + info.fileName();
}

}  // namespace

namespace DatabaseFileSwap {

bool IsSameFile(const QString& path, const QString& other) {
  struct stat status {};
  struct stat otherStatus {};
  if (!File::Exists(path.toLocal8Bit(), &status) || !File::Exists(other.toLocal8Bit(), &otherStatus)) {
    return Place(path) == Place(other);
  }
  return status.st_dev == otherStatus.st_dev && status.st_ino == otherStatus.st_ino;
}

bool SwapDatabaseFiles(const QString& path, const QString& copyPath) {
  const QByteArray copy = copyPath.toLocal8Bit();
  if (Replace(path, copy)) return true;
  LogDebug("Unable to replace the database file, it stays as it was: ", path, ":", std::strerror(errno));
  File::Remove(copy);
  return false;
}

}  // namespace DatabaseFileSwap
