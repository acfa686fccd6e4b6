#pragma once

#include <QByteArray>
#include <QString>

/// To the system, file names are bytes. They travel through the program as texts in which each byte that is
/// not UTF-8 is half a surrogate pair (U+DC80 to U+DCFF), so that every name can be given back byte by byte.
namespace FileName {

QString FromBytes(const QByteArray& bytes);
QByteArray ToBytes(const QString& name);
/// As it can be shown on a line: control characters escaped, what is not UTF-8 replaced.
QString Shown(const QString& name);
QString Shown(const QByteArray& bytes);
/// What a text of the system (an error message) says.
QString SystemError(int number);

}  // namespace FileName
