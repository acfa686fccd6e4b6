#include "tests/robustness/Allowed.h"

#include <algorithm>

namespace {

const QString yes = QStringLiteral("true");
const QString no = QStringLiteral("false");
const QString null = QStringLiteral("null");
const QString withoutAlignment = QStringLiteral("key 4294967295");

QString Unless(bool allowed, const char* complaint) {
  return allowed ? QString() : QString::fromLatin1(complaint);
}

bool IsNoneOr(const Change& change, const Change& whole) { return change.IsNone() || change == whole; }

bool IsUntouched(const Outcome& outcome) { return outcome.main.IsNone() && outcome.thresholds.IsNone(); }

// Whether every line is one of `whole`, none more often than there.
bool IsPartOf(const QStringList& lines, QStringList whole) {
  return std::all_of(lines.begin(), lines.end(), [&](const QString& line) { return whole.removeOne(line); });
}

// `rows` as far as they are of the tables in `order`, one table after the other; tables without rows are
// skipped.
QStringList InOrder(QStringList rows, const QStringList& order) {
  QStringList ordered;
  for (const QString& table : order) {
    const auto row =
        std::find_if(rows.begin(), rows.end(), [&](const QString& line) { return TableOf(line) == table; });
    if (row == rows.end()) continue;
    ordered.append(*row);
    rows.erase(row);
  }
  return ordered + rows;
}

// The rows of one save, of a path or of a site, in the order in which they are inserted.
QStringList AsInserted(const QStringList& rows, bool path) {
  const QString orientation = QStringLiteral("Orientation");
  const QString location = QStringLiteral("Geolocation");
  const QString height = QStringLiteral("Height");
  return InOrder(rows, path ? QStringList{QStringLiteral("Paths"), location, orientation, orientation,
                                          location, height, QStringLiteral("PathAlignment")}
                            : QStringList{QStringLiteral("Sites"), orientation, orientation, location, height,
                                          QStringLiteral("AntennaAlignment")});
}

bool IsFromTable(const QString& line, const QStringList& tables) { return tables.contains(TableOf(line)); }

QStringList OfTables(const QStringList& lines, const QStringList& tables) {
  QStringList rows;
  for (const QString& line : lines) {
    if (IsFromTable(line, tables)) rows.append(line);
  }
  return rows;
}

// Whether the rows that `lines` has of these tables are none or all that `whole` has.
bool NoneOrAllOf(const QStringList& lines, const QStringList& whole, const QStringList& tables) {
  const QStringList rows = OfTables(lines, tables);
  return rows.isEmpty() || rows == OfTables(whole, tables);
}

// A thresholds row that belongs to no alignment: "table|row|key|-1|…".
bool IsRowWithoutAlignment(const QStringList& rows) {
  return rows.size() == 1 && rows[0].section(QLatin1Char('|'), 3, 3) == QLatin1String("-1");
}

bool DeletesNoMoreThan(const Outcome& outcome, const Outcome& clean) {
  return outcome.main.made.isEmpty() && outcome.thresholds.made.isEmpty() &&
         IsPartOf(outcome.main.gone, clean.main.gone) && IsNoneOr(outcome.thresholds, clean.thresholds);
}

const QStringList alignments = {QStringLiteral("AntennaAlignment"), QStringLiteral("PathAlignment")};

// Records are "values/thresholds"; thresholds that could not be read are the same for all.
QString Reports(const Outcome& outcome, const Outcome& clean, FaultLevel level, const QString& absent,
                bool maybeEmpty) {
  if (!IsUntouched(outcome)) return QStringLiteral("reading changed a file");
  if (outcome.result == null || outcome.result == clean.result) return {};
  if (outcome.result == QLatin1String("records;")) return Unless(maybeEmpty, "no records");
  QStringList plain;
  for (const QString& record : clean.result.split(QLatin1Char(';'))) {
    plain.append(record.section(QLatin1Char('/'), 0, 0) +
                 (record.contains(QLatin1Char('/')) ? absent : QString()));
  }
  if (outcome.result == plain.join(QLatin1Char(';'))) return {};
  if (level == FaultLevel::Calls) return QStringLiteral("other records: ") + outcome.result;
  // A query that is stepped again after an error starts anew, and its first rows come twice.
  const QStringList records = outcome.result.split(QLatin1Char(';'));
  const QStringList whole = clean.result.split(QLatin1Char(';'));
  const bool complete = IsPartOf(whole, records);
  const bool known = std::all_of(records.begin(), records.end(),
                                 [&](const QString& record) { return whole.contains(record); });
  return Unless(complete && known, "records that were not saved, or some are missing");
}

}  // namespace

