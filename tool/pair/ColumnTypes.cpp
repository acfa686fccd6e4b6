#include "tool/pair/ColumnTypes.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

template <typename Width>
bool IsNumber(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  return type == SQLITE_INTEGER || (type == SQLITE_FLOAT && std::fabs(sqlite3_value_double(value)) <=
                                                                std::numeric_limits<Width>::max());
}

template <typename Width>
bool IsNumberOrNull(sqlite3_value* value) {
  return sqlite3_value_type(value) == SQLITE_NULL || IsNumber<Width>(value);
}

/// Tables whose angles are read as numbers of 32 bits: what is too large for these would be an infinity.
bool HoldsAngles(const QByteArray& table) { return table == "Orientation" || table.contains("Alignment"); }

bool IsText(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_TEXT; }

/// In SQL: whether all arguments are right.
template <bool (*IsRight)(sqlite3_value*)>
void All(sqlite3_context* context, int count, sqlite3_value** values) {
  sqlite3_result_int(context, std::all_of(values, values + count, IsRight) ? 1 : 0);
}

/// Columns of one declaration. Functions of the program's own look at a row faster than expressions do.
struct Group {
  const char* function;
  void (*look)(sqlite3_context*, int, sqlite3_value**);
  QByteArray columns;
};

void Sort(const Sqlite& db, const QByteArray& schema, const QByteArray& table, std::array<Group, 3>* groups) {
  Sqlite::Rows declared = db.Select("SELECT name, upper(type), \"notnull\" FROM pragma_table_info(?, ?)");
  declared.Bind(1, table).Bind(2, schema);
  while (declared.Next()) {
    const QByteArray type = declared.Bytes(1);
    if (type != "TEXT" && type != "DOUBLE" && type != "INTEGER") continue;
    const std::size_t number = type == "TEXT" ? 2 : declared.Int(2) == 0 ? 1 : 0;
    QByteArray& columns = groups->at(number).columns;
    columns += (columns.isEmpty() ? "" : ", ") + Quoted(declared.Bytes(0));
  }
}

}  // namespace

namespace ColumnTypes {

double LargestNumber(const QByteArray& table) {
  return HoldsAngles(table) ? double(std::numeric_limits<float>::max()) : std::numeric_limits<double>::max();
}

std::vector<qint64> WrongRows(const Sqlite& db, const QByteArray& schema, const QByteArray& table,
                              Looked looked, std::size_t most) {
  std::array<Group, 3> groups{{{"all_numbers", All<IsNumber<double>>, {}},
                               {"all_numbers_or_null", All<IsNumberOrNull<double>>, {}},
                               {"all_texts", All<IsText>, {}}}};
  if (HoldsAngles(table)) {
    groups[0] = {"all_narrow_numbers", All<IsNumber<float>>, {}};
    groups[1] = {"all_narrow_numbers_or_null", All<IsNumberOrNull<float>>, {}};
  }
  Sort(db, schema, table, &groups);
  if (looked == Looked::Numbers) groups.back().columns.clear();
  QByteArray right = "1";
  for (const Group& group : groups) {
    sqlite3_create_function(db.Handle(), group.function, -1, SQLITE_UTF8, nullptr, group.look, nullptr,
                            nullptr);
    if (!group.columns.isEmpty()) right += QByteArray(" AND ") + group.function + '(' + group.columns + ')';
  }
  std::vector<qint64> wrong;
  Sqlite::Rows rows =
      db.Select("SELECT rowid FROM " + schema + '.' + Quoted(table) + " WHERE NOT (" + right + ')');
  while (wrong.size() < most && rows.Next()) wrong.push_back(rows.Int(0));
  return wrong;
}

}  // namespace ColumnTypes
