#pragma once

#include <QString>
#include <vector>

// A view that takes the place of a table, with the table's columns, and keeps a query that reads it from
// coming to its end.
struct EndlessView {
  const char* what;
  const char* from;  // its rows
  bool hasFirstRow;

  static const std::vector<EndlessView>& All();
  void Replace(const QString& path, const QString& table) const;
};
