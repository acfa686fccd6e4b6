#include "tool/ReportPrinter.h"

#include <QStringList>

#include "tool/AlignmentFields.h"
#include "tool/Console.h"

namespace {

constexpr int GroupWidth = 21;
constexpr int CellWidth = 26;

QString WithUnit(const QString& text, const Field& field) {
  const QString unit = QString::fromUtf8(field.unit);
  return unit.isEmpty() ? text : text + QLatin1Char(' ') + unit;
}

QString Line(const QString& group, const QStringList& cells) {
  QString line = QStringLiteral("  ") + Console::Padded(group, GroupWidth);
  for (const QString& cell : cells) line += Console::Padded(cell + QStringLiteral("  "), CellWidth);
  while (line.endsWith(QLatin1Char(' '))) line.chop(1);
  return line + QLatin1Char('\n');
}

/// Fields of one object share a line, under the object's name.
QString FieldLines(const Alignment& alignment) {
  QString lines;
  QString group;
  QStringList cells;
  for (const Field& field : FieldsOf(alignment.kind)) {
    const QString name = QLatin1String(field.name);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const QString value = WithUnit(Console::Printable(FieldText(alignment, field)), field);
    const QString itsGroup = dot < 0 ? name : name.left(dot);
    if (itsGroup != group && !cells.isEmpty()) {
      lines += Line(group, cells);
      cells.clear();
    }
    group = itsGroup;
    cells.append(dot < 0 ? value : name.mid(dot + 1) + QLatin1Char(' ') + value);
  }
  return lines + Line(group, cells);
}

QString VerdictLine(const Alignment& alignment) {
  QStringList cells;
  for (const Judgement& angle : Judge(alignment)) {
    const QString deviation = QString::number(static_cast<double>(angle.deviation), 'f', 2);
    cells.append(QStringLiteral("%1 %2%3 °: %4")
                     .arg(QLatin1String(angle.angle), angle.deviation < 0 ? QString() : QStringLiteral("+"),
                          deviation, angle.Verdict()));
  }
  return Line(QStringLiteral("deviation"), cells);
}

QString CsvCell(QString text) {
  if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
      !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r'))) {
    return text;
  }
  text.replace(QLatin1Char('"'), QLatin1String("\"\""));
  return QLatin1Char('"') + text + QLatin1Char('"');
}

QString CsvLine(const QStringList& cells) { return cells.join(QLatin1Char(',')) + QLatin1Char('\n'); }

}  // namespace

namespace ReportPrinter {

QString Table(const Reports& reports) {
  const auto count = static_cast<qint64>(reports.alignments.size());
  QString text =
      QStringLiteral("%1 %2: %3\n")
          .arg(reports.kind == Kind::Site ? QStringLiteral("Site") : QStringLiteral("Path"),
               Console::Printable(reports.identifier), Console::Counted(count, QStringLiteral("report")));
  int index = 0;
  for (const Alignment& alignment : reports.alignments) {
    text += QStringLiteral("\nReport %1 (alignment key %2)\n").arg(index++).arg(alignment.key);
    text += FieldLines(alignment) + VerdictLine(alignment);
  }
  return text;
}

QString Csv(const Reports& reports) {
  QStringList heading{QStringLiteral("index"), QStringLiteral("key"), QStringLiteral("kind")};
  for (const Field& field : FieldsOf(reports.kind)) {
    const QString unit = QString::fromUtf8(field.unit);
    heading.append(QLatin1String(field.name) +
                   (unit.isEmpty() ? QString() : QStringLiteral(" [%1]").arg(unit)));
  }
  QString text = CsvLine(heading);
  int index = 0;
  for (const Alignment& alignment : reports.alignments) {
    QStringList cells{QString::number(index++), QString::number(alignment.key), KindName(alignment.kind)};
    for (const Field& field : FieldsOf(reports.kind)) cells.append(CsvCell(FieldText(alignment, field)));
    text += CsvLine(cells);
  }
  return text;
}

}  // namespace ReportPrinter
