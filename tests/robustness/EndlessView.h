#pragma once

#include <QString>
#include <vector>

// A view that stands where a table was, with the table's columns, and keeps a query that reads it from coming
// to its end.
struct EndlessView {
  const char* what;
  const char* from;  // its rows

  static const std::vector<EndlessView>& All();
  void Replace(const QString& path, const QString& table) const;
};