// Each file has all its tables or none of what is new; one that was not finished is removed.
QString Allowed::Creation(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!IsNoneOr(outcome.main, clean.main)) return QStringLiteral("a main file with some of its tables");
  if (!IsNoneOr(outcome.thresholds, clean.thresholds)) {
    return QStringLiteral("a thresholds file with some of its tables");
  }
  const bool complete = outcome.main == clean.main && outcome.thresholds == clean.thresholds;
  return Unless(complete == (outcome.result == yes),
                "the result does not tell whether the files are complete");
}

QString Allowed::Reading(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!IsUntouched(outcome)) return QStringLiteral("reading changed a file");
  return Unless(outcome.result == no || outcome.result == clean.result, "another version");
}

QString Allowed::Listing(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  if (!IsUntouched(outcome)) return QStringLiteral("reading changed a file");
  if (outcome.result.isEmpty() || outcome.result == clean.result) return {};
  const bool restarted = level == FaultLevel::Files && outcome.result.endsWith(clean.result) &&
                         clean.result.startsWith(outcome.result.chopped(clean.result.size() + 1));
  return Unless(restarted, "neither all identifiers nor none");
}

QString Allowed::SiteReports(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  return Reports(outcome, clean, level, QStringLiteral("/0,0,0"), false);
}

QString Allowed::PathReports(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  return Reports(outcome, clean, level, QStringLiteral("/0,0,-1"), true);
}

// A failure before the alignment's own row keeps the rows that are there already and stores the thresholds
// under key -1; a failure of that row keeps nothing. Whether a commit succeeded is ignored.
QString Allowed::Save(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  const bool path = clean.main.made.filter(QStringLiteral("PathAlignment|")).size() == 1;
  const QStringList whole = AsInserted(clean.main.made, path);
  const QStringList made = AsInserted(outcome.main.made, path);
  const QStringList& thresholds = outcome.thresholds.made;
  if (!outcome.main.gone.isEmpty() || !outcome.thresholds.gone.isEmpty())
    return QStringLiteral("rows are gone");
  if (made != whole.mid(0, made.size())) return QStringLiteral("rows that are no beginning of the save");
  const bool noneOrAll = made.isEmpty() || made == whole;
  if (outcome.result == null) {
    return Unless(noneOrAll && thresholds.isEmpty(), "a save that failed left rows behind");
  }
  if (outcome.result == withoutAlignment) {
    return Unless(made.size() < whole.size() && (thresholds.isEmpty() || IsRowWithoutAlignment(thresholds)),
                  "an alignment under no key");
  }
  if (outcome.result != clean.result) return QStringLiteral("another key");
  return Unless(noneOrAll && IsNoneOr(outcome.thresholds, clean.thresholds), "a key without its rows");
}

// The main file's part is done in full or undone. Only a site row whose delete could not be prepared stays.
QString Allowed::SiteDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  if (!DeletesNoMoreThan(outcome, clean)) return QStringLiteral("more is gone than was to be deleted");
  const QStringList& gone = outcome.main.gone;
  if (outcome.result == no) return Unless(IsUntouched(outcome), "false, yet rows are gone");
  if (level == FaultLevel::Files) return {};
  const QStringList site = {QStringLiteral("Sites")};
  QStringList butSite = clean.main.gone;
  for (const QString& row : OfTables(clean.main.gone, site)) butSite.removeOne(row);
  return Unless(gone.isEmpty() || gone == clean.main.gone || gone == butSite, "half a deletion");
}

