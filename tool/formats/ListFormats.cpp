#include "tool/formats/ListFormats.h"

#include "tool/formats/AlignmentFields.h"

ListEntry EntryOf(const Reports& reports) {
  ListEntry entry;
  entry.kind = reports.kind;
  entry.identifier = reports.identifier;
  entry.reports = static_cast<qint64>(reports.alignments.size());
  for (const Alignment& alignment : LatestOfEach(reports.alignments)) {
    const bool isLater = !entry.lastMeasured.isValid() || entry.lastMeasured < alignment.time;
    if (isLater) entry.lastMeasured = alignment.time;
    entry.verdict = Together(entry.verdict, VerdictOf(alignment));
  }
  return entry;
}

QJsonObject ListObject(const ListEntry& entry) {
  return {{QStringLiteral("kind"), KindName(entry.kind)},
          {QStringLiteral("identifier"), entry.identifier},
          {QStringLiteral("reports"), entry.reports},
          {QStringLiteral("lastMeasured"),
           entry.lastMeasured.isValid() ? QJsonValue(TimeText(entry.lastMeasured)) : QJsonValue::Null},
          {QStringLiteral("verdict"), VerdictName(entry.verdict)}};
}

QByteArray ListCsvHeader(const CsvForm& form) {
  CsvLine line(form);
  for (const char* name : {"kind", "identifier", "reports", "lastMeasured", "verdict"}) {
    line.AddValue(QLatin1String(name));
  }
  return CsvStart(form) + line.Bytes();
}

QByteArray ListCsvLine(const ListEntry& entry, const CsvForm& form) {
  CsvLine line(form);
  line.AddValue(KindName(entry.kind));
  line.AddText(entry.identifier);
  line.AddValue(QString::number(entry.reports));
  line.AddValue(TimeText(entry.lastMeasured));
  line.AddValue(VerdictName(entry.verdict));
  return line.Bytes();
}
