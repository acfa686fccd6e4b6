#include "tool/formats/AlignmentJson.h"

#include <QJsonArray>
#include <QJsonDocument>

#include "tool/Console.h"
#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentUid.h"

namespace {

QJsonObject ToMembers(const Alignment& alignment, const FieldGroup& group) {
  QJsonObject object;
  for (const FieldGroup& member : group.members) {
    if (member.field != nullptr) {
      object.insert(member.name, FieldToJson(alignment, *member.field));
    } else {
      object.insert(member.name, ToMembers(alignment, member));
    }
  }
  return object;
}

QJsonObject JudgementObject(const Alignment& alignment) {
  QJsonObject angles;
  for (const Judgement& angle : Judge(alignment)) {
    angles.insert(QLatin1String(angle.angle),
                  QJsonObject{{QStringLiteral("deviation"), NumberToJson(angle.deviation)},
                              {QStringLiteral("threshold"), NumberToJson(angle.threshold)},
                              {QStringLiteral("verdict"), VerdictName(angle.verdict)}});
  }
  return angles;
}

}  // namespace

QJsonObject AlignmentJson::ToObject(const Alignment& alignment, Uid uid) {
  const QString notFinite = NotFinite(alignment);
  if (!notFinite.isEmpty()) {
    throw Failure(QStringLiteral("%1: %2 is no number that JSON can hold")
                      .arg(ShownSubject(alignment.kind, alignment.identifier), notFinite));
  }
  QJsonObject object = ToMembers(alignment, FieldTreeOf(alignment.kind));
  object.insert(QStringLiteral("judgement"), JudgementObject(alignment));
  object.insert(QStringLiteral("verdict"), VerdictName(VerdictOf(alignment)));
  if (uid == Uid::With) object.insert(QStringLiteral("uid"), AlignmentUid(alignment));
  return object;
}

void JsonArrayText::Add(const QJsonObject& element) {
  QByteArray text = QJsonDocument(element).toJson(QJsonDocument::Indented);
  text.chop(1);
  // Texts hold no line feeds in JSON, so each is one between members.
  sink_((isEmpty_ ? "[\n    " : ",\n    ") + text.replace("\n", "\n    "));
  isEmpty_ = false;
}

void JsonArrayText::End() { sink_(isEmpty_ ? "[\n]\n" : "\n]\n"); }

void AlignmentJsonWriter::Write(const Reports& reports) {
  for (const Alignment& alignment : reports.alignments) array_.Add(AlignmentJson::ToObject(alignment, uid_));
}

void AlignmentLinesWriter::Write(const Reports& reports) {
  for (const Alignment& alignment : reports.alignments) {
    sink_(QJsonDocument(AlignmentJson::ToObject(alignment, uid_)).toJson(QJsonDocument::Compact) + '\n');
  }
}
