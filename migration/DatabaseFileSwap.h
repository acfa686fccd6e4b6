#pragma once

#include <QString>

/// Puts a finished copy in the place of a database file, so that either the whole old or the whole new file
/// stands at the path whenever the power goes.
namespace DatabaseFileSwap {

/// Whether both paths lead to one file, or would once it exists.
bool IsSameFile(const QString& path, const QString& other);

/// Replaces the file at `path`, which no connection of this program holds any more, by the one at `copyPath`.
/// The copy gets the permissions of the file, is synced first and gone afterwards. Where it lies on another
/// file system, its content goes through a synced file beside the main one, with a name that no file had.
///
/// False with one line logged when it cannot be done: the main file is as it was, and no copy is left. That
/// is so too where the file's write-ahead log holds pages yet: the new file would be read through them.
bool SwapDatabaseFiles(const QString& path, const QString& copyPath);

}  // namespace DatabaseFileSwap
