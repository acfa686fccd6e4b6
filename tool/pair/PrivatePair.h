#pragma once

#include <QString>
#include <memory>

#include "tool/pair/PrivateFolder.h"
#include "tool/pair/Sqlite.h"

class IAlignmentDatabase;

/// Private copies of the two files, or of the main file alone. What they hold is checked before anything is
/// read through the library, which may neither come to an end in damaged files nor report what it met there.
class PrivatePair {
 public:
  /// The names are those of the files copied, for messages; without a thresholds file the second is empty.
  PrivatePair(QString shownMain, QString shownThresholds);

  bool HasThresholds() const { return !shownThresholds_.isEmpty(); }
  const QString& ShownMain() const { return shownMain_; }
  const QString& ShownThresholds() const { return shownThresholds_; }
  /// Where the copies are to be put.
  QByteArray MainPath() const { return folder_.Path(PrivateFolder::Name::Main); }
  QByteArray ThresholdsPath() const { return folder_.Path(PrivateFolder::Name::Thresholds); }
  /// New files of a version, to compare with.
  void MakeFresh(unsigned int version) const;
  QByteArray FreshMainPath() const { return folder_.Path(PrivateFolder::Name::FreshMain); }
  QByteArray FreshThresholdsPath() const { return folder_.Path(PrivateFolder::Name::FreshThresholds); }
  const PrivateFolder& Folder() const { return folder_; }

  /// Once the copies are there: applies what was left beside the files, opens them, and throws a Failure (4)
  /// for damage and for what is not a database.
  void Open();
  /// To be called before the copies are replaced; Open() again afterwards.
  void Close() { db_.reset(); }
  /// Goes through all pages of both.
  void RequireSoundCopies() const;
  /// Throws the same for a main file without a version, and for a version that is not known.
  unsigned int RequireVersion();
  /// Throws the same unless both have the tables and columns of their version.
  void RequireShape();
  /// Throws WrongUsage if a thresholds file was given for a version that has none, or none for one that has.
  void RequireOperandsOf(qint64 version) const;
  /// All of these.
  void RequirePair();
  /// Throws the same unless they are a pair that can be changed: of the current version and belonging
  /// together.
  void RequireCurrentPair();
  /// Throws the same if rows of the thresholds file contradict the main file's, and not one agrees.
  void RequireBelonging() const;

  /// The main file, with the thresholds file attached under that name.
  const Sqlite& Db() const { return *db_; }
  /// Of a pair that was checked.
  unsigned int Version() const { return version_; }
  /// The library's store over the copies.
  std::shared_ptr<IAlignmentDatabase> Store() const;

 private:
  void RequireShapeOf(const char* schema, const QByteArray& freshPath, const QString& shown) const;

  const QString shownMain_;
  const QString shownThresholds_;
  PrivateFolder folder_;
  std::unique_ptr<Sqlite> db_;
  unsigned int version_ = 0;
};
