#include "tool/formats/AlignmentDiff.h"

#include <QHash>
#include <QJsonArray>
#include <algorithm>

#include "tool/Console.h"
#include "tool/formats/AlignmentCsv.h"
#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentJson.h"
#include "tool/formats/AlignmentMatch.h"
#include "tool/formats/AlignmentUid.h"

namespace {

using Alignments = std::vector<Alignment>;

/// An alignment with its key, which is worked out once.
struct Matched {
  MatchKey key;
  const Alignment* alignment;
};

bool MatchesBefore(const Matched& one, const Matched& other) { return one.key < other.key; }

std::vector<Matched> Sorted(const Alignments& alignments) {
  std::vector<Matched> sorted;
  sorted.reserve(alignments.size());
  for (const Alignment& alignment : alignments) sorted.push_back({MatchKeyOf(alignment), &alignment});
  std::stable_sort(sorted.begin(), sorted.end(), MatchesBefore);
  return sorted;
}

/// The alignments of one measurement on one side.
using Group = std::vector<const Alignment*>;

/// Takes the first group out of what is left, if it is of that key.
Group TakeGroup(const MatchKey& key, std::vector<Matched>::const_iterator* left,
                std::vector<Matched>::const_iterator end) {
  Group group;
  for (; *left != end && (*left)->key == key; ++*left) group.push_back((*left)->alignment);
  return group;
}

QByteArray Content(const Alignment& alignment) {
  return AlignmentUid(alignment).toLatin1() + TextBesideUid(alignment);
}

using Counts = QHash<QByteArray, int>;

Counts CountsOf(const Group& group) {
  Counts counts;
  for (const Alignment* alignment : group) ++counts[Content(*alignment)];
  return counts;
}

/// Removes the first ones of each content, as many as `counts` says.
void Drop(Counts counts, Group* group) {
  const auto goes = [&counts](const Alignment* alignment) { return counts[Content(*alignment)]-- > 0; };
  group->erase(std::remove_if(group->begin(), group->end(), goes), group->end());
}

/// Removes from both sides what is equal, as often as both have it.
void DropEqual(Group* first, Group* second) {
  // Nearly always there is one on each side.
  if (first->size() == 1 && second->size() == 1) {
    if (!DifferingFields(*first->front(), *second->front()).isEmpty()) return;
    first->clear();
    second->clear();
    return;
  }
  const Counts inSecond = CountsOf(*second);
  Counts both = CountsOf(*first);
  for (auto count = both.begin(); count != both.end(); ++count) {
    *count = std::min(*count, inSecond.value(count.key()));
  }
  Drop(both, first);
  Drop(both, second);
}

void Append(const Group& group, std::size_t from, Alignments* to) {
  for (std::size_t number = from; number < group.size(); ++number) to->push_back(*group[number]);
}

}  // namespace

AlignmentDiff::AlignmentDiff(const std::vector<Alignment>& first, const std::vector<Alignment>& second) {
  const std::vector<Matched> ones = Sorted(first);
  const std::vector<Matched> others = Sorted(second);
  auto one = ones.begin();
  auto other = others.begin();
  while (one != ones.end() || other != others.end()) {
    const bool isOnFirst = other == others.end() || (one != ones.end() && !MatchesBefore(*other, *one));
    const MatchKey& key = isOnFirst ? one->key : other->key;
    Group here = TakeGroup(key, &one, ones.end());
    Group there = TakeGroup(key, &other, others.end());
    if (!here.empty() && !there.empty()) DropEqual(&here, &there);
    const std::size_t both = std::min(here.size(), there.size());
    for (std::size_t number = 0; number < both; ++number) {
      changed.push_back({*here[number], *there[number], DifferingFields(*here[number], *there[number])});
    }
    Append(here, both, &onlyInFirst);
    Append(there, both, &onlyInSecond);
  }
}

namespace {

QJsonObject ToObject(const Alignment& alignment) {
  return AlignmentJson::ToObject(alignment, AlignmentJson::Uid::With);
}

void WriteArray(const Alignments& alignments, const TextSink& sink) {
  JsonArrayText array(sink);
  for (const Alignment& alignment : alignments) array.Add(ToObject(alignment));
  array.End();
}

QString Line(const char* mark, const Alignment& alignment) {
  return QLatin1String(mark) + ShownMatch(alignment) + QLatin1Char('\n');
}

QString FieldLines(const ChangedAlignment& changed) {
  QString lines;
  for (const Field& field : FieldsOf(changed.first.kind)) {
    if (!changed.fields.contains(QLatin1String(field.name))) continue;
    lines += QStringLiteral("    %1: %2 -> %3\n")
                 .arg(QLatin1String(field.name), Console::Printable(FieldText(changed.first, field)),
                      Console::Printable(FieldText(changed.second, field)));
  }
  return lines;
}

}  // namespace

void WriteDiffJson(const AlignmentDiff& diff, const TextSink& sink) {
  sink("{\"onlyInFirst\": ");
  WriteArray(diff.onlyInFirst, sink);
  sink(",\"onlyInSecond\": ");
  WriteArray(diff.onlyInSecond, sink);
  sink(",\"changed\": ");
  JsonArrayText array(sink);
  for (const ChangedAlignment& changed : diff.changed) {
    array.Add({{QStringLiteral("first"), ToObject(changed.first)},
               {QStringLiteral("second"), ToObject(changed.second)},
               {QStringLiteral("fields"), QJsonArray::fromStringList(changed.fields)}});
  }
  array.End();
  sink("}\n");
}

void WriteDiffCsv(const AlignmentDiff& diff, const CsvForm& form, const TextSink& sink) {
  const AlignmentColumns columns = AlignmentColumns::OfExport();
  const auto write = [&](const char* side, const Alignment& alignment) {
    CsvLine line(form);
    line.AddValue(QLatin1String(side));
    columns.AddCells(alignment, &line);
    sink(line.Bytes());
  };
  CsvLine header(form);
  header.AddValue(QStringLiteral("side"));
  columns.AddHeader(&header);
  sink(CsvStart(form) + header.Bytes());
  for (const Alignment& alignment : diff.onlyInFirst) write("first", alignment);
  for (const Alignment& alignment : diff.onlyInSecond) write("second", alignment);
  for (const ChangedAlignment& changed : diff.changed) {
    write("changed.first", changed.first);
    write("changed.second", changed.second);
  }
}

void WriteDiffTable(const AlignmentDiff& diff, const TextSink& sink) {
  for (const Alignment& alignment : diff.onlyInFirst) sink(Line("- ", alignment).toUtf8());
  for (const Alignment& alignment : diff.onlyInSecond) sink(Line("+ ", alignment).toUtf8());
  for (const ChangedAlignment& changed : diff.changed) {
    sink((Line("~ ", changed.first) + FieldLines(changed)).toUtf8());
  }
}
