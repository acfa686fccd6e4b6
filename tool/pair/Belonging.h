#pragma once

#include <vector>

#include "tool/Alignment.h"
#include "tool/pair/Sqlite.h"

/// What of the two files belongs together. A thresholds row names an alignment of the main file and that
/// alignment's site or path; where the two disagree, it belongs to something else.
namespace Belonging {

/// Names of the tables and columns of a kind.
struct Tables {
  Kind kind;
  const char* owners;
  const char* ownerKey;
  const char* ownerName;
  const char* alignments;
  const char* alignmentKey;
  const char* thresholds;
  /// The column of the thresholds that holds the owner's key, whatever its name says.
  const char* thresholdsOwner;
};

const Tables& Of(Kind kind);

/// A column of an alignment, and the row of another table that it names by that table's key.
struct Reference {
  const char* column;
  const char* table;
  const char* key;
};
/// All that an alignment cannot do without.
std::vector<Reference> ReferencesOf(Kind kind);

/// A query on thresholds rows `t` and the alignments `a` that they name, up to its conditions.
QByteArray Joined(Kind kind, const QByteArray& columns);
/// The condition, on that query, of rows that belong to something else.
QByteArray Disagree(Kind kind);

/// False if thresholds rows disagree with the main file and not one agrees.
bool IsPair(const Sqlite& db);

}  // namespace Belonging
