#include "migration/DatabaseFileSwap.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/DebugLog.h"

namespace {

class Descriptor {
 public:
  Descriptor(const QString& path, int flags) : fd_(open(path.toLocal8Bit().constData(), flags | O_CLOEXEC)) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  explicit operator bool() const { return fd_ >= 0; }
  bool Sync() const { return fsync(fd_) == 0; }

 private:
  int fd_;
};

bool SyncFile(const QString& path) {
  const Descriptor file(path, O_RDONLY);
  return file && file.Sync();
}

bool Rename(const QString& from, const QString& to) {
  return std::rename(from.toLocal8Bit().constData(), to.toLocal8Bit().constData()) == 0;
}

/// Copies content and permissions, syncs them and checks the size.
bool CopyContent(const QString& from, const QString& to) {
  QFile source(from);
  QFile target(to);
  if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly | QIODevice::Truncate))
    return false;
  constexpr qint64 blockSize = 1 << 16;
  while (!source.atEnd()) {
    const QByteArray block = source.read(blockSize);
    if (block.isEmpty() || target.write(block) != block.size()) return false;
  }
  target.setPermissions(source.permissions());
  const bool written = target.flush() && fsync(target.handle()) == 0;
  target.close();
  return written && QFileInfo(to).size() == source.size();
}

/// Renames the copy over the main file, by way of a file beside it where they lie on different file systems.
bool Replace(const QString& main, const QString& copy, const QString& beside) {
  QFile::setPermissions(copy, QFile::permissions(main));
  if (!SyncFile(copy)) return false;
  if (Rename(copy, main)) return true;
  if (errno != EXDEV || !CopyContent(copy, beside)) return false;
  if (!Rename(beside, main)) return false;
  QFile::remove(copy);
  return true;
}

}  // namespace

namespace DatabaseFileSwap {

bool IsSameFile(const QString& path, const QString& other) {
  const auto resolved = [](const QString& name) {
    const QFileInfo info(name);
    return info.exists() ? info.canonicalFilePath() : QDir::cleanPath(info.absoluteFilePath());
  };
  return resolved(path) == resolved(other);
}

bool SwapDatabaseFiles(const QString& path, const QString& copyPath) {
  // A link at the path stays a link: the file that it leads to is replaced.
  const QString main = QFileInfo(path).canonicalFilePath();
  const QString beside = main + QLatin1String(".converted");
  // Opened beforehand, so that a folder that cannot be opened stops the swap while nothing is changed.
  const Descriptor folder(QFileInfo(main).path(), O_RDONLY | O_DIRECTORY);
  if (!folder || !Replace(main, copyPath, beside)) {
    LogDebug("Unable to replace the database file, it stays as it was: ", path, ":", std::strerror(errno));
    QFile::remove(beside);
    QFile::remove(copyPath);
    return false;
  }
  // The file has been replaced; all that a failure here leaves open is whether a power cut undoes that.
  if (!folder.Sync()) LogDebug("Unable to sync the folder of the database file: ", path);
  return true;
}

}  // namespace DatabaseFileSwap
