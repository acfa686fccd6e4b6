#pragma once

#include <QByteArray>
#include <QString>

#include "tool/Alignment.h"
#include "tool/pair/Edit.h"

class Snapshot;

/// What is to be deleted, as it was when it was shown: the same is deleted, or nothing.
class Deletion {
 public:
  /// A site or path with all its reports.
  static Deletion OfAll(const Snapshot& shown, Kind kind, const QString& identifier);
  /// The report with that key.
  static Deletion OfOne(const Snapshot& shown, Kind kind, const QString& identifier, unsigned int key);

  /// In the private copies. Thresholds rows that belong to something else stay.
  void Perform(Edit* edit) const;

 private:
  void DeleteAll(const PrivatePair& copies) const;
  void DeleteOne(const PrivatePair& copies) const;
  void RequireGone(const Sqlite& db, qint64 before) const;
  QByteArray Content(const Sqlite& db) const;
  QByteArray AlignmentCondition() const;

  Kind kind_ = Kind::Site;
  QString identifier_;
  qint64 owner_ = 0;
  bool one_ = false;
  qint64 key_ = 0;
  QByteArray content_;
};
