#include "tool/formats/AlignmentDiff.h"

#include <QJsonArray>
#include <algorithm>
#include <tuple>

#include "tool/Console.h"
#include "tool/formats/AlignmentCsv.h"
#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentJson.h"

namespace {

using Alignments = std::vector<Alignment>;

auto MatchKey(const Alignment& a) {
  // Times of different offsets may be one moment.
  return std::make_tuple(a.kind, std::cref(a.identifier), std::cref(a.sector), std::cref(a.position),
                         a.time.toSecsSinceEpoch());
}

bool MatchesBefore(const Alignment& one, const Alignment& other) { return MatchKey(one) < MatchKey(other); }

/// Removes from both sides what is equal.
void DropEqual(Alignments* first, Alignments* second) {
  for (auto one = first->begin(); one != first->end();) {
    const auto same = std::find_if(second->begin(), second->end(), [&one](const Alignment& other) {
      return DifferingFields(*one, other).isEmpty();
    });
    if (same == second->end()) {
      ++one;
    } else {
      second->erase(same);
      one = first->erase(one);
    }
  }
}

}  // namespace

AlignmentDiff::AlignmentDiff(std::vector<Alignment> first, std::vector<Alignment> second) {
  std::stable_sort(first.begin(), first.end(), MatchesBefore);
  std::stable_sort(second.begin(), second.end(), MatchesBefore);
  auto one = first.begin();
  auto other = second.begin();
  while (one != first.end() || other != second.end()) {
    const bool isOnFirst = other == second.end() || (one != first.end() && !MatchesBefore(*other, *one));
    const Alignment key = isOnFirst ? *one : *other;
    const auto endOf = [&key](auto begin, auto end) {
      return std::upper_bound(begin, end, key, MatchesBefore);
    };
    const auto oneEnd = endOf(one, first.end());
    const auto otherEnd = endOf(other, second.end());
    Alignments here(one, oneEnd);
    Alignments there(other, otherEnd);
    DropEqual(&here, &there);
    const std::size_t both = std::min(here.size(), there.size());
    for (std::size_t number = 0; number < both; ++number) {
      changed.push_back({here[number], there[number], DifferingFields(here[number], there[number])});
    }
    const auto matched = static_cast<Alignments::difference_type>(both);
    onlyInFirst.insert(onlyInFirst.end(), here.begin() + matched, here.end());
    onlyInSecond.insert(onlyInSecond.end(), there.begin() + matched, there.end());
    one = oneEnd;
    other = otherEnd;
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

QString Line(const char* mark, const Alignment& a) {
  QStringList words{KindName(a.kind) + QLatin1Char(' ') + Console::Printable(a.identifier)};
  if (a.kind == Kind::Site) {
    words << QStringLiteral("sector ") + Console::Printable(a.sector)
          << QStringLiteral("position ") + Console::Printable(a.position);
  }
  words << TimeText(a.time);
  return QLatin1String(mark) + words.join(QStringLiteral(", ")) + QLatin1Char('\n');
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
