#include "tool/formats/AlignmentCsv.h"

#include "tool/formats/AlignmentUid.h"

AlignmentColumns::AlignmentColumns(bool forPeople, std::optional<Kind> kind)
    : forPeople_(forPeople), fields_(kind ? FieldsOf(*kind) : AllFields()) {}

AlignmentColumns AlignmentColumns::OfReport(std::optional<Kind> kind) { return {true, kind}; }

AlignmentColumns AlignmentColumns::OfExport() { return {false, std::nullopt}; }

void AlignmentColumns::AddHeader(CsvLine* line) const {
  if (forPeople_) line->AddValue(QStringLiteral("index"));
  line->AddValue(QStringLiteral("key"));
  for (const Field& field : fields_) {
    const QString unit = QString::fromUtf8(field.unit);
    const bool showsUnit = forPeople_ && !unit.isEmpty();
    line->AddValue(QLatin1String(field.name) + (showsUnit ? QStringLiteral(" [%1]").arg(unit) : QString()));
  }
  for (const char* angle : {"azimuth", "tilt", "roll"}) {
    line->AddValue(QStringLiteral("deviation.") + QLatin1String(angle));
  }
  line->AddValue(QStringLiteral("verdict"));
  if (!forPeople_) line->AddValue(QStringLiteral("uid"));
}

void AlignmentColumns::AddCells(const Alignment& alignment, CsvLine* line) const {
  if (forPeople_) line->AddValue(QString::number(alignment.index));
  line->AddValue(QString::number(alignment.key));
  for (const Field& field : fields_) {
    const QString text = field.IsOf(alignment.kind) ? FieldText(alignment, field) : QString();
    if (field.IsText()) {
      line->AddText(text);
    } else {
      line->AddValue(text);
    }
  }
  line->AddValue(Decimal(alignment.azimuthDeviation));
  line->AddValue(Decimal(alignment.tiltDeviation));
  line->AddValue(alignment.kind == Kind::Site ? Decimal(alignment.rollDeviation) : QString());
  line->AddValue(VerdictName(VerdictOf(alignment)));
  if (!forPeople_) line->AddValue(AlignmentUid(alignment));
}

AlignmentCsvWriter::AlignmentCsvWriter(TextSink sink, const CsvForm& form, const AlignmentColumns& columns)
    : sink_(std::move(sink)), form_(form), columns_(columns) {
  CsvLine header(form_);
  columns_.AddHeader(&header);
  sink_(CsvStart(form_) + header.Bytes());
}

void AlignmentCsvWriter::Write(const Reports& reports) {
  for (const Alignment& alignment : reports.alignments) {
    CsvLine line(form_);
    columns_.AddCells(alignment, &line);
    sink_(line.Bytes());
  }
}
