#include "tests/support/DatabaseDump.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QFile>
#include <functional>

#include "tests/support/NextDefinition.h"

namespace {

// A connection through the engine's own functions and the real file layer.
class Engine {
 public:
  Engine(const QString& path, int flags) {
    Check(NEXT_DEFINITION(sqlite3_open_v2)(QFile::encodeName(path).constData(), &db_, flags, "unix"), path);
  }
  ~Engine() { NEXT_DEFINITION(sqlite3_close)(db_); }
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  void Run(const QString& sql) {
    Check(NEXT_DEFINITION(sqlite3_exec)(db_, sql.toUtf8().constData(), nullptr, nullptr, nullptr), sql);
  }

  // Rows of `sql`, each value written by the SQL function, joined by '|'.
  QStringList Query(const QString& sql, const QString& function = QStringLiteral("quote")) {
    QStringList rows;
    sqlite3_stmt* const writer = Prepare(QStringLiteral("SELECT %1(?1)").arg(function));
    ForEachRow(sql, [&](sqlite3_stmt* row) {
      QStringList values;
      for (int column = 0; column < sqlite3_column_count(row); ++column) {
        values.append(Written(writer, sqlite3_column_value(row, column)));
      }
      rows.append(values.join(QLatin1Char('|')));
    });
    NEXT_DEFINITION(sqlite3_finalize)(writer);
    return rows;
  }

  // First column of all rows as plain text.
  QStringList Texts(const QString& sql) {
    QStringList texts;
    ForEachRow(sql, [&](sqlite3_stmt* row) { texts.append(Text(row)); });
    return texts;
  }

 private:
  void Check(int result, const QString& what) {
    if (result == SQLITE_OK || result == SQLITE_DONE) return;
    ADD_FAILURE() << what.toStdString() << ": " << NEXT_DEFINITION(sqlite3_errmsg)(db_);
  }

  sqlite3_stmt* Prepare(const QString& sql) {
    sqlite3_stmt* statement = nullptr;
    Check(NEXT_DEFINITION(sqlite3_prepare_v2)(db_, sql.toUtf8().constData(), -1, &statement, nullptr), sql);
    return statement;
  }

  void ForEachRow(const QString& sql, const std::function<void(sqlite3_stmt*)>& visit) {
    sqlite3_stmt* const statement = Prepare(sql);
    if (!statement) return;
    int result = SQLITE_ROW;
    while ((result = NEXT_DEFINITION(sqlite3_step)(statement)) == SQLITE_ROW) visit(statement);
    Check(result, sql);
    NEXT_DEFINITION(sqlite3_finalize)(statement);
  }

  static QString Text(sqlite3_stmt* row) {
    const unsigned char* const text = NEXT_DEFINITION(sqlite3_column_text)(row, 0);
    return QString::fromUtf8(reinterpret_cast<const char*>(text))
        .replace(QLatin1Char('\n'), QStringLiteral("\\n"));
  }

  static QString Written(sqlite3_stmt* writer, sqlite3_value* value) {
    sqlite3_bind_value(writer, 1, value);
    NEXT_DEFINITION(sqlite3_step)(writer);
    const QString text = Text(writer);
    NEXT_DEFINITION(sqlite3_reset)(writer);
    return text;
  }

  sqlite3* db_ = nullptr;
};

QString DumpTable(Engine& engine, const QString& table) {
  const bool sequence = table == QLatin1String("sqlite_sequence");
  const QString query = sequence ? QStringLiteral("SELECT * FROM %1 ORDER BY name")
                                 : QStringLiteral("SELECT rowid, * FROM \"%1\" ORDER BY rowid");
  QString text;
  for (const QString& row : engine.Query(query.arg(table))) {
    text += table + QLatin1Char('|') + row + QLatin1Char('\n');
  }
  return text;
}

}  // namespace

QString DumpDatabase(const QString& path) {
  Engine engine(path, SQLITE_OPEN_READONLY);
  QString text;
  for (const QString& entry :
       engine.Texts(QStringLiteral("SELECT 'schema|' || name || '|' || sql FROM sqlite_schema WHERE sql IS "
                                   "NOT NULL ORDER BY name"))) {
    text += entry + QLatin1Char('\n');
  }
  for (const QString& table :
       engine.Texts(QStringLiteral("SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name"))) {
    text += DumpTable(engine, table);
  }
  return text;
}

QStringList Rows(const QString& path, const QString& sql) {
  return Engine(path, SQLITE_OPEN_READWRITE).Query(sql);
}

QString TypeOf(const QString& path, const QString& sql) {
  return Engine(path, SQLITE_OPEN_READWRITE)
      .Query(sql, QStringLiteral("typeof"))
      .value(0)
      .section(QLatin1Char('|'), 0, 0);
}

void RunSql(const QString& path, const QString& sql, bool foreignKeys) {
  Engine engine(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  engine.Run(QStringLiteral("PRAGMA foreign_keys = %1").arg(foreignKeys ? 1 : 0));
  engine.Run(sql);
}

void LoadSqlFile(const QString& path, const QString& file) {
  QFile source(file);
  ASSERT_TRUE(source.open(QIODevice::ReadOnly)) << file.toStdString();
  RunSql(path, QString::fromUtf8(source.readAll()));
}

QString IntegrityCheck(const QString& path) {
  return Engine(path, SQLITE_OPEN_READWRITE)
      .Texts(QStringLiteral("PRAGMA integrity_check"))
      .join(QStringLiteral("; "));
}

QStringList ForeignKeyCheck(const QString& path) {
  return Rows(path, QStringLiteral("PRAGMA foreign_key_check"));
}
