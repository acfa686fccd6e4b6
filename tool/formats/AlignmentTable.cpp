#include "tool/formats/AlignmentTable.h"

#include <QStringList>

#include "tool/Console.h"
#include "tool/formats/AlignmentFields.h"

namespace {

constexpr int groupWidth = 21;
constexpr int cellWidth = 26;

QString WithUnit(const QString& text, const Field& field) {
  const QString unit = QString::fromUtf8(field.unit);
  return unit.isEmpty() ? text : text + QLatin1Char(' ') + unit;
}

QString Line(const QString& group, const QStringList& cells) {
  QString line = QStringLiteral("  ") + Console::Padded(group, groupWidth);
  for (const QString& cell : cells) line += Console::Padded(cell + QStringLiteral("  "), cellWidth);
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
    if (name == QLatin1String("kind")) continue;  // In the heading.
    const auto dot = name.lastIndexOf(QLatin1Char('.'));
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
                          deviation, VerdictWords(angle.verdict)));
  }
  return Line(QStringLiteral("deviation"), cells);
}

QString Heading(const Reports& reports) {
  const auto count = static_cast<qint64>(reports.alignments.size());
  return QStringLiteral("%1 %2: %3\n")
      .arg(reports.kind == Kind::Site ? QStringLiteral("Site") : QStringLiteral("Path"),
           Console::Printable(reports.identifier), Console::Counted(count, QStringLiteral("report")));
}

}  // namespace

void AlignmentTableWriter::Write(const Reports& reports) {
  sink_(((isFirst_ ? QString() : QStringLiteral("\n")) + Heading(reports)).toUtf8());
  isFirst_ = false;
  for (const Alignment& alignment : reports.alignments) {
    const QString title =
        QStringLiteral("\nReport %1 (alignment key %2)\n").arg(alignment.index).arg(alignment.key);
    sink_((title + FieldLines(alignment) + VerdictLine(alignment)).toUtf8());
  }
}
