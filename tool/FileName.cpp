#include "tool/FileName.h"

#include <cstring>

#include "tool/Console.h"

namespace {

constexpr ushort firstEscape = 0xDC80;
constexpr ushort lastEscape = 0xDCFF;

bool IsEscape(const QString& name, int at) {
  const ushort unit = name.at(at).unicode();
  return unit >= firstEscape && unit <= lastEscape && (at == 0 || !name.at(at - 1).isHighSurrogate());
}

int SequenceLength(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0x80) return 1;
  if (byte < 0xE0) return 2;
  return byte < 0xF0 ? 3 : 4;
}

}  // namespace

namespace FileName {

QString FromBytes(const QByteArray& bytes) {
  QString name = QString::fromUtf8(bytes);
  if (name.toUtf8() == bytes) return name;
  name.clear();
  for (int at = 0; at < bytes.size();) {
    const QByteArray piece = bytes.mid(at, SequenceLength(bytes.at(at)));
    const QString text = QString::fromUtf8(piece);
    if (text.toUtf8() == piece) {
      name += text;
      at += static_cast<int>(piece.size());
    } else {
      name += QChar(ushort(0xDC00 + static_cast<unsigned char>(bytes.at(at++))));
    }
  }
  return name;
}

QByteArray ToBytes(const QString& name) {
  QByteArray bytes;
  int from = 0;
  for (int at = 0; at < name.size(); ++at) {
    if (!IsEscape(name, at)) continue;
    bytes += name.mid(from, at - from).toUtf8();
    bytes += static_cast<char>(name.at(at).unicode() & 0xFF);
    from = at + 1;
  }
  return bytes + name.mid(from).toUtf8();
}

QString Shown(const QString& name) {
  QString text = name;
  for (int at = 0; at < text.size(); ++at) {
    if (IsEscape(name, at)) text[at] = QChar(QChar::ReplacementCharacter);
  }
  return Console::Printable(text);
}

QString Shown(const QByteArray& bytes) { return Shown(FromBytes(bytes)); }

QString SystemError(int number) { return QString::fromLocal8Bit(std::strerror(number)); }

}  // namespace FileName
