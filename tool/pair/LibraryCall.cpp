#include "tool/pair/LibraryCall.h"

#include <sqlite3.h>

#include "tool/FileName.h"

namespace {

/// Some numbers are both SQLite's and the system's: that of damage is that of a lock somebody else has.
bool IsOfSystem(const OperationGuard::Failure& failure) {
  return failure.text.endsWith(FileName::SystemError(failure.code));
}

int StatusOf(const QVector<OperationGuard::Failure>& failures) {
  for (const OperationGuard::Failure& failure : failures) {
    const int code = failure.code & 0xFF;
    if ((code == SQLITE_CORRUPT || code == SQLITE_NOTADB) && !IsOfSystem(failure)) return Status::Damaged;
  }
  return Status::Failed;
}

}  // namespace

void LibraryCall::RequireSuccess(bool result, const QString& message) {
  guard_.CloseRefusedConnections();
  if (result && guard_.Succeeded()) return;
  QString text = message;
  for (const OperationGuard::Failure& failure : guard_.Failures()) {
    text += QStringLiteral("\n  library: ") + Console::Printable(failure.text);
  }
  throw Failure(text, StatusOf(guard_.Failures()));
}

bool LibraryCall::MetOnly(int systemError) const {
  const QVector<OperationGuard::Failure>& failures = guard_.Failures();
  return failures.size() == 1 && failures.front().code == systemError && IsOfSystem(failures.front());
}
