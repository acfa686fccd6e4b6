#pragma once

#include <QStringList>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/Sqlite.h"

/// Which rows of the main file its alignments refer to. Each table is gone through once, since files are
/// large and searches from one to another take longer than all else that a check does.
class KeyUse {
 public:
  /// A row about an alignment: the alignment's key, that of the site or path that the row says it is of, and
  /// the row's own.
  struct Owned {
    qint64 alignment;
    qint64 owner;
    qint64 row;
  };

  explicit KeyUse(const Sqlite& db);

  enum class Of { Sites, Paths, Orientations, Locations, Heights };
  struct Row {
    qint64 key;
    /// The key, with the name where there is one.
    QString shown;
  };
  /// Rows that no alignment refers to.
  std::vector<Row> Unused(const Sqlite& db, Of table) const;
  /// A statement that deletes one of them, by its key.
  static QByteArray Deletion(Of table);

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

  /// The rows, by their own keys, that can be done without: of several for one alignment all but the last,
  /// which is the one that the library goes by.
  std::vector<qint64> deletableWithout;
  std::vector<qint64> deletableDoubled;
  /// A statement that deletes one of them, by its key.
  static QByteArray Deletion(Kind kind);
};
