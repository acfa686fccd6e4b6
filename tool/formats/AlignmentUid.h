#pragma once

#include <QByteArray>
#include <QString>

#include "tool/Alignment.h"

/// The UUID (version 5) of a measurement: the same in every file that the measurement is copied to, whatever
/// the file's version, and a different one for every other measurement. Note and thresholds do not count.
///
/// It is computed over the fields that count, in order. Each is written as its number of UTF-8 bytes, a
/// colon, its text as in CSV, and a comma. A field that the kind does not have is an empty text.
QString AlignmentUid(const Alignment& alignment);

/// The fields that do not count (note and thresholds), written in the same way.
QByteArray TextBesideUid(const Alignment& alignment);
