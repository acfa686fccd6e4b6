#pragma once

#include <QByteArray>
#include <QString>

#include "tool/Alignment.h"

/// The UUID (version 5) of a measurement: the same in every file that the measurement is copied to, whatever
/// the file's version, and another one for every other measurement. Note and thresholds do not count.
///
/// It is taken over the fields that count, in their order, each as a text of so many bytes of UTF-8: the
/// number of bytes, a colon, the text as CSV has it, a comma. A field that the kind does not have is an empty
/// text.
QString AlignmentUid(const Alignment& alignment);

/// The fields that do not count, note and thresholds, as such texts.
QByteArray TextBesideUid(const Alignment& alignment);
