#pragma once

#include <QJsonValue>
#include <QString>
#include <limits>
#include <variant>
#include <vector>

#include "tool/Alignment.h"

/// One value of an alignment: its name in JSON, where dots stand for nested objects, its unit and its range.
/// Reading, writing and printing all go by the table of these.
struct Field {
  using Member =
      std::variant<QString Alignment::*, QDateTime Alignment::*, float Alignment::*, double Alignment::*,
                   bool Alignment::*, int Alignment::*, HeightSource Alignment::*>;

  enum Kinds { Both, SiteOnly, PathOnly };

  const char* name;
  Kinds kinds;
  Member member;
  const char* unit = "";
  double lowest = std::numeric_limits<int>::lowest();
  double highest = std::numeric_limits<int>::max();
};

/// The fields that an alignment of the kind has, in the order in which they are shown.
const std::vector<Field>& FieldsOf(Kind kind);

/// The value as text without its unit. Numbers have the fewest digits that read back as the same number.
QString FieldText(const Alignment& alignment, const Field& field);
QJsonValue FieldToJson(const Alignment& alignment, const Field& field);
/// Reads the value into the alignment. Answers what is wrong with it, empty if nothing is.
QString FieldFromJson(const QJsonValue& value, const Field& field, Alignment* alignment);
