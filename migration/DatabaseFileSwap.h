#pragma once

#include <QString>

/// Puts a finished copy in the place of a database file, so that either the whole old or the whole new file
/// stands at the path whenever the power goes.
namespace DatabaseFileSwap {

/// Whether both paths lead to one file, or would once it exists.
bool IsSameFile(const QString& path, const QString& other);

/// Replaces the file at `path` by the one at `copyPath`, which is synced first and gone afterwards. Where the
/// copy lies on another file system, its content goes through a synced file beside the main one.
///
/// False with one line logged when it cannot be done: the main file is as it was, and no copy is left.
bool SwapDatabaseFiles(const QString& path, const QString& copyPath);

}  // namespace DatabaseFileSwap
