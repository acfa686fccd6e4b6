#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>
#include <vector>

#include "tool/formats/AlignmentWriter.h"

/// Alignments as JSON objects, the form that is both imported and exported.
namespace AlignmentJson {

/// Reads an array of alignments. Unless every one is valid in every field, throws a Failure that names each
/// one that is not.
std::vector<Alignment> Read(QIODevice* source, const QString& shownName);
/// The same from a file, or from standard input if its name is "-".
std::vector<Alignment> ReadFile(const QString& path);

enum class Uid { Without, With };

/// The alignment with its verdicts. Throws a Failure for a number that JSON cannot hold.
QJsonObject ToObject(const Alignment& alignment, Uid uid);

}  // namespace AlignmentJson

/// A JSON array of anything, one element after the other.
class JsonArrayText {
 public:
  explicit JsonArrayText(TextSink sink) : sink_(std::move(sink)) {}
  void Add(const QJsonObject& element);
  void End();

 private:
  const TextSink sink_;
  bool isEmpty_ = true;
};

/// One JSON array of alignments.
class AlignmentJsonWriter : public AlignmentWriter {
 public:
  AlignmentJsonWriter(TextSink sink, AlignmentJson::Uid uid) : array_(std::move(sink)), uid_(uid) {}
  void Write(const Reports& reports) override;
  void End() override { array_.End(); }

 private:
  JsonArrayText array_;
  const AlignmentJson::Uid uid_;
};

/// One JSON object per line.
class AlignmentLinesWriter : public AlignmentWriter {
 public:
  AlignmentLinesWriter(TextSink sink, AlignmentJson::Uid uid) : sink_(std::move(sink)), uid_(uid) {}
  void Write(const Reports& reports) override;

 private:
  const TextSink sink_;
  const AlignmentJson::Uid uid_;
};
