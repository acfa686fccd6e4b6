#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "tool/Alignment.h"
#include "tool/pair/Edit.h"

class Snapshot;

/// What is to be deleted, as it was when it was shown: the same is deleted, or nothing.
class Deletion {
 public:
  /// A site or path with all its reports, or of these only the one with that key.
  Deletion(const Snapshot& shown, Kind kind, const QString& identifier, std::optional<qint64> key);

  /// In the private copies. Thresholds rows that belong to something else stay.
  void Perform(Edit* edit) const;

 private:
  void DeleteAll(const PrivatePair& copies) const;
  void DeleteOne(const PrivatePair& copies) const;
  void RequireGone(const Sqlite& db, qint64 before) const;
  QByteArray Content(const Sqlite& db) const;
  QByteArray AlignmentCondition() const;

  const Kind kind_;
  const QString identifier_;
  const qint64 owner_;
  const std::optional<qint64> key_;
  const QByteArray content_;
};
