#pragma once

#include <fcntl.h>
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

/// Throws a Failure that says what errno stands for.
[[noreturn]] void FailWithErrno(const QString& shown);
[[noreturn]] void FailWithErrno(const QByteArray& path);

/// Writes all bytes or throws a Failure.
void WriteAll(int descriptor, const char* content, qint64 size, const QByteArray& target);
/// Copies from the beginning of an open file, whose name in messages is `shown`, to the end of another.
void CopyContent(int from, const QString& shown, int to, const QByteArray& target);
/// Replaces what is at the target, if anything.
void CopyFile(const QByteArray& from, const QByteArray& target);
/// Makes sure that what was written to a file, or renamed in a folder, is on the disk.
void Sync(const QByteArray& path);
/// The folder that a file is in.
QByteArray FolderOf(const QByteArray& path);
