#include "tests/support/SqliteCalls.h"

#include <sqlite3.h>

#include <QMap>
#include <QSet>
#include <utility>

#include "tests/support/NextDefinition.h"

namespace {

struct Connection {
  QByteArray path;
  int injected = SQLITE_OK;  // code of the last call, when it was made to fail
};

struct State {
  FaultPlan plan;
  bool recording = false;
  QStringList trace;
  QMap<sqlite3*, Connection> connections;
  QSet<sqlite3_stmt*> statements;
};

State& Calls() {
  static State state;
  return state;
}

QByteArray PathOf(sqlite3* db) { return Calls().connections.value(db).path; }

void SetInjected(sqlite3* db, int code) {
  const auto connection = Calls().connections.find(db);
  if (connection != Calls().connections.end()) connection->injected = code;
}

QString Argument(const char* text) { return QString::fromUtf8(text ? text : "null"); }

template <typename Number>
QString Argument(Number number) {
  return QString::number(number);
}

template <typename Result>
void Trace(const char* name, const QStringList& arguments, Result result, const char* sql = nullptr) {
  if (!Calls().recording) return;
  QString line = QLatin1String(name);
  if (!arguments.isEmpty()) line += QLatin1Char(' ') + arguments.join(QStringLiteral(", "));
  line += QStringLiteral(" = ") + Argument(result);
  if (sql) line += QStringLiteral(" [") + QString::fromUtf8(sql) + QLatin1Char(']');
  Calls().trace.append(line);
}

// A call that takes part in sweeps: forwarded, or failed as the plan has it. `fail` does what the engine
// would do besides returning the code.
template <typename Forward, typename Fail>
int Swept(const char* name, sqlite3* db, const QByteArray& path, const char* sql, Forward forward,
          Fail fail) {
  int result = SQLITE_OK;
  const Fault* const fault = Calls().plan.Meet({name, true, path, sql}, &result);
  if (!fault) {
    SetInjected(db, SQLITE_OK);
    return forward();
  }
  if (fault->IsPerformed()) forward();
  SetInjected(db, result);
  fail(*fault, result);
  return result;
}

template <typename Forward>
int OnStatement(const char* name, sqlite3_stmt* statement, const QStringList& arguments, Forward forward) {
  sqlite3* const db = sqlite3_db_handle(statement);
  const char* const sql = sqlite3_sql(statement);
  const int result = Swept(name, db, PathOf(db), sql, forward, [](const Fault&, int) {});
  Trace(name, arguments, result, sql);
  return result;
}

// A call that is counted and recorded, and that meets a fault only where it is named.
const Fault* Seen(const char* name, sqlite3* db, const char* sql) {
  int code = SQLITE_OK;
  return Calls().plan.Meet({name, false, PathOf(db), sql}, &code);
}

template <typename Forward>
auto Observed(const char* name, sqlite3_stmt* statement, const QStringList& arguments, Forward forward) {
  const QByteArray sql = sqlite3_sql(statement);
  Seen(name, sqlite3_db_handle(statement), sql);
  const auto result = forward();
  Trace(name, arguments, result, sql);
  return result;
}

}  // namespace

void SqliteCalls::Arm(const Fault& fault) { Calls().plan.Arm(fault); }

void SqliteCalls::Reset() {
  Calls().plan.Clear();
  Calls().recording = false;
  Calls().trace.clear();
}

int SqliteCalls::FiredCount() { return Calls().plan.Fired(); }

int SqliteCalls::Count(const QByteArray& calls) { return Calls().plan.Count(calls); }

void SqliteCalls::Record() { Calls().recording = true; }

QStringList SqliteCalls::TakeTrace() { return std::exchange(Calls().trace, QStringList()); }

int SqliteCalls::OpenConnections() { return static_cast<int>(Calls().connections.size()); }

int SqliteCalls::LiveStatements() { return static_cast<int>(Calls().statements.size()); }

void SqliteCalls::CloseLeaked() {
  for (sqlite3_stmt* statement : std::exchange(Calls().statements, {})) {
    NEXT_DEFINITION(sqlite3_finalize)(statement);
  }
  const QList<sqlite3*> connections = Calls().connections.keys();
  Calls().connections.clear();
  for (sqlite3* db : connections) NEXT_DEFINITION(sqlite3_close)(db);
}

