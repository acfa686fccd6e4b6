#include "tool/formats/AlignmentUid.h"

#include <QUuid>

#include "tool/formats/AlignmentFields.h"

QString AlignmentUid(const Alignment& alignment) {
  // This namespace is a part of every uid ever given out.
  static const QUuid Namespace(QStringLiteral("786e41a7-ca48-4be0-82c1-ea7f3e0135e1"));
  QByteArray name;
  for (const Field& field : AllFields()) {
    if ((field.uses & Field::InUid) == 0) continue;
    const QByteArray value = field.IsOf(alignment.kind) ? FieldText(alignment, field).toUtf8() : QByteArray();
    name += QByteArray::number(value.size()) + ':' + value + ',';
  }
  return QUuid::createUuidV5(Namespace, name).toString(QUuid::WithoutBraces);
}
