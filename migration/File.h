#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <QByteArray>

/// The file calls of a conversion. A call that fails tells the guards, returns false and leaves its reason in
/// errno, which nothing in between changes. Paths are the bytes that the system and SQLite are given.
class File {
 public:
  /// Opens `path`; false when it failed. `flags` and `mode` as of open(2), never inherited by a program.
  File(const QByteArray& path, int flags, mode_t mode = 0);
  /// Makes a file of mode 0600 whose name begins with `start` and that no file had before.
  static File MakeNew(const QByteArray& start);
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  explicit operator bool() const { return descriptor_ >= 0; }
  const QByteArray& Path() const { return path_; }

  bool Stat(struct stat* status) const;
  /// Sets the mode bits and checks that they hold: if the caller is not in the file's group, the system drops
  /// one unasked.
  bool SetMode(mode_t mode) const;
  bool Sync() const;
  /// Locks the file for this object alone, without waiting; EWOULDBLOCK if somebody else holds it.
  bool Lock() const;
  /// Appends the whole content of `source`.
  bool Append(const File& source) const;

  // Files by their names.
  /// That there is none (ENOENT) is an answer, not a failure.
  static bool Exists(const QByteArray& path, struct stat* status);
  /// `tolerated` is an errno that is not reported either; 0: none.
  static bool Rename(const QByteArray& from, const QByteArray& to, int tolerated = 0);
  /// True as well if there is none.
  static bool Remove(const QByteArray& path);
  /// The path without links; empty when it leads nowhere.
  static QByteArray Resolved(const QByteArray& path);
  /// Returns false with `error` in errno; the guards are told that `what` failed with it.
  static bool Fail(int error, const char* what, const QByteArray& path);

 private:
  File(int descriptor, const QByteArray& path, const char* call);

  int descriptor_;
  QByteArray path_;
};
