#pragma once

#include <QDebug>

/// Writes one debug line: the items in order, separated by one blank each, texts without quotation marks.
/// Category "default", and no file, line or function, so that a line reads alike in every build type.
template <typename... Items>
void LogDebug(const Items&... items) {
  QDebug line = QMessageLogger(nullptr, 0, nullptr).debug().noquote();
  (line << ... << items);
}

/// For lines that only some callers have; null: nothing.
inline void LogIfAny(const char* line) {
  if (line != nullptr) LogDebug(line);
}
