#include "tool/formats/AlignmentMatch.h"

#include <QStringList>

#include "tool/Console.h"
#include "tool/formats/AlignmentFields.h"

MatchKey MatchKeyOf(const Alignment& a) {
  // Times of different offsets may be one moment; -1 is a time that cannot be stored.
  return {a.kind, a.identifier, a.sector, a.position, a.time.isValid() ? a.time.toSecsSinceEpoch() : -1};
}

QString ShownMatch(const Alignment& a) {
  QStringList words{ShownSubject(a.kind, a.identifier)};
  if (a.kind == Kind::Site) {
    words << QStringLiteral("sector ") + Console::Printable(a.sector)
          << QStringLiteral("position ") + Console::Printable(a.position);
  }
  words << TimeText(a.time);
  return words.join(QStringLiteral(", "));
}
