#pragma once

#include <QStringList>

#include "tool/pair/Sqlite.h"

/// What of a file is not as in a new file of its version.
namespace Schema {

/// What stands in the file beyond that, as statements that take it out, and how each can be shown.
struct Surplus {
  QStringList shown;
  QVector<QByteArray> removals;
};
Surplus SurplusOf(const Sqlite& file, const Sqlite& fresh);

/// Objects and columns that are missing or there beyond, and columns that are declared otherwise.
QStringList Differences(const Sqlite& file, const Sqlite& fresh);
/// Tables with other defaults and references: those that conversions leave.
QStringList ConvertedTables(const Sqlite& file, const Sqlite& fresh);
/// Whether a table's text is another than a new file's, as after a conversion.
bool HasOtherTexts(const Sqlite& file, const Sqlite& fresh);

}  // namespace Schema
