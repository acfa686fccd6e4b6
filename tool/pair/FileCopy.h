#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>
#include <QString>

/// An open file.
class Descriptor {
 public:
  Descriptor(const QByteArray& path, int flags, mode_t mode = 0)
      : number_(open(path.constData(), flags | O_CLOEXEC, mode)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

/// Shows whether a file was written to meanwhile.
struct Stamp {
  explicit Stamp(const QByteArray& path) { there = stat(path.constData(), &status) == 0; }
  bool operator==(const Stamp& other) const {
    return there == other.there &&
           (!there ||
            (status.st_size == other.status.st_size && status.st_ino == other.status.st_ino &&
             status.st_dev == other.status.st_dev && status.st_mtim.tv_sec == other.status.st_mtim.tv_sec &&
             status.st_mtim.tv_nsec == other.status.st_mtim.tv_nsec));
  }
  bool there = false;
  struct stat status {};
};

/// Throws a Failure that says what errno stands for.
[[noreturn]] void FailWithErrno(const QString& shown);
[[noreturn]] void FailWithErrno(const QByteArray& path);

/// Writes all bytes or throws a Failure.
void WriteAll(int descriptor, const char* content, qint64 size, const QByteArray& target);
/// Copies from the beginning of an open file, whose name in messages is `shown`, to the end of another.
void CopyContent(int from, const QString& shown, int to, const QByteArray& target);
/// Into a private file, which replaces what is at the target, if anything.
void CopyInto(int from, const QString& shown, const QByteArray& target);
void CopyFile(const QByteArray& from, const QByteArray& target);
/// Makes sure that what was written to a file, or renamed in a folder, is on the disk.
void Sync(const QByteArray& path);
/// Whether something stands at that place.
bool FileExists(const QByteArray& path);
bool FileExists(const QString& name);
/// Absolute, links resolved. Throws a Failure where nothing stands.
QByteArray ResolvedPath(const QString& name);
qint64 SizeOf(int descriptor, const QString& shown);
/// Of all that an open file holds.
QByteArray Sha256(int descriptor, const QString& shown);
/// The folder that a file is in.
QByteArray FolderOf(const QByteArray& path);
