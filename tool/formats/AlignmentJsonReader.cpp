#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QJsonObject>
#include <QSet>
#include <QStringList>
#include <cerrno>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/formats/JsonElements.h"

namespace {

/// What is wrong in a file, one line each.
class Problems {
 public:
  explicit Problems(QString file) : file_(std::move(file)) {}

  void StartEntry() { ++entry_; }
  void Add(const QString& field, const QString& what) {
    // A file that is wrong throughout must not fill the memory with complaints.
    constexpr int kept = 1000;
    if (lines_.size() == kept) {
      ++notKept_;
      return;
    }
    lines_.append(QStringLiteral("%1: entry %2: %3%4%5")
                      .arg(file_, QString::number(entry_), Console::Printable(field),
                           field.isEmpty() ? QString() : QStringLiteral(" "), what));
  }
  bool AreNone() const { return lines_.isEmpty(); }
  void ThrowIfAny() const {
    if (AreNone()) return;
    QString text = lines_.join(QStringLiteral("\ntarnbeam-db: "));
    if (notKept_ > 0) text += QStringLiteral("\nand %1 more").arg(notKept_);
    throw Failure(text + QStringLiteral("\nnothing was saved"));
  }

 private:
  const QString file_;
  int entry_ = 0;
  QStringList lines_;
  int notKept_ = 0;
};

/// Members that `report` and `export` add to what is stored.
bool IsDerived(const QString& name) {
  return name == QLatin1String("judgement") || name == QLatin1String("verdict") ||
         name == QLatin1String("uid");
}

class EntryReader {
 public:
  explicit EntryReader(Problems* problems) : problems_(problems) {}

  Alignment Read(const QJsonObject& entry) {
    const QString kind = entry.value(QLatin1String("kind")).toString();
    alignment_.kind = kind == KindName(Kind::Path) ? Kind::Path : Kind::Site;
    if (kind != KindName(alignment_.kind)) {
      problems_->Add(QStringLiteral("kind"), entry.contains(QLatin1String("kind"))
                                                 ? QStringLiteral("must be site or path")
                                                 : QStringLiteral("is missing"));
      return alignment_;
    }
    ReadMembers(entry, FieldTreeOf(alignment_.kind), QString());
    return alignment_;
  }

 private:
  void ReadMembers(const QJsonObject& object, const FieldGroup& group, const QString& prefix) {
    QSet<QString> known;
    for (const FieldGroup& member : group.members) {
      known.insert(member.name);
      ReadMember(object.value(member.name), member, prefix + member.name);
    }
    for (auto item = object.begin(); item != object.end(); ++item) {
      const QString name = item.key();
      if (known.contains(name) || (prefix.isEmpty() && IsDerived(name))) continue;
      NameUnknown(item.value(), prefix + name);
    }
  }

  /// Of an object, what is in it.
  void NameUnknown(const QJsonValue& value, const QString& name) {
    const QJsonObject object = value.toObject();
    for (auto item = object.begin(); item != object.end(); ++item) {
      NameUnknown(item.value(), name + QLatin1Char('.') + item.key());
    }
    if (!object.isEmpty()) return;
    problems_->Add(name, QStringLiteral("is not a field of a %1 alignment").arg(KindName(alignment_.kind)));
  }

  void ReadMember(const QJsonValue& value, const FieldGroup& member, const QString& name) {
    if (member.field == nullptr) {
      if (value.isObject() || value.isUndefined()) {
        ReadMembers(value.toObject(), member, name + QLatin1Char('.'));
      } else {
        problems_->Add(name, QStringLiteral("must be an object"));
      }
    } else if (value.isUndefined()) {
      problems_->Add(name, QStringLiteral("is missing"));
    } else if (const QString wrong = FieldFromJson(value, *member.field, &alignment_); !wrong.isEmpty()) {
      problems_->Add(name, wrong);
    }
  }

  Problems* const problems_;
  Alignment alignment_;
};

}  // namespace

namespace AlignmentJson {

std::vector<Alignment> Read(QIODevice* source, const QString& shownName) {
  JsonElements elements(source, shownName);
  Problems problems(shownName);
  std::vector<Alignment> alignments;
  QJsonValue entry;
  while (elements.Next(&entry)) {
    problems.StartEntry();
    for (const JsonElements::Fault& fault : elements.Faults()) problems.Add(fault.member, fault.what);
    if (!entry.isObject()) {
      problems.Add(QString(), QStringLiteral("must be an object"));
    } else if (Alignment alignment = EntryReader(&problems).Read(entry.toObject()); problems.AreNone()) {
      alignments.push_back(std::move(alignment));
    }
  }
  problems.ThrowIfAny();
  return alignments;
}

std::vector<Alignment> ReadFile(const QString& path) {
  QFile file;
  if (path == QLatin1String("-")) {
    if (!file.open(STDIN_FILENO, QIODevice::ReadOnly)) {
      throw Failure(QStringLiteral("standard input: ") + file.errorString());
    }
    return Read(&file, QStringLiteral("standard input"));
  }
  // Qt would take some names for something other than files.
  const int descriptor = open(FileName::ToBytes(path).constData(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0 || !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    throw Failure(FileName::Shown(path) + QStringLiteral(": ") + FileName::SystemError(errno));
  }
  return Read(&file, FileName::Shown(path));
}

}  // namespace AlignmentJson