extern "C" {

int sqlite3_open_v2(const char* path, sqlite3** db, int flags, const char* vfs) {
  const auto open = [&](const char* file) {
    const int result = NEXT_DEFINITION(sqlite3_open_v2)(file, db, flags, vfs);
    if (*db) Calls().connections.insert(*db, {path, SQLITE_OK});
    return result;
  };
  *db = nullptr;
  const int result = Swept(
      "open_v2", nullptr, path, nullptr, [&] { return open(path); },
      [&](const Fault& fault, int code) {
        if (!*db && fault.HasOutput()) open(":memory:");
        SetInjected(*db, code);
      });
  Trace("open_v2", {Argument(path), Argument(flags)}, result);
  return result;
}

int sqlite3_exec(sqlite3* db, const char* sql, int (*callback)(void*, int, char**, char**), void* argument,
                 char** message) {
  const int result = Swept(
      "exec", db, PathOf(db), sql,
      [&] { return NEXT_DEFINITION(sqlite3_exec)(db, sql, callback, argument, message); },
      [&](const Fault& fault, int code) {
        if (message) *message = fault.HasOutput() ? sqlite3_mprintf("%s", sqlite3_errstr(code)) : nullptr;
      });
  Trace("exec", {Argument(sql)}, result);
  return result;
}

int sqlite3_prepare_v2(sqlite3* db, const char* sql, int length, sqlite3_stmt** statement,
                       const char** tail) {
  const int result = Swept(
      "prepare_v2", db, PathOf(db), sql,
      [&] { return NEXT_DEFINITION(sqlite3_prepare_v2)(db, sql, length, statement, tail); },
      [&](const Fault& fault, int) {
        if (fault.IsPerformed()) NEXT_DEFINITION(sqlite3_finalize)(*statement);
        *statement = nullptr;
      });
  if (*statement) Calls().statements.insert(*statement);
  Trace("prepare_v2", {Argument(sql)}, result);
  return result;
}

int sqlite3_bind_int(sqlite3_stmt* statement, int index, int value) {
  return OnStatement("bind_int", statement, {Argument(index), Argument(value)},
                     [&] { return NEXT_DEFINITION(sqlite3_bind_int)(statement, index, value); });
}

int sqlite3_bind_int64(sqlite3_stmt* statement, int index, sqlite3_int64 value) {
  return OnStatement("bind_int64", statement, {Argument(index), Argument(value)},
                     [&] { return NEXT_DEFINITION(sqlite3_bind_int64)(statement, index, value); });
}

int sqlite3_bind_double(sqlite3_stmt* statement, int index, double value) {
  return OnStatement("bind_double", statement, {Argument(index), Argument(value)},
                     [&] { return NEXT_DEFINITION(sqlite3_bind_double)(statement, index, value); });
}

int sqlite3_bind_text(sqlite3_stmt* statement, int index, const char* value, int length,
                      void (*destructor)(void*)) {
  const QByteArray text =
      value ? '\'' + QByteArray(value, length < 0 ? -1 : length) + '\'' : QByteArray("null");
  return OnStatement("bind_text", statement, {Argument(index), Argument(text.constData())}, [&] {
    return NEXT_DEFINITION(sqlite3_bind_text)(statement, index, value, length, destructor);
  });
}

int sqlite3_step(sqlite3_stmt* statement) {
  return OnStatement("step", statement, {}, [&] { return NEXT_DEFINITION(sqlite3_step)(statement); });
}

int sqlite3_reset(sqlite3_stmt* statement) {
  return Observed("reset", statement, {}, [&] { return NEXT_DEFINITION(sqlite3_reset)(statement); });
}

int sqlite3_clear_bindings(sqlite3_stmt* statement) {
  return Observed("clear_bindings", statement, {},
                  [&] { return NEXT_DEFINITION(sqlite3_clear_bindings)(statement); });
}

int sqlite3_finalize(sqlite3_stmt* statement) {
  return Observed("finalize", statement, {}, [&] {
    Calls().statements.remove(statement);
    return NEXT_DEFINITION(sqlite3_finalize)(statement);
  });
}

int sqlite3_column_int(sqlite3_stmt* statement, int column) {
  return Observed("column_int", statement, {Argument(column)},
                  [&] { return NEXT_DEFINITION(sqlite3_column_int)(statement, column); });
}

double sqlite3_column_double(sqlite3_stmt* statement, int column) {
  return Observed("column_double", statement, {Argument(column)},
                  [&] { return NEXT_DEFINITION(sqlite3_column_double)(statement, column); });
}

const unsigned char* sqlite3_column_text(sqlite3_stmt* statement, int column) {
  const char* const sql = sqlite3_sql(statement);
  sqlite3* const db = sqlite3_db_handle(statement);
  int code = SQLITE_OK;
  const Fault* const fault = Calls().plan.Meet({"column_text", false, PathOf(db), sql}, &code);
  if (fault) SetInjected(db, code);
  const unsigned char* const text = fault ? reinterpret_cast<const unsigned char*>(fault->Text())
                                          : NEXT_DEFINITION(sqlite3_column_text)(statement, column);
  Trace("column_text", {Argument(column)}, reinterpret_cast<const char*>(text), sql);
  return text;
}

sqlite3_int64 sqlite3_last_insert_rowid(sqlite3* db) {
  Seen("last_insert_rowid", db, nullptr);
  const sqlite3_int64 key = NEXT_DEFINITION(sqlite3_last_insert_rowid)(db);
  Trace("last_insert_rowid", {}, key);
  return key;
}

int sqlite3_errcode(sqlite3* db) {
  Seen("errcode", db, nullptr);
  const int injected = Calls().connections.value(db).injected;
  const int code = injected ? injected : NEXT_DEFINITION(sqlite3_errcode)(db);
  Trace("errcode", {}, code);
  return code;
}

const char* sqlite3_errmsg(sqlite3* db) {
  Seen("errmsg", db, nullptr);
  const int injected = Calls().connections.value(db).injected;
  const char* const text = injected ? sqlite3_errstr(injected) : NEXT_DEFINITION(sqlite3_errmsg)(db);
  Trace("errmsg", {}, text);
  return text;
}

void sqlite3_free(void* memory) {
  Seen("free", nullptr, nullptr);
  NEXT_DEFINITION(sqlite3_free)(memory);
}

int sqlite3_close(sqlite3* db) {
  const QByteArray path = PathOf(db);
  const int result = Swept(
      "close", db, path, nullptr,
      [&] {
        const int closed = NEXT_DEFINITION(sqlite3_close)(db);
        if (closed == SQLITE_OK) Calls().connections.remove(db);
        return closed;
      },
      [](const Fault&, int) {});
  Trace("close", {Argument(path.constData())}, result);
  return result;
}

}  // extern "C"
