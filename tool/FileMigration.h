#pragma once

#include <QString>

/// Brings the main file at `path` to the current version and prints each step with its duration. Either the
/// file ends at the current version or it stays as it was. With `backup` the file is first copied there.
void MigrateFile(const QString& path, const QString& backup);
