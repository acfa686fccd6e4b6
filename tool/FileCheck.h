#pragma once

#include <QString>

/// Looks a main file and, unless the path is empty, its thresholds file over without changing either, and
/// prints a line for each thing looked at. True when all was right.
bool CheckFiles(const QString& mainPath, const QString& thresholdsPath);
