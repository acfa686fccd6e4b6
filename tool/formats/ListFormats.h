#pragma once

#include <QJsonObject>

#include "tool/formats/AlignmentWriter.h"
#include "tool/formats/Csv.h"

/// A site or path and how much there is of it.
struct ListEntry {
  Kind kind = Kind::Site;
  QString identifier;
  qint64 reports = 0;
  /// Invalid where there are no reports.
  QDateTime lastMeasured;
  /// Of the newest measurement of each antenna together.
  Verdict verdict = Verdict::None;
};

ListEntry EntryOf(const Reports& reports);

/// {kind, identifier, reports, lastMeasured, verdict}
QJsonObject ListObject(const ListEntry& entry);
QByteArray ListCsvHeader(const CsvForm& form);
QByteArray ListCsvLine(const ListEntry& entry, const CsvForm& form);
