#pragma once

#include <QStringList>
#include <map>
#include <utility>

#include "tool/pair/Sqlite.h"

/// How a file differs from a new file of its version.
namespace Schema {

/// Tables, indices, views and triggers: the text of each by its type and name.
using Objects = std::map<std::pair<QByteArray, QByteArray>, QByteArray>;
/// Those of one database of a connection, without what SQLite makes for itself.
Objects ObjectsOf(const Sqlite& db, const QByteArray& schema = "main");

/// What the file has in addition, as statements that remove it, and how each can be shown.
struct Surplus {
  QStringList shown;
  QVector<QByteArray> removals;
};
Surplus SurplusOf(const Sqlite& file, const Sqlite& fresh);

/// Objects and columns that are missing or surplus, and columns that are declared otherwise.
QStringList Differences(const Sqlite& file, const Sqlite& fresh);
/// Tables with other defaults and references: those that conversions leave.
QStringList ConvertedTables(const Sqlite& file, const Sqlite& fresh);
/// Whether a table's text differs from a new file's, as after a conversion.
bool HasOtherTexts(const Sqlite& file, const Sqlite& fresh);

}  // namespace Schema
