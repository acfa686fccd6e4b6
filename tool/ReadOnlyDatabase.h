#pragma once

#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>

struct sqlite3;

/// Fails unless the path holds an SQLite file. Looks at the first bytes alone, so nothing is touched.
void RequireDatabaseFile(const QString& path);

/// A database file that is only read. The library's operations open their files for writing and create what
/// is missing; looking at a file must do neither.
class ReadOnlyDatabase {
 public:
  /// Throws a Failure if the path holds no database.
  explicit ReadOnlyDatabase(const QString& path);
  ReadOnlyDatabase(const ReadOnlyDatabase&) = delete;
  ReadOnlyDatabase& operator=(const ReadOnlyDatabase&) = delete;
  ~ReadOnlyDatabase();

  /// Rows of a query as texts. Throws a Failure on an error.
  QVector<QStringList> Rows(const QString& sql) const;
  /// First values of the rows.
  QStringList Column(const QString& sql) const;

  /// Makes another file's tables readable under the name.
  void Attach(const QString& path, const QString& name);

 private:
  struct Closer {
    void operator()(sqlite3* db) const;
  };

  const QString path_;
  std::unique_ptr<sqlite3, Closer> db_;
};
