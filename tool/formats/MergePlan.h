#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <map>
#include <vector>

#include "tool/Alignment.h"
#include "tool/formats/AlignmentMatch.h"

/// Decides what becomes of alignments that are merged into others, one after the other.
class MergePlan {
 public:
  /// `there` are the alignments that are there beforehand.
  explicit MergePlan(const std::vector<Reports>& there);

  struct Step {
    /// False if an alignment with its uid is there.
    bool isAdded;
    /// Names of the fields in which it differs from what it conflicts with; empty if there is no conflict.
    /// An alignment that is added conflicts with another one of its kind, identifier, sector, position and
    /// time; one that is there already, with that one if note or thresholds differ.
    QStringList conflict;
  };
  /// From now on the alignment is there.
  Step Take(const Alignment& alignment);

  qint64 Added() const { return added_; }
  qint64 There() const { return there_; }
  qint64 Conflicts() const { return conflicts_; }

 private:
  void Keep(const Alignment& alignment, const QString& uid);

  std::vector<Alignment> kept_;
  /// Numbers of the first of each in `kept_`.
  QHash<QString, std::size_t> byUid_;
  std::map<MatchKey, std::size_t> byMatch_;
  /// Notes and thresholds that are there, each after its uid.
  QSet<QByteArray> contents_;
  qint64 added_ = 0;
  qint64 there_ = 0;
  qint64 conflicts_ = 0;
};
