#pragma once

#include <limits>
#include <vector>

#include "tool/pair/Sqlite.h"

/// Whether values are of the types that their columns are declared with: SQLite keeps whatever it is given.
namespace ColumnTypes {

/// The largest number that the columns of a table can hold.
double LargestNumber(const QByteArray& table);

enum class Looked { Numbers, NumbersAndTexts };

/// The rows of a table, at most `most` of them, that have a text, a blob or an infinity where a number has to
/// be, or something other than a text where a text has to be. What may be left out may be null.
std::vector<qint64> WrongRows(const Sqlite& db, const QByteArray& schema, const QByteArray& table,
                              Looked looked, std::size_t most = std::numeric_limits<std::size_t>::max());

}  // namespace ColumnTypes
