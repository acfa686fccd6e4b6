#pragma once

#include <QString>
#include <vector>

// A table as a store creates it: its name, what the statement is called in the log, and its text.
struct CreatedTable {
  QString name;
  QString label;
  QString statement;
};

// Tables of the current version's main file and of the thresholds file, in the order of creation.
std::vector<CreatedTable> MainTables();
std::vector<CreatedTable> ThresholdTables();

// Tables of an earlier version's main file. Where the store adds a column afterwards, the statement is the
// one by which the engine remembers the altered table.
std::vector<CreatedTable> MainTables(unsigned int version);

// How the schema of a file keeps a statement.
QString StoredText(const QString& statement);
