#include "tool/pair/RowChanges.h"

#include <QVector>
#include <initializer_list>

#include "tool/pair/Schema.h"

namespace {

using Schema::Objects;
using Schema::ObjectsOf;

/// A table whose rows are kept in a b-tree of its own. Virtual tables keep theirs in such tables.
struct Table {
  QByteArray name;
  /// Columns that hold values; generated ones do not.
  QVector<QByteArray> columns;
  /// By which rows are told apart; empty if there are only the columns.
  QByteArray rowId;
  bool rowIdIsColumn = false;
};

QByteArray ColumnList(const QVector<QByteArray>& columns, const QByteArray& prefix) {
  QByteArray list;
  for (const QByteArray& column : columns) list += (list.isEmpty() ? "" : ", ") + prefix + Quoted(column);
  return list;
}

QByteArray RowIdOf(const QVector<QByteArray>& columns) {
  for (const char* name : {"rowid", "_rowid_", "oid"}) {
    bool taken = false;
    for (const QByteArray& column : columns) taken = taken || column.toLower() == name;
    if (!taken) return name;
  }
  return {};
}

Table Describe(const Sqlite& db, const QByteArray& schema, const QByteArray& name, bool withoutRowId) {
  Table table;
  table.name = name;
  int keyColumns = 0;
  QByteArray key;
  Sqlite::Rows rows = db.Select("SELECT name, hidden, pk, upper(type) FROM pragma_table_xinfo(?, ?)");
  rows.Bind(1, name).Bind(2, schema);
  while (rows.Next()) {
    if (rows.Int(1) != 0) continue;
    table.columns.append(rows.Bytes(0));
    if (rows.Int(2) == 0) continue;
    ++keyColumns;
    if (rows.Bytes(3) == "INTEGER") key = rows.Bytes(0);
  }
  if (withoutRowId) return table;
  table.rowId = RowIdOf(table.columns);
  if (keyColumns != 1 || key.isEmpty()) return table;
  // INTEGER PRIMARY KEY is the row's number, except in a declaration with DESC that nobody writes: there it
  // is an ordinary column, and giving both is right.
  table.rowIdIsColumn =
      !table.rowId.isEmpty() && db.Number("SELECT count(*) FROM " + schema + '.' + Quoted(name) + " WHERE " +
                                          Quoted(key) + " IS NOT " + table.rowId) == 0;
  return table;
}

/// sqlite_sequence comes last: inserting rows changes it.
QVector<Table> TablesOf(const Sqlite& db, const QByteArray& schema) {
  QVector<Table> tables;
  bool hasSequence = false;
  Sqlite::Rows rows =
      db.Select("SELECT name, wr FROM pragma_table_list WHERE schema = ? AND type IN ('table', 'shadow')");
  rows.Bind(1, schema);
  while (rows.Next()) {
    const QByteArray name = rows.Bytes(0);
    if (name == "sqlite_sequence") hasSequence = true;
    if (!name.startsWith("sqlite_")) tables.append(Describe(db, schema, name, rows.Int(1) != 0));
  }
  if (hasSequence) tables.append(Describe(db, schema, "sqlite_sequence", false));
  return tables;
}

QByteArray Same(const Table& table) {
  QByteArray same = "1";
  for (const QByteArray& column : table.columns) {
    const QByteArray name = Quoted(column);
    same += " AND f." + name + " IS t." + name + " COLLATE BINARY AND typeof(f." + name + ") = typeof(t." +
            name + ')';
  }
  return same;
}

QByteArray FromAndTo(const Table& table, const QByteArray& from, const QByteArray& to, const char* join) {
  return from + '.' + Quoted(table.name) + " f " + join + ' ' + to + '.' + Quoted(table.name) + " t ON f." +
         table.rowId + " = t." + table.rowId;
}

void ApplyRows(const Sqlite& db, const Table& table, const QByteArray& from, const QByteArray& to) {
  const QByteArray target = to + '.' + Quoted(table.name);
  const QByteArray source = from + '.' + Quoted(table.name);
  const QByteArray names = ColumnList(table.columns, "");
  if (table.rowId.isEmpty()) {
    db.Execute("DELETE FROM " + target);
    db.Execute("INSERT INTO " + target + " (" + names + ") SELECT " + names + " FROM " + source);
    return;
  }
  db.Execute("DELETE FROM " + target + " WHERE " + table.rowId + " NOT IN (SELECT " + table.rowId + " FROM " +
             source + ')');
  db.Execute("DELETE FROM " + target + " WHERE " + table.rowId + " IN (SELECT f." + table.rowId + " FROM " +
             FromAndTo(table, from, to, "JOIN") + " WHERE NOT (" + Same(table) + "))");
  const QByteArray rowId = table.rowIdIsColumn ? QByteArray() : table.rowId + ", ";
  const QByteArray sourceRowId = table.rowIdIsColumn ? QByteArray() : "f." + table.rowId + ", ";
  db.Execute("INSERT INTO " + target + " (" + rowId + names + ") SELECT " + sourceRowId +
             ColumnList(table.columns, "f.") + " FROM " + FromAndTo(table, from, to, "LEFT JOIN") +
             " WHERE t." + table.rowId + " IS NULL ORDER BY f." + table.rowId);
}

/// Texts are kept as they are in the file, whose tables they are, so each names its object without a schema:
/// after CREATE TABLE, CREATE UNIQUE INDEX and so on.
QByteArray InSchema(const QByteArray& type, const QByteArray& text, const QByteArray& schema) {
  const auto at = text.indexOf(type.toUpper() + ' ') + type.size() + 1;
  return text.left(at) + schema + '.' + text.mid(at);
}

void DropDiffering(const Sqlite& db, const QByteArray& from, const QByteArray& to) {
  const Objects wanted = ObjectsOf(db, from);
  // Tables last: with a table go its indices and triggers.
  for (const char* type : {"trigger", "view", "index", "table"}) {
    for (const auto& [object, text] : ObjectsOf(db, to)) {
      if (object.first != type) continue;
      const auto same = wanted.find(object);
      if (same != wanted.end() && same->second == text) continue;
      db.Execute("DROP " + object.first.toUpper() + " IF EXISTS " + to + '.' + Quoted(object.second));
    }
  }
}

void CreateMissing(const Sqlite& db, const QByteArray& from, const QByteArray& to,
                   std::initializer_list<const char*> types) {
  const Objects present = ObjectsOf(db, to);
  const Objects wanted = ObjectsOf(db, from);
  for (const char* type : types) {
    for (const auto& [object, text] : wanted) {
      if (object.first == type && present.count(object) == 0) db.Execute(InSchema(object.first, text, to));
    }
  }
}

bool HasEqualRows(const Sqlite& db, const Table& table, const QByteArray& from, const QByteArray& to) {
  const QByteArray count = "SELECT count(*) FROM ";
  if (db.Number(count + from + '.' + Quoted(table.name)) !=
      db.Number(count + to + '.' + Quoted(table.name))) {
    return false;
  }
  if (table.rowId.isEmpty()) {
    const QByteArray names = ColumnList(table.columns, "");
    return db.Number("SELECT count(*) FROM (SELECT " + names + " FROM " + from + '.' + Quoted(table.name) +
                     " EXCEPT SELECT " + names + " FROM " + to + '.' + Quoted(table.name) + ')') == 0;
  }
  return db.Number("SELECT EXISTS (SELECT 1 FROM " + FromAndTo(table, from, to, "LEFT JOIN") + " WHERE t." +
                   table.rowId + " IS NULL OR NOT (" + Same(table) + "))") == 0;
}

}  // namespace

namespace RowChanges {

void Apply(const Sqlite& db, const QByteArray& from, const QByteArray& to) {
  DropDiffering(db, from, to);
  CreateMissing(db, from, to, {"table"});
  for (const Table& table : TablesOf(db, from)) ApplyRows(db, table, from, to);
  CreateMissing(db, from, to, {"index", "view", "trigger"});
}

bool AreEqual(const Sqlite& db, const QByteArray& from, const QByteArray& to) {
  if (ObjectsOf(db, from) != ObjectsOf(db, to)) return false;
  for (const Table& table : TablesOf(db, from)) {
    if (!HasEqualRows(db, table, from, to)) return false;
  }
  return true;
}

}  // namespace RowChanges
