#include "tool/formats/Csv.h"

namespace {

bool LooksLikeFormula(const QString& text) {
  return !text.isEmpty() && QStringLiteral("=+-@\t\r").contains(text.at(0));
}

}  // namespace

void CsvLine::AddText(const QString& text) {
  AddValue(form_.guardsFormulas && LooksLikeFormula(text) ? QLatin1Char('\'') + text : text);
}

void CsvLine::AddValue(const QString& value) {
  if (!isEmpty_) line_ += form_.separator;
  isEmpty_ = false;
  const bool quoted = value.contains(form_.separator) || value.contains(QLatin1Char('"')) ||
                      value.contains(QLatin1Char('\n')) || value.contains(QLatin1Char('\r'));
  if (!quoted) {
    line_ += value;
    return;
  }
  QString doubled = value;
  line_ += QLatin1Char('"') + doubled.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}

QByteArray CsvLine::Bytes() const { return line_.toUtf8() + "\r\n"; }

QByteArray CsvStart(const CsvForm& form) {
  return form.byteOrderMark ? QByteArray("\xEF\xBB\xBF") : QByteArray();
}
