#pragma once

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <stdexcept>

/// Qt SQL with its SQLite driver, used as its documentation advises: prepared, forward only.
struct DriverQtSql {
  using Text = QString;

  static void Check(bool good, const QSqlError& error) {
    if (!good) throw std::runtime_error(error.text().toStdString());
  }

  class Connection {
   public:
    explicit Connection(const char* path) : name_(QString::fromLocal8Bit(path)) {
      QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
      db.setDatabaseName(name_);
      Check(db.open(), db.lastError());
      Execute("PRAGMA foreign_keys = ON;");
      Execute("PRAGMA temp_store = MEMORY;");
    }
    ~Connection() {
      Handle().close();
      QSqlDatabase::removeDatabase(name_);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void Execute(const char* sql) {
      QSqlQuery query(Handle());
      Check(query.exec(QString::fromUtf8(sql)), query.lastError());
    }
    QSqlDatabase Handle() const { return QSqlDatabase::database(name_, false); }

   private:
    const QString name_;
  };

  class Query {
   public:
    Query(Connection& connection, const char* sql) : query_(connection.Handle()) {
      query_.setForwardOnly(true);
      Check(query_.prepare(QString::fromUtf8(sql)), query_.lastError());
    }
    template <typename Value>
    Query& Bind(const Value& value) {
      query_.addBindValue(value);
      return *this;
    }
    /// True for a row, false when done.
    bool Step() {
      if (!executed_) Check(query_.exec(), query_.lastError());
      executed_ = true;
      return query_.next();
    }
    int LastKey() { return query_.lastInsertId().toInt(); }
    int Int(int column) { return query_.value(column).toInt(); }
    double Real(int column) { return query_.value(column).toDouble(); }
    Text String(int column) { return query_.value(column).toString(); }

   private:
    QSqlQuery query_;
    bool executed_ = false;
  };
};
