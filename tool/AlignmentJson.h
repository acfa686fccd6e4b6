#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

#include "tool/Alignment.h"

/// Alignments as a JSON array with one object each, the form that is both imported and exported.
namespace AlignmentJson {

/// Reads a file. Unless every entry is right in every field, throws a Failure that names each that is not.
std::vector<Alignment> ReadFile(const QString& path);

/// The same form. Throws a Failure for a number that JSON cannot hold.
QByteArray Write(const std::vector<Alignment>& alignments);

}  // namespace AlignmentJson
