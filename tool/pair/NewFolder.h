#pragma once

#include <QByteArray>
#include <QString>

/// A folder that is to stand where nothing does. It is filled under a name of its own (NAME.creating-XXXXXX)
/// and then moved to its place, so at its place it is complete or absent.
class NewFolder {
 public:
  explicit NewFolder(const QString& name);
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  ~NewFolder();

  const QString& Shown() const { return shown_; }

  /// Copies a file into it, and what is already in memory; both are synced.
  void Copy(const QByteArray& from, const char* name) const;
  void Write(const QByteArray& content, const char* name) const;
  /// Never over anything. Throws a Failure, and then nothing stands there.
  void Place();

 private:
  static void RemoveLeftovers(const QByteArray& path);

  QString shown_;
  QByteArray path_;
  QByteArray beside_;
  int descriptor_ = -1;
};
