#pragma once

#include <QDateTime>
#include <QPair>
#include <QString>
#include <QVariant>
#include <QVector>
#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/Deadline.h"
#include "tool/pair/PrivatePair.h"

/// The state of a pair, or of a main file alone, at one moment. The files themselves are not touched, and
/// nothing is made beside them.
class Snapshot {
 public:
  /// How much of it is checked beforehand; each throws a Failure (4) for what is not as it has to be.
  enum class Look { AsItIs, Version, Pair };

  /// For a main file without a thresholds file the second name is empty.
  Snapshot(const QString& mainName, const QString& thresholdsName, const Deadline& deadline,
           Look look = Look::Pair);

  PrivatePair& Files() { return files_; }
  const PrivatePair& Files() const { return files_; }
  unsigned int Version() const { return files_.Version(); }

  /// A site or path and how much there is of it.
  struct Summary {
    Kind kind = Kind::Site;
    qint64 key = 0;
    QString identifier;
    qint64 reports = 0;
  };
  /// Of all sites, then all paths, in the order of the file.
  std::vector<Summary> Summaries() const;

  /// The key of a site or path; fails for an identifier that is not stored.
  qint64 KeyOf(Kind kind, const QString& identifier) const;

  /// All alignments, through the library; throws a Failure (4) for values that are not finite numbers, and if
  /// one of the alignments names a row that is not there.
  std::vector<Reports> ReadAll() const { return ReadAllOf(files_); }
  /// The same for private copies that were checked.
  static std::vector<Reports> ReadAllOf(const PrivatePair& files);
  /// All alignments, one after the other.
  std::vector<Alignment> ReadWhole() const;
  /// Of one site or path; fails for an identifier that is not stored. Zeros stand for rows that are not
  /// there.
  Reports ReadOne(Kind kind, const QString& identifier) const;

  /// Throws a Failure (4) if an alignment names a row that is not there.
  void RequireComplete() const;
  /// Throws the same if one of the preferences' values is not a finite number.
  void RequirePreferences() const;

  /// Columns of the preferences, in both files, with what is stored in them; none where nothing is stored.
  QVector<QPair<QString, QVariant>> Preferences() const;

 private:
  Summary Find(Kind kind, const QString& identifier) const;

  PrivatePair files_;
};
