#include "tool/ReadOnlyDatabase.h"

#include <sqlite3.h>

#include <QFile>
#include <QFileInfo>

#include "tool/Console.h"

namespace {

struct Finalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

QStringList ReadRow(sqlite3_stmt* row) {
  QStringList values;
  for (int column = 0; column < sqlite3_column_count(row); ++column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    values.append(QString::fromUtf8(text));
  }
  return values;
}

}  // namespace

void RequireDatabaseFile(const QString& path) {
  if (!QFileInfo::exists(path)) throw Failure(QStringLiteral("%1: no such file").arg(path));
  if (!QFileInfo(path).isFile()) throw Failure(QStringLiteral("%1: is not a file").arg(path));
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
  }
  const QByteArray magic("SQLite format 3\0", 16);
  if (file.read(magic.size()) != magic) throw Failure(QStringLiteral("%1: is no database").arg(path));
}

void ReadOnlyDatabase::Closer::operator()(sqlite3* db) const { sqlite3_close(db); }

ReadOnlyDatabase::ReadOnlyDatabase(const QString& path) : path_(path) {
  RequireDatabaseFile(path);
  sqlite3* db = nullptr;
  const int result = sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READONLY, nullptr);
  db_.reset(db);
  if (result != SQLITE_OK) {
    throw Failure(QStringLiteral("%1: %2").arg(path, QString::fromUtf8(sqlite3_errmsg(db))));
  }
}

ReadOnlyDatabase::~ReadOnlyDatabase() = default;

QVector<QStringList> ReadOnlyDatabase::Rows(const QString& sql) const {
  sqlite3_stmt* prepared = nullptr;
  int result = sqlite3_prepare_v2(db_.get(), sql.toUtf8().constData(), -1, &prepared, nullptr);
  const std::unique_ptr<sqlite3_stmt, Finalizer> statement(prepared);
  QVector<QStringList> rows;
  if (result == SQLITE_OK) {
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW) rows.append(ReadRow(prepared));
  }
  if (result == SQLITE_READONLY) {
    throw Failure(QStringLiteral("%1: a change that was interrupted has to be rolled back first; any command "
                                 "that opens the file for writing does so, for instance list")
                      .arg(path_));
  }
  if (result != SQLITE_DONE) {
    throw Failure(QStringLiteral("%1: %2").arg(path_, QString::fromUtf8(sqlite3_errmsg(db_.get()))));
  }
  return rows;
}

QStringList ReadOnlyDatabase::Column(const QString& sql) const {
  QStringList values;
  const QVector<QStringList> rows = Rows(sql);
  for (const QStringList& row : rows) values.append(row.first());
  return values;
}

void ReadOnlyDatabase::Attach(const QString& path, const QString& name) {
  QString quoted = path;
  quoted.replace(QLatin1Char('\''), QLatin1String("''"));
  Rows(QStringLiteral("ATTACH DATABASE '%1' AS %2").arg(quoted, name));
}
