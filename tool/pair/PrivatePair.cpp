#include "tool/pair/PrivatePair.h"

#include <unistd.h>

#include <QSet>

#include "tool/Console.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/Versions.h"

namespace {

/// Applies a journal or log that was copied along, and goes through all pages.
void RequireSound(const QByteArray& path, const QString& shown) {
  const Sqlite db(path, shown);
  db.Execute("PRAGMA journal_mode = DELETE");
  Sqlite::Rows encoding = db.Select("PRAGMA encoding");
  if (encoding.Next() && encoding.Bytes(0) != "UTF-8") {
    throw Failure(shown + QStringLiteral(": keeps texts as UTF-16, which no file of this kind does"),
                  Status::Damaged);
  }
  Sqlite::Rows findings = db.Select("PRAGMA quick_check(1)");
  if (!findings.Next() || findings.Bytes(0) == "ok") return;
  throw Damage(shown, QStringLiteral("is damaged (") +
                          Console::Printable(findings.Text(0).section(QLatin1Char('\n'), -1)) +
                          QLatin1Char(')'));
}

QSet<QByteArray> Names(const Sqlite& db, const QByteArray& sql) {
  QSet<QByteArray> names;
  Sqlite::Rows rows = db.Select(sql);
  while (rows.Next()) names.insert(rows.Bytes(0).toLower());
  return names;
}

}  // namespace

PrivatePair::PrivatePair(QString shownMain, QString shownThresholds)
    : shownMain_(std::move(shownMain)), shownThresholds_(std::move(shownThresholds)) {}

void PrivatePair::RequireSoundCopies() const {
  RequireSound(MainPath(), shownMain_);
  if (HasThresholds()) RequireSound(ThresholdsPath(), shownThresholds_);
}

void PrivatePair::Open() {
  RequireSoundCopies();
  db_ = std::make_unique<Sqlite>(MainPath(), shownMain_);
  if (HasThresholds()) db_->Attach(ThresholdsPath(), "thresholds");
}

unsigned int PrivatePair::RequireVersion() {
  const bool hasTable = db_->Number(
                            "SELECT count(*) FROM main.sqlite_schema WHERE type = 'table' AND rootpage > 0 "
                            "AND name = 'Version' COLLATE NOCASE") > 0;
  Sqlite::Rows rows =
      db_->Select(hasTable ? "SELECT VersionNumber FROM main.Version WHERE rowid = 1" : "SELECT 1 WHERE 0");
  if (!rows.Next()) {
    throw Failure(shownMain_ + QStringLiteral(": carries no version, so it is no main file of alignments"),
                  Status::Damaged);
  }
  Versions::RequireKnown(rows.Int(0), shownMain_);
  version_ = static_cast<unsigned int>(rows.Int(0));
  return version_;
}

void PrivatePair::RequireShapeOf(const char* schema, const QByteArray& freshPath,
                                 const QString& shown) const {
  const Sqlite fresh(freshPath, shown);
  const QByteArray tables =
      QByteArray("SELECT name FROM ") + schema +
      ".sqlite_schema WHERE type = 'table' AND rootpage > 0 AND name NOT LIKE 'sqlite\\_%' "
      "ESCAPE '\\'";
  const QSet<QByteArray> present = Names(*db_, tables);
  Sqlite::Rows expected = fresh.Select(
      "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
  while (expected.Next()) {
    const QByteArray table = expected.Bytes(0);
    if (!present.contains(table.toLower())) {
      throw Damage(shown, QStringLiteral("has no table ") + QString::fromUtf8(table));
    }
    // A generated column would be computed each time that it is read.
    const QSet<QByteArray> columns = Names(
        *db_, "SELECT name FROM pragma_table_xinfo('" + table + "', '" + schema + "') WHERE hidden = 0");
    const QSet<QByteArray> needed = Names(fresh, "SELECT name FROM pragma_table_info('" + table + "')");
    if (!columns.contains(needed)) {
      throw Damage(shown, QStringLiteral("the table ") + QString::fromUtf8(table) +
                              QStringLiteral(" has not the columns of its version"));
    }
  }
}

void PrivatePair::MakeFresh(unsigned int version) const {
  unlink(FreshMainPath().constData());
  unlink(FreshThresholdsPath().constData());
  Versions::Create(version, QString::fromLocal8Bit(FreshMainPath()),
                   QString::fromLocal8Bit(FreshThresholdsPath()));
}

void PrivatePair::RequireShape() {
  MakeFresh(version_);
  RequireShapeOf("main", FreshMainPath(), shownMain_);
  if (HasThresholds()) RequireShapeOf("thresholds", FreshThresholdsPath(), shownThresholds_);
}

void PrivatePair::RequireOperandsOf(qint64 version) const {
  const bool needsThresholds = version >= Versions::FirstWithThresholds;
  if (!Versions::IsKnown(version) || needsThresholds == HasThresholds()) return;
  throw WrongUsage(shownMain_ + QStringLiteral(": is of version ") + QString::number(version) +
                   (needsThresholds
                        ? QStringLiteral(", so THRESHOLDS has to be given")
                        : QStringLiteral(", which has no thresholds file: leave THRESHOLDS out")));
}

void PrivatePair::RequirePair() {
  Open();
  RequireOperandsOf(RequireVersion());
  RequireShape();
}

void PrivatePair::RequireCurrentPair() {
  Open();
  if (RequireVersion() != CurrentSchemaVersion) {
    throw Failure(shownMain_ + QStringLiteral(": is of version ") + QString::number(version_) +
                  QStringLiteral("; 'tarnbeam-db migrate' brings it to version ") +
                  QString::number(CurrentSchemaVersion));
  }
  RequireShape();
  RequireBelonging();
}

void PrivatePair::RequireBelonging() const {
  if (!HasThresholds() || Belonging::IsPair(*db_)) return;
  throw Failure(shownMain_ + QStringLiteral(" and ") + shownThresholds_ +
                    QStringLiteral(": are no pair: every thresholds row names another site or path than its "
                                   "alignment"),
                Status::Damaged);
}

std::shared_ptr<IAlignmentDatabase> PrivatePair::Store() const {
  return Versions::Open(version_, QString::fromLocal8Bit(MainPath()),
                        QString::fromLocal8Bit(ThresholdsPath()));
}
