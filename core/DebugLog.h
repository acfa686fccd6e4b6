#pragma once

#include <QDebug>

/// Writes one debug line: the items in order, one blank between them, texts without quotation marks.
/// Category "default", and no file, line or function, so that a line reads alike in every build type.
template <typename... Items>
void LogDebug(const Items&... items) {
  QDebug line = QMessageLogger().debug().noquote();
  (line << ... << items);
}
