#pragma once

#include <QString>

/// Puts a finished copy in the place of a database file, so that either the whole old or the whole new file
/// stands at the path whenever the power fails.
namespace DatabaseFileSwap {

/// Whether both paths lead to one file, or would once it exists.
bool IsSameFile(const QString& path, const QString& other);

/// Replaces the file at `path`, which no connection of this program holds any more, with the one at
/// `copyPath`. The copy gets the permissions of the file, is synced first and is gone afterwards. If it lies
/// on another file system, its content goes through a synced file beside the main one, with a name that no
/// file had.
///
/// False with one line logged if that cannot be done: the main file is as it was, and no copy is left. The
/// same holds if the file's write-ahead log still has pages, since the new file would be read through them.
bool SwapDatabaseFiles(const QString& path, const QString& copyPath);

}  // namespace DatabaseFileSwap
