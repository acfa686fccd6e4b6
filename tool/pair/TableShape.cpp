#include "tool/pair/TableShape.h"

#include <algorithm>
#include <cmath>

#include "tool/pair/ColumnTypes.h"

TableShape::TableShape(const Sqlite& fresh, const QByteArray& table)
    : largest_(ColumnTypes::LargestNumber(table)) {
  Sqlite::Rows rows = fresh.Select(
      "SELECT name, upper(type), \"notnull\", pk, dflt_value IS NOT NULL FROM pragma_table_info(?)");
  rows.Bind(1, table);
  while (rows.Next()) {
    if (rows.Int(3) != 0) key_ = int(names_.size());
    names_.push_back(rows.Bytes(0));
    const bool mayBeNull = rows.Int(2) == 0;
    columns_.push_back(
        {rows.Bytes(1) == "TEXT" ? Kind::Text : Kind::Number, mayBeNull, mayBeNull || rows.Int(4) != 0});
  }
  // What SQLite keeps for itself has no types declared: names of tables and their last keys.
  if (table == "sqlite_sequence") columns_.front() = {Kind::Text, false, false};
}

bool TableShape::Fits(const StoredRow& row) const {
  using Type = StoredValue::Type;
  if (row.values.size() > columns_.size()) return false;
  for (std::size_t at = 0; at < columns_.size(); ++at) {
    // A column that was added later is absent from the rows that were there.
    if (at >= row.values.size()) {
      if (!columns_[at].mayBeAbsent) return false;
      continue;
    }
    const StoredValue& value = row.values[at];
    if (int(at) == key_ || value.type == Type::Null) {
      if (value.type != Type::Null || (int(at) != key_ && !columns_[at].mayBeNull)) return false;
      continue;
    }
    const bool isNumber =
        value.type == Type::Integer || (value.type == Type::Real && std::fabs(value.real) <= largest_);
    if (columns_[at].kind == Kind::Text ? value.type != Type::Text : !isNumber) return false;
  }
  return true;
}

StoredValue TableShape::ValueOf(const StoredRow& row, const char* column) const {
  const auto at = std::size_t(std::find(names_.begin(), names_.end(), column) - names_.begin());
  if (int(at) == key_) {
    StoredValue key;
    key.type = StoredValue::Type::Integer;
    key.integer = row.key;
    return key;
  }
  return at < row.values.size() ? row.values[at] : StoredValue();
}

std::map<QByteArray, TableShape> ShapesOf(const Sqlite& fresh) {
  std::map<QByteArray, TableShape> shapes;
  Sqlite::Rows tables = fresh.Select("SELECT name FROM sqlite_schema WHERE type = 'table'");
  while (tables.Next()) shapes.emplace(tables.Bytes(0), TableShape(fresh, tables.Bytes(0)));
  return shapes;
}
