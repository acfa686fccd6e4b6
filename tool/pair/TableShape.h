#pragma once

#include <map>

#include "tool/pair/DamagedFile.h"
#include "tool/pair/Sqlite.h"

/// The columns of a table as a new file has them, and so which rows may be its own.
class TableShape : public RowShape {
 public:
  TableShape(const Sqlite& fresh, const QByteArray& table);

  bool Fits(const StoredRow& row) const override;
  const std::vector<QByteArray>& Columns() const { return names_; }
  /// The column that is the row's key; -1 where none is.
  int KeyColumn() const { return key_; }
  /// The value of a column; null where the row, or the table, has none.
  StoredValue ValueOf(const StoredRow& row, const char* column) const;

 private:
  enum class Kind { Number, Text };
  struct Column {
    Kind kind;
    bool mayBeNull;
    bool mayBeAbsent;
  };
  std::vector<QByteArray> names_;
  std::vector<Column> columns_;
  int key_ = -1;
  const double largest_;
};

/// Of all tables of a file, by their names.
std::map<QByteArray, TableShape> ShapesOf(const Sqlite& fresh);
