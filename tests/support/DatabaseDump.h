#pragma once

#include <QString>
#include <QStringList>

#include "tests/support/PrintQt.h"

// Looking at database files past the library: always the engine itself, never an injected failure. An error
// makes the running test fail and gives an empty result.

// Canonical text of a database: a line "schema|name|sql" for every schema entry that has a text, by name;
// then the tables by name, for every row a line "table|rowid|value|value…" by row id, values as quote()
// writes them. Lines of sqlite_sequence carry no row id and are ordered by table. Line breaks inside a value
// are written as \n. The file is opened read-only: one with a hot journal has to be opened by IntegrityCheck
// or another first.
QString DumpDatabase(const QString& path);

// Rows that a query yields, values as quote() writes them, joined by '|'.
QStringList Rows(const QString& path, const QString& sql);

// Storage class of the first value of the first row: "integer", "real", "text", "blob" or "null".
QString TypeOf(const QString& path, const QString& sql);

// Runs statements that yield nothing, creating the file if it is missing; foreign keys are enforced only if
// asked for.
void RunSql(const QString& path, const QString& sql, bool foreignKeys = false);
void LoadSqlFile(const QString& path, const QString& file);

// "ok", or what is wrong.
QString IntegrityCheck(const QString& path);
// One line per violation: table, row id, referred table, number of the constraint.
QStringList ForeignKeyCheck(const QString& path);
