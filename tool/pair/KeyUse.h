#pragma once

#include <QStringList>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/Sqlite.h"

/// Which rows of the main file its alignments refer to. Each table is gone through once, since files are
/// large and searches from one to another take longer than all else that a check does.
class KeyUse {
 public:
  /// A row about an alignment: the alignment's key, and that of the site or path that the row says it is of.
  struct Owned {
    qint64 alignment;
    qint64 owner;
  };

  explicit KeyUse(const Sqlite& db);

  enum class Of { Sites, Paths, Orientations, Locations, Heights };
  /// Rows that no alignment refers to: keys, with names if there are any.
  QStringList Unused(const Sqlite& db, Of table) const;

  const std::vector<Owned>& Alignments(Kind kind) const { return kind == Kind::Site ? ofSites_ : ofPaths_; }

 private:
  void Read(const Sqlite& db, Kind kind);
  std::vector<qint64>& Keys(Of table) { return used_[static_cast<std::size_t>(table)]; }

  std::vector<qint64> used_[5];
  std::vector<Owned> ofSites_;
  std::vector<Owned> ofPaths_;
};

/// How the thresholds rows of a kind match the alignments of the main file, by alignments' keys.
struct ThresholdsUse {
  ThresholdsUse(const KeyUse& mainFile, const Sqlite& db, Kind kind);

  QStringList alignmentsWithout;
  QStringList rowsWithout;
  QStringList doubled;
  /// Rows that name another site or path than their alignment.
  QStringList ofOthers;
};
