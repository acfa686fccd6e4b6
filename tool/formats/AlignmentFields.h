#pragma once

#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <limits>
#include <variant>
#include <vector>

#include "tool/Alignment.h"

/// One value of an alignment: its name in JSON, where dots stand for nested objects, what it is used for, its
/// unit and its range. Reading, writing, printing, comparing and identifying all follow the table of these.
struct Field {
  using Member =
      std::variant<Kind Alignment::*, QString Alignment::*, QDateTime Alignment::*, float Alignment::*,
                   double Alignment::*, bool Alignment::*, int Alignment::*, HeightSource Alignment::*>;

  enum Kinds { Both, SiteOnly, PathOnly };
  /// InUid: measurements that differ in it are different measurements. OnMap: shown with every line on a map.
  enum Uses { Plain = 0, InUid = 1, OnMap = 2, InUidAndOnMap = 3 };

  const char* name;
  Kinds kinds;
  Member member;
  Uses uses;
  const char* unit = "";
  double lowest = std::numeric_limits<int>::lowest();
  double highest = std::numeric_limits<int>::max();

  bool IsOf(Kind kind) const { return kinds != (kind == Kind::Site ? PathOnly : SiteOnly); }
  /// Whether it is a text that somebody typed in.
  bool IsText() const { return std::holds_alternative<QString Alignment::*>(member); }
};

/// Every field there is, in the order in which they are shown.
const std::vector<Field>& AllFields();
/// Those that an alignment of the kind has.
const std::vector<Field>& FieldsOf(Kind kind);

/// The members of an object in JSON: fields, and objects of further members.
struct FieldGroup {
  QString name;
  /// Null if there are `members`.
  const Field* field = nullptr;
  std::vector<FieldGroup> members;
};
const FieldGroup& FieldTreeOf(Kind kind);

/// The fewest digits that read back as the same number, without an exponent; no number is "-0".
QString Decimal(float value);
QString Decimal(double value);
/// A moment in UTC, ISO 8601.
QString TimeText(const QDateTime& time);

/// The value as text without its unit.
QString FieldText(const Alignment& alignment, const Field& field);
QJsonValue FieldToJson(const Alignment& alignment, const Field& field);
/// The number for JSON, with no more digits than `Decimal` gives it.
QJsonValue NumberToJson(float value);
/// Reads the value into the alignment. Returns what is wrong with it, empty if nothing is.
QString FieldFromJson(const QJsonValue& value, const Field& field, Alignment* alignment);

/// Names of the fields, of either alignment, in which the two differ.
QStringList DifferingFields(const Alignment& one, const Alignment& other);
/// Name of the first value that is infinite or not a number; empty if all are finite.
QString NotFinite(const Alignment& alignment);
