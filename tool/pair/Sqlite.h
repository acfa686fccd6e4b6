#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;

/// A connection of the program's own. What goes wrong is thrown as a Failure that names the file: in use (3),
/// damaged or of another kind (4), or anything else (1).
class Sqlite {
 public:
  /// Over an existing file. `shown` is its name in messages.
  Sqlite(const QByteArray& path, QString shown);

  /// Over the rows of one statement: `while (rows.Next()) rows.Int(0)`.
  class Rows {
   public:
    bool Next();
    int Columns() const;
    qint64 Int(int column) const;
    double Real(int column) const;
    /// Bytes as they are stored, of whatever type.
    QByteArray Bytes(int column) const;
    /// With replacement characters for what is not UTF-8.
    QString Text(int column) const;
    bool IsNull(int column) const;

    Rows& Bind(int number, qint64 value);
    Rows& Bind(int number, const QByteArray& text);
    Rows& Bind(int number, double value);
    /// For another run of the statement, with all values null.
    void Restart();

   private:
    friend class Sqlite;
    struct Finalizer {
      void operator()(sqlite3_stmt* statement) const;
    };
    Rows(const Sqlite* db, sqlite3_stmt* statement) : db_(db), statement_(statement) {}
    const Sqlite* db_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
  };

  Rows Select(const QByteArray& sql) const;
  void Execute(const QByteArray& sql) const;
  /// The first value of the first row; 0 without one.
  qint64 Number(const QByteArray& sql) const;

  void Attach(const QByteArray& path, const char* name) const;

  /// Throws the Failure for a result code of this connection.
  [[noreturn]] void Throw(int code) const;

  sqlite3* Handle() const { return db_.get(); }

 private:
  struct Closer {
    void operator()(sqlite3* db) const;
  };
  const QString shown_;
  std::unique_ptr<sqlite3, Closer> db_;
};

/// A name quoted for SQL.
QByteArray Quoted(const QByteArray& name);
