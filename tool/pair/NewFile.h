#pragma once

#include <QByteArray>
#include <QString>

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

  /// Never over another file.
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

/// The path without anything that a name pattern would take for more than itself.
QByteArray EscapedForPattern(const QByteArray& path);
