#pragma once

#include <QString>
#include <QStringList>

#include "tool/pair/Deadline.h"

/// Makes those of the two files that are missing, and returns their names as they can be shown. Each is in
/// its place complete or not at all. A run that is killed may leave only the thresholds file; the next one
/// then makes the main file.
QStringList CreateMissing(const QString& mainName, const QString& thresholdsName, const Deadline& deadline);

/// Throws a Failure unless the file at that place is a sound thresholds file.
void RequireThresholdsFile(const QString& name, const Deadline& deadline);
