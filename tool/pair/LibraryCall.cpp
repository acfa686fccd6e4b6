#include "tool/pair/LibraryCall.h"

#include <sqlite3.h>

namespace {

int StatusOf(const QVector<OperationGuard::Failure>& failures) {
  for (const OperationGuard::Failure& failure : failures) {
    const int code = failure.code & 0xFF;
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB) return Status::Damaged;
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
