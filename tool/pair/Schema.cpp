#include "tool/pair/Schema.h"

namespace Schema {
namespace {

QString Shown(const std::pair<QByteArray, QByteArray>& object) {
  return QString::fromUtf8(object.first) + QLatin1Char(' ') + QString::fromUtf8(object.second);
}

/// Facts about a table's columns by their names; more than one of a name in the order found.
std::map<QByteArray, QStringList> Facts(const Sqlite& db, const QByteArray& sql, const QByteArray& table) {
  std::map<QByteArray, QStringList> facts;
  Sqlite::Rows rows = db.Select(sql);
  rows.Bind(1, table);
  while (rows.Next()) facts[rows.Bytes(0)].append(rows.Text(1));
  return facts;
}

std::map<QByteArray, QStringList> Columns(const Sqlite& db, const QByteArray& table) {
  return Facts(
      db,
      "SELECT name, cid || ' ' || upper(type) || ' ' || \"notnull\" || ' ' || pk || ' ' || hidden FROM "
      "pragma_table_xinfo(?)",
      table);
}

std::map<QByteArray, QStringList> DefaultsAndReferences(const Sqlite& db, const QByteArray& table) {
  auto facts = Facts(db, "SELECT name, ifnull(dflt_value, '') FROM pragma_table_info(?)", table);
  for (const auto& [column, references] : Facts(db,
                                                "SELECT \"from\", \"table\" || ' ' || \"to\" || ' ' || "
                                                "on_delete FROM pragma_foreign_key_list(?) ORDER "
                                                "BY 1, 2",
                                                table)) {
    facts[column] += references;
  }
  return facts;
}

}  // namespace

Objects ObjectsOf(const Sqlite& db, const QByteArray& schema) {
  Objects objects;
  Sqlite::Rows rows = db.Select("SELECT type, name, sql FROM " + schema +
                                ".sqlite_schema WHERE sql IS NOT NULL AND name NOT LIKE "
                                "'sqlite\\_%' ESCAPE '\\'");
  while (rows.Next()) objects[{rows.Bytes(0), rows.Bytes(1)}] = rows.Bytes(2);
  return objects;
}

Surplus SurplusOf(const Sqlite& file, const Sqlite& fresh) {
  Surplus surplus;
  const Objects present = ObjectsOf(file);
  const Objects expected = ObjectsOf(fresh);
  // Tables last: with a table go its indices and triggers. Columns come after whatever may refer to them.
  for (const char* type : {"trigger", "view", "index", "table"}) {
    for (const auto& [object, text] : present) {
      if (object.first != type || expected.count(object) > 0) continue;
      surplus.shown.append(Shown(object));
      surplus.removals.append("DROP " + object.first.toUpper() + " IF EXISTS " + Quoted(object.second));
    }
  }
  for (const auto& [object, text] : expected) {
    if (object.first != "table") continue;
    const auto wanted = Columns(fresh, object.second);
    for (const auto& [column, facts] : Columns(file, object.second)) {
      if (wanted.count(column) > 0) continue;
      surplus.shown.append(QStringLiteral("column ") + QString::fromUtf8(object.second + '.' + column));
      surplus.removals.append("ALTER TABLE " + Quoted(object.second) + " DROP COLUMN " + Quoted(column));
    }
  }
  return surplus;
}

QStringList Differences(const Sqlite& file, const Sqlite& fresh) {
  QStringList wrong;
  const Objects present = ObjectsOf(file);
  const Objects expected = ObjectsOf(fresh);
  for (const auto& [object, text] : present) {
    if (expected.count(object) == 0) wrong.append(Shown(object) + QStringLiteral(" does not belong there"));
  }
  for (const auto& [object, text] : expected) {
    if (present.count(object) == 0) {
      wrong.append(Shown(object) + QStringLiteral(" is missing"));
    } else if (Columns(file, object.second) != Columns(fresh, object.second)) {
      wrong.append(QStringLiteral("the columns of ") + QString::fromUtf8(object.second) +
                   QStringLiteral(" differ"));
    }
  }
  return wrong;
}

QStringList ConvertedTables(const Sqlite& file, const Sqlite& fresh) {
  QStringList tables;
  for (const auto& [object, text] : ObjectsOf(fresh)) {
    const QByteArray& table = object.second;
    if (Columns(file, table) == Columns(fresh, table) &&
        DefaultsAndReferences(file, table) != DefaultsAndReferences(fresh, table)) {
      tables.append(QString::fromUtf8(table));
    }
  }
  return tables;
}

bool HasOtherTexts(const Sqlite& file, const Sqlite& fresh) {
  const Objects present = ObjectsOf(file);
  for (const auto& [object, text] : ObjectsOf(fresh)) {
    const auto mine = present.find(object);
    if (mine != present.end() && mine->second != text) return true;
  }
  return false;
}

}  // namespace Schema
