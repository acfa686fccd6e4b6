#pragma once

#include <QDebug>

/// Writes one debug line: the items in order, one blank between them, texts without quotation marks.
/// Category "default", and no file, line or function, so that a line reads alike in every build type.
template <typename... Items>
void LogDebug(const Items&... items) {
  QDebug line = QMessageLogger(nullptr, 0, nullptr).debug().noquote();
  (line << ... << items);
}

/// For lines that some callers have and others do not.
inline void LogIfAny(const char* line) {
  if (line != nullptr) LogDebug(line);
}
