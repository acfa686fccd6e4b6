#include "tool/AlignmentJson.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <cmath>

#include "tool/AlignmentFields.h"
#include "tool/Console.h"

namespace {

/// What is wrong in a file, one line each.
class Problems {
 public:
  explicit Problems(QString file) : file_(std::move(file)) {}

  void StartEntry() { ++entry_; }
  void Add(const QString& field, const QString& what) {
    lines_.append(QStringLiteral("%1: entry %2: %3%4%5")
                      .arg(file_, QString::number(entry_), field,
                           field.isEmpty() ? QString() : QStringLiteral(" "), what));
  }
  void ThrowIfAny() const {
    constexpr int Shown = 20;
    if (lines_.isEmpty()) return;
    QString text = lines_.mid(0, Shown).join(QStringLiteral("\ntarnbeam-db: "));
    if (lines_.size() > Shown) text += QStringLiteral("\nand %1 more").arg(lines_.size() - Shown);
    throw Failure(text + QStringLiteral("\nnothing was saved"));
  }

 private:
  const QString file_;
  int entry_ = 0;
  QStringList lines_;
};

/// Names of all values within an object, nested ones with dots.
QStringList LeafNames(const QJsonObject& object, const QString& prefix = QString()) {
  QStringList names;
  for (auto item = object.begin(); item != object.end(); ++item) {
    const QString name = prefix + item.key();
    if (item.value().isObject()) {
      names += LeafNames(item.value().toObject(), name + QLatin1Char('.'));
    } else {
      names.append(name);
    }
  }
  return names;
}

/// The value of that dotted name; undefined if there is none. `*notAnObject` is the name of what stands where
/// an object has to be.
QJsonValue Find(const QJsonObject& object, const QString& name, QString* notAnObject) {
  QJsonValue value = object;
  QStringList walked;
  for (const QString& part : name.split(QLatin1Char('.'))) {
    if (!value.isObject()) {
      *notAnObject = walked.join(QLatin1Char('.'));
      return QJsonValue::Undefined;
    }
    value = value.toObject().value(part);
    walked.append(part);
    if (value.isUndefined()) break;
  }
  return value;
}

class EntryReader {
 public:
  EntryReader(const QJsonObject& entry, Problems* problems) : entry_(entry), problems_(problems) {}

  Alignment Read() {
    Alignment alignment;
    const QString kind = entry_.value(QLatin1String("kind")).toString();
    if (kind != QLatin1String("site") && kind != QLatin1String("path")) {
      problems_->Add(QStringLiteral("kind"), entry_.contains(QLatin1String("kind"))
                                                 ? QStringLiteral("must be site or path")
                                                 : QStringLiteral("is missing"));
      return alignment;
    }
    alignment.kind = kind == QLatin1String("site") ? Kind::Site : Kind::Path;
    QStringList unknown = LeafNames(entry_);
    unknown.removeOne(QStringLiteral("kind"));
    for (const Field& field : FieldsOf(alignment.kind)) {
      const QString name = QLatin1String(field.name);
      unknown.removeOne(name);
      ReadField(field, name, &alignment);
    }
    for (const QString& name : unknown) {
      if (!complained_.contains(name)) {
        problems_->Add(name, QStringLiteral("is not a field of a %1 alignment").arg(kind));
      }
    }
    return alignment;
  }

 private:
  void ReadField(const Field& field, const QString& name, Alignment* alignment) {
    QString notAnObject;
    const QJsonValue value = Find(entry_, name, &notAnObject);
    if (!notAnObject.isEmpty()) {
      Complain(notAnObject, QStringLiteral("must be an object"));
    } else if (value.isUndefined()) {
      Complain(name, QStringLiteral("is missing"));
    } else if (const QString wrong = FieldFromJson(value, field, alignment); !wrong.isEmpty()) {
      Complain(name, wrong);
    }
  }

  // Something that is no object is met once for each field it should hold.
  void Complain(const QString& name, const QString& what) {
    if (complained_.contains(name)) return;
    complained_.append(name);
    problems_->Add(name, what);
  }

  const QJsonObject entry_;
  Problems* const problems_;
  QStringList complained_;
};

QByteArray ReadBytes(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
  }
  QByteArray bytes = file.readAll();
  if (file.error() != QFileDevice::NoError) {
    throw Failure(QStringLiteral("%1: %2").arg(path, file.errorString()));
  }
  return bytes;
}

void Insert(QJsonObject* object, const QStringList& name, const QJsonValue& value) {
  if (name.size() == 1) {
    object->insert(name.first(), value);
    return;
  }
  QJsonObject inner = object->value(name.first()).toObject();
  Insert(&inner, name.mid(1), value);
  object->insert(name.first(), inner);
}

QJsonObject ToObject(const Alignment& alignment) {
  QJsonObject object{{QStringLiteral("kind"), KindName(alignment.kind)}};
  for (const Field& field : FieldsOf(alignment.kind)) {
    const QString name = QLatin1String(field.name);
    const QJsonValue value = FieldToJson(alignment, field);
    if (value.isDouble() && !std::isfinite(value.toDouble())) {
      throw Failure(QStringLiteral("%1 %2: %3 is no number that JSON can hold")
                        .arg(KindName(alignment.kind), Console::Printable(alignment.identifier), name));
    }
    Insert(&object, name.split(QLatin1Char('.')), value);
  }
  return object;
}

}  // namespace

namespace AlignmentJson {

std::vector<Alignment> ReadFile(const QString& path) {
  const QByteArray bytes = ReadBytes(path);
  QJsonParseError error{};
  const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
  if (error.error != QJsonParseError::NoError) {
    const int line = bytes.left(error.offset).count('\n') + 1;
    throw Failure(QStringLiteral("%1: line %2: %3").arg(path, QString::number(line), error.errorString()));
  }
  if (!document.isArray()) throw Failure(QStringLiteral("%1: must be an array of alignments").arg(path));
  Problems problems(path);
  std::vector<Alignment> alignments;
  const QJsonArray entries = document.array();
  for (const QJsonValue& entry : entries) {
    problems.StartEntry();
    if (entry.isObject()) {
      alignments.push_back(EntryReader(entry.toObject(), &problems).Read());
    } else {
      problems.Add(QString(), QStringLiteral("must be an object"));
    }
  }
  problems.ThrowIfAny();
  return alignments;
}

QByteArray Write(const std::vector<Alignment>& alignments) {
  QJsonArray entries;
  for (const Alignment& alignment : alignments) entries.append(ToObject(alignment));
  return QJsonDocument(entries).toJson(QJsonDocument::Indented);
}

}  // namespace AlignmentJson
