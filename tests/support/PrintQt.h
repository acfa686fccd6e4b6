#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <ostream>

// How GoogleTest writes Qt's texts in failure messages.
inline void PrintTo(const QByteArray& text, std::ostream* out) { *out << '"' << text.constData() << '"'; }
inline void PrintTo(const QString& text, std::ostream* out) { PrintTo(text.toUtf8(), out); }
inline void PrintTo(const QStringList& lines, std::ostream* out) {
  *out << lines.size() << " lines:";
  for (const QString& line : lines) *out << "\n    " << line.toStdString();
}
