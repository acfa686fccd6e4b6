#include "tool/formats/AlignmentUid.h"

#include <QUuid>

#include "tool/formats/AlignmentFields.h"

namespace {

QByteArray Text(const Alignment& alignment, int inUid) {
  QByteArray text;
  for (const Field& field : AllFields()) {
    if ((field.uses & Field::InUid) != inUid) continue;
    const QByteArray value = field.IsOf(alignment.kind) ? FieldText(alignment, field).toUtf8() : QByteArray();
    text += QByteArray::number(value.size()) + ':' + value + ',';
  }
  return text;
}

}  // namespace

QString AlignmentUid(const Alignment& alignment) {
  // This namespace is a part of every uid ever given out.
  static const QUuid Namespace(QStringLiteral("786e41a7-ca48-4be0-82c1-ea7f3e0135e1"));
  return QUuid::createUuidV5(Namespace, Text(alignment, Field::InUid)).toString(QUuid::WithoutBraces);
}

QByteArray TextBesideUid(const Alignment& alignment) { return Text(alignment, 0); }
