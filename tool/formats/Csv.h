#pragma once

#include <QByteArray>
#include <QString>

/// What may be chosen about CSV.
struct CsvForm {
  QChar separator = QLatin1Char(',');
  /// Some spreadsheets take a file for UTF-8 only if it begins with this.
  bool byteOrderMark = false;
  /// Texts that a spreadsheet would take for formulas get an apostrophe in front.
  bool guardsFormulas = false;
};

/// One line of CSV (RFC 4180), cell by cell.
class CsvLine {
 public:
  explicit CsvLine(const CsvForm& form) : form_(form) {}

  /// A text that somebody typed in.
  void AddText(const QString& text);
  /// A number, a name of this program's own, or nothing.
  void AddValue(const QString& value);
  /// The line, with its line end.
  QByteArray Bytes() const;

 private:
  const CsvForm form_;
  QString line_;
  bool isEmpty_ = true;
};

/// What a file of CSV begins with.
QByteArray CsvStart(const CsvForm& form);
