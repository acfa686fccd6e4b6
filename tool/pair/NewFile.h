#pragma once

#include <sys/types.h>

#include <QByteArray>
#include <QString>
#include <vector>

/// A file that is to be where none is. It is written whole beside its place, under a name of its own
/// (NAME.creating-XXXXXX), and then moved there, so in its place it is complete or absent.
class NewFile {
 public:
  /// Copies the content and syncs it. Throws a Failure, and leaves nothing.
  NewFile(const QByteArray& content, const QString& name);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  const QString& Shown() const { return shown_; }

  /// Never over another file. Throws a Failure, and then nothing stands there.
  void Place();
  /// Takes away what was placed.
  void TakeBack();

  /// Removes what killed runs left beside a place.
  static void RemoveLeftovers(const QByteArray& path);

 private:
  QString shown_;
  QByteArray path_;
  QByteArray beside_;
  int descriptor_ = -1;
};

/// Places those of the two that are there, the thresholds file first: in the main file alone an alignment
/// would stand without its thresholds. Both or, unless the run is killed, neither.
void PlaceTogether(NewFile* mainFile, NewFile* thresholdsFile);

/// The mode that a program's files have if it asks for nothing special.
mode_t OrdinaryMode();
/// Never over another file, even if one appears there meanwhile; else false, with errno.
bool MoveToFreePlace(const QByteArray& from, const QByteArray& to);
/// What stands there under a name that begins with this path and goes on as the pattern says.
std::vector<QByteArray> PathsLike(const QByteArray& path, const char* pattern);