// Never undone: what was done before a failure stays done, in the order alignments, path, then orientations,
// locations and heights, except that a path row whose delete could not be prepared stays.
QString Allowed::PathDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  if (outcome.result != yes) return QStringLiteral("not true");
  if (!DeletesNoMoreThan(outcome, clean)) return QStringLiteral("more is gone than was to be deleted");
  if (level == FaultLevel::Files) return {};
  const QStringList& gone = outcome.main.gone;
  if (!NoneOrAllOf(gone, clean.main.gone, alignments)) return QStringLiteral("some alignments are gone");
  if (!gone.isEmpty() && OfTables(gone, alignments).isEmpty())
    return QStringLiteral("alignments without path");
  const QStringList associated = {QStringLiteral("Orientation"), QStringLiteral("Geolocation"),
                                  QStringLiteral("Height")};
  QStringList whole;
  QStringList done;
  for (const QString& table : associated) {
    whole += OfTables(clean.main.gone, {table});
    done += OfTables(gone, {table});
  }
  return Unless(done == whole.mid(0, done.size()), "associated rows are gone out of turn");
}

QString Allowed::ReportDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level) {
  if (!DeletesNoMoreThan(outcome, clean)) return QStringLiteral("more is gone than was to be deleted");
  if (outcome.result == no) return Unless(IsUntouched(outcome), "false, yet rows are gone");
  if (outcome.result != yes) return QStringLiteral("another result");
  return Unless(level == FaultLevel::Files || IsNoneOr(outcome.main, clean.main), "half a deletion");
}

// The preferences row comes first; once the thresholds file is open the result is true.
QString Allowed::PreferencesSave(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!IsNoneOr(outcome.main, clean.main) || !IsNoneOr(outcome.thresholds, clean.thresholds)) {
    return QStringLiteral("half a row");
  }
  const bool first = outcome.main == clean.main;
  const bool second = clean.thresholds.IsNone() || outcome.thresholds == clean.thresholds;
  if (outcome.result == yes) return Unless(first, "true, yet nothing is saved");
  return Unless(outcome.result == no && (outcome.thresholds.IsNone() || !second), "false, yet all is saved");
}

QString Allowed::PreferencesRestore(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!IsUntouched(outcome)) return QStringLiteral("reading changed a file");
  const QStringList results = {clean.result, QStringLiteral("false/"), QStringLiteral("false/main"),
                               QStringLiteral("true/main")};
  return Unless(results.contains(outcome.result), "half a restore");
}

// The site comes first and stops the path; a path that cannot be saved is no failure.
QString Allowed::ScreensStore(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!outcome.thresholds.IsNone()) return QStringLiteral("the thresholds file is changed");
  const QStringList site = {QStringLiteral("SiteScreenContents")};
  const Change siteAlone = {OfTables(clean.main.made, site), OfTables(clean.main.gone, site)};
  if (outcome.result == no) return Unless(outcome.main.IsNone(), "false, yet saved");
  return Unless(outcome.main == siteAlone || outcome.main == clean.main, "true, yet the site is not saved");
}

// A delete that cannot be prepared is no failure, so either of the two rows may stay.
QString Allowed::ScreensClear(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!outcome.thresholds.IsNone() || !outcome.main.made.isEmpty()) return QStringLiteral("rows are made");
  if (!IsPartOf(outcome.main.gone, clean.main.gone)) return QStringLiteral("other rows are gone");
  return Unless(outcome.result == yes || outcome.main.IsNone(), "false, yet cleared");
}

QString Allowed::ScreensRestore(const Outcome& outcome, const Outcome& clean, FaultLevel) {
  if (!IsUntouched(outcome)) return QStringLiteral("reading changed a file");
  const QStringList results = {clean.result, QStringLiteral("false/"), QStringLiteral("true/"),
                               QStringLiteral("true/site"), QStringLiteral("true/+path")};
  return Unless(results.contains(outcome.result), "false, yet restored");
}

// Only the two screens are committed one after the other; other operations change no row of the site's
// screen.
QString Allowed::Interrupted(const Change& main, const Change& thresholds, const Outcome& clean) {
  if (main == clean.main) return Unless(IsNoneOr(thresholds, clean.thresholds), "half the thresholds");
  if (!thresholds.IsNone()) return QStringLiteral("thresholds before the main file");
  if (main.IsNone()) return {};
  const QStringList site = {QStringLiteral("SiteScreenContents")};
  const Change siteAlone = {OfTables(clean.main.made, site), OfTables(clean.main.gone, site)};
  return Unless(main == siteAlone, "half an operation");
}
