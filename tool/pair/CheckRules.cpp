#include "tool/pair/CheckRules.h"

#include <initializer_list>
#include <utility>

#include "tool/pair/Belonging.h"

using Severity = Finding::Severity;

namespace {

CheckRule RowsWhere(const char* name, Severity severity, const QByteArray& table, const QByteArray& shown,
                    const QByteArray& condition) {
  return {name, severity, "SELECT " + shown + " FROM " + table + " WHERE " + condition,
          "DELETE FROM " + table + " WHERE " + condition};
}

/// Rows of a table that no alignment names in these columns.
CheckRule Unused(const char* name, const char* table, const char* key, const char* shown,
                 std::initializer_list<std::pair<const char*, const char*>> users) {
  QByteArray used;
  for (const auto& [alignments, column] : users) {
    used += (used.isEmpty() ? "SELECT " : " UNION SELECT ") + QByteArray(column) + " FROM " + alignments;
  }
  return RowsWhere(name, Severity::Warning, table, shown, QByteArray(key) + " NOT IN (" + used + ')');
}

CheckRule WithoutThresholds(const char* name, Severity severity, Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const QByteArray key = tables.alignmentKey;
  return {name,
          severity,
          "SELECT " + key + " FROM main." + tables.alignments + " WHERE " + key + " NOT IN (" +
              Belonging::Joined(kind, "t." + key) + "NOT (" + Belonging::Disagree(kind) + "))",
          {}};
}

CheckRule WithoutAlignment(const char* name, Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const QByteArray key = tables.alignmentKey;
  return RowsWhere(name, Severity::Note, QByteArray("thresholds.") + tables.thresholds, key,
                   key + " NOT IN (SELECT " + key + " FROM main." + tables.alignments + ')');
}

/// Of several rows the library goes by the last.
CheckRule Doubled(const char* name, Kind kind) {
  const QByteArray agreeing = "NOT (" + Belonging::Disagree(kind) + ')';
  const QByteArray perAlignment = QByteArray(" GROUP BY t.") + Belonging::Of(kind).alignmentKey;
  const QByteArray rows = Belonging::Joined(kind, "t.rowid") + agreeing;
  const QByteArray inEffect = Belonging::Joined(kind, "max(t.rowid)") + agreeing + perAlignment;
  return {name, Severity::Warning,
          Belonging::Joined(kind, QByteArray("t.") + Belonging::Of(kind).alignmentKey) + agreeing +
              perAlignment + " HAVING count(*) > 1",
          QByteArray("DELETE FROM thresholds.") + Belonging::Of(kind).thresholds + " WHERE rowid IN (" +
              rows + ") AND rowid NOT IN (" + inEffect + ')'};
}

CheckRule OfOthers(const char* name, Kind kind) {
  return {name,
          Severity::Warning,
          Belonging::Joined(kind, QByteArray("t.") + Belonging::Of(kind).alignmentKey) +
              Belonging::Disagree(kind),
          {}};
}

constexpr char Sites[] = "AntennaAlignment";
constexpr char Paths[] = "PathAlignment";

}  // namespace

namespace CheckRules {

std::vector<CheckRule> OfMain() {
  return {
      Unused("sites that no alignment refers to", "Sites", "SiteKey", "SiteKey || ' ' || SiteIdentifier",
             {{Sites, "SiteKey"}}),
      Unused("paths that no alignment refers to", "Paths", "PathKey", "PathKey || ' ' || PathIdentifier",
             {{Paths, "PathKey"}}),
      Unused("orientations that no alignment refers to", "Orientation", "OrientationKey", "OrientationKey",
             {{Sites, "TargetOrientationKey"},
              {Sites, "MeasuredOrientationKey"},
              {Paths, "TargetOrientationKey"},
              {Paths, "MeasuredOrientationKey"}}),
      Unused("locations that no alignment refers to", "Geolocation", "GeolocationKey", "GeolocationKey",
             {{Sites, "LocationKey"}, {Paths, "LocationKey"}, {Paths, "PathLocationKey"}}),
      Unused("heights that no alignment refers to", "Height", "HeightKey", "HeightKey",
             {{Sites, "SiteHeightKey"}, {Paths, "SiteHeightKey"}})};
}

std::vector<CheckRule> OfPair(bool isConverted) {
  const Severity missing = isConverted ? Severity::Note : Severity::Warning;
  return {WithoutThresholds("site alignments without thresholds", missing, Kind::Site),
          WithoutThresholds("path alignments without thresholds", missing, Kind::Path),
          WithoutAlignment("thresholds without site alignment", Kind::Site),
          WithoutAlignment("thresholds without path alignment", Kind::Path),
          Doubled("two thresholds rows for one site alignment", Kind::Site),
          Doubled("two thresholds rows for one path alignment", Kind::Path),
          OfOthers("thresholds that name another site than their alignment", Kind::Site),
          OfOthers("thresholds that name another path than their alignment", Kind::Path)};
}

}  // namespace CheckRules
