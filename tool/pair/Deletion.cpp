#include "tool/pair/Deletion.h"

#include <memory>

#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "store/IAlignmentDatabase.h"
#include "tool/Console.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/LibraryCall.h"
#include "tool/pair/Snapshot.h"

namespace {

/// What is deleted has this name meanwhile: the library finds it by its name, and its own may not be UTF-8.
const QByteArray doomed = QByteArrayLiteral("to be deleted by tarnbeam-db");

QByteArray Table(const char* schema, const char* table) { return QByteArray(schema) + '.' + table; }

void AppendRows(const Sqlite& db, const QByteArray& sql, QByteArray* content) {
  Sqlite::Rows rows = db.Select(sql);
  while (rows.Next()) {
    for (int column = 0; column < rows.Columns(); ++column) {
      const QByteArray bytes = rows.Bytes(column);
      *content += QByteArray::number(bytes.size()) + ':' + bytes;
    }
  }
  *content += ';';
}

template <typename Records, typename KeyOf>
int IndexOf(const Records& records, qint64 key, KeyOf keyOf) {
  for (int index = 0; index < records.size(); ++index) {
    if (qint64(keyOf(records.at(index))) == key) return index;
  }
  return -1;
}

/// Gives a site or path that name for the time of its deletion.
class Renamed {
 public:
  Renamed(const Sqlite& db, const Belonging::Tables& tables, qint64 owner)
      : db_(db), tables_(tables), owner_(owner) {
    Sqlite::Rows name = db.Select(QByteArray("SELECT ") + tables.ownerName + " FROM main." + tables.owners +
                                  " WHERE " + tables.ownerKey + " = ?");
    if (name.Bind(1, owner).Next()) name_ = name.Bytes(0);
    Set(doomed);
  }
  void TakeBack() { Set(name_); }

 private:
  void Set(const QByteArray& name) {
    db_.Select(QByteArray("UPDATE main.") + tables_.owners + " SET " + tables_.ownerName + " = ? WHERE " +
               tables_.ownerKey + " = ?")
        .Bind(1, name)
        .Bind(2, owner_)
        .Next();
  }
  const Sqlite& db_;
  const Belonging::Tables& tables_;
  const qint64 owner_;
  QByteArray name_;
};

}  // namespace

Deletion::Deletion(const Snapshot& shown, Kind kind, const QString& identifier, std::optional<qint64> key)
    : kind_(kind),
      identifier_(identifier),
      owner_(shown.KeyOf(kind, identifier)),
      key_(key),
      content_(Content(shown.Files().Db())) {}

QByteArray Deletion::AlignmentCondition() const {
  const Belonging::Tables& tables = Belonging::Of(kind_);
  QByteArray condition = QByteArray(tables.ownerKey) + " = " + QByteArray::number(owner_);
  if (key_) condition += QByteArray(" AND ") + tables.alignmentKey + " = " + QByteArray::number(*key_);
  return condition;
}

/// All that was shown of it, to tell whether it is still the same.
QByteArray Deletion::Content(const Sqlite& db) const {
  const Belonging::Tables& tables = Belonging::Of(kind_);
  const QByteArray chosen = Table("main", tables.alignments) + " WHERE " + AlignmentCondition();
  const auto keys = [&](const char* column) { return QByteArray("SELECT ") + column + " FROM " + chosen; };
  QByteArray content;
  AppendRows(db,
             QByteArray("SELECT ") + tables.ownerName + " FROM main." + tables.owners + " WHERE " +
                 tables.ownerKey + " = " + QByteArray::number(owner_),
             &content);
  AppendRows(db, "SELECT * FROM " + chosen + " ORDER BY rowid", &content);
  const QByteArray locations =
      keys("LocationKey") + (kind_ == Kind::Path ? " UNION " + keys("PathLocationKey") : QByteArray());
  AppendRows(db,
             "SELECT * FROM main.Orientation WHERE OrientationKey IN (" + keys("TargetOrientationKey") +
                 " UNION " + keys("MeasuredOrientationKey") + ") ORDER BY rowid",
             &content);
  AppendRows(db, "SELECT * FROM main.Geolocation WHERE GeolocationKey IN (" + locations + ") ORDER BY rowid",
             &content);
  AppendRows(db,
             "SELECT * FROM main.Height WHERE HeightKey IN (" + keys("SiteHeightKey") + ") ORDER BY rowid",
             &content);
  AppendRows(db,
             "SELECT * FROM " + Table("thresholds", tables.thresholds) + " WHERE " + tables.alignmentKey +
                 " IN (" + keys(tables.alignmentKey) + ") ORDER BY rowid",
             &content);
  return content;
}

void Deletion::Perform(Edit* edit) const {
  const PrivatePair& copies = edit->Copies();
  const Sqlite& db = copies.Db();
  if (Content(db) != content_) {
    throw Failure(copies.ShownMain() + QStringLiteral(": ") + ShownSubject(kind_, identifier_) +
                  QStringLiteral(" was changed meanwhile by another program; nothing was deleted"));
  }
  const Belonging::Tables& tables = Belonging::Of(kind_);
  const QByteArray count = "SELECT count(*) FROM main." + QByteArray(tables.alignments);
  const qint64 before = db.Number(count);
  const qint64 wanted = db.Number(count + " WHERE " + AlignmentCondition());
  // The library deletes thresholds by the site or path alone; those that belong to something else are put
  // back.
  db.Execute("CREATE TEMP TABLE Others AS " + Belonging::Joined(kind_, "t.*") + Belonging::Disagree(kind_));
  Renamed renamed(db, tables, owner_);
  if (key_) {
    DeleteOne(copies);
    renamed.TakeBack();
  } else {
    DeleteAll(copies);
  }
  db.Execute("INSERT OR IGNORE INTO " + Table("thresholds", tables.thresholds) +
             " SELECT * FROM temp.Others");
  RequireGone(db, before - wanted);
}

void Deletion::DeleteAll(const PrivatePair& copies) const {
  QString name = QString::fromLatin1(doomed);
  const std::shared_ptr<IAlignmentDatabase> store = copies.Store();
  LibraryCall call;
  QString anySector;
  const bool deleted = kind_ == Kind::Site ? store->DeleteReportsBySiteAndSector(name, anySector)
                                           : store->DeleteReportsByPath(name);
  call.RequireSuccess(deleted, ShownSubject(kind_, identifier_) + QStringLiteral(" could not be deleted"));
}

// The library counts reports in an order of its own, in which equal ones may come either way round.
void Deletion::DeleteOne(const PrivatePair& copies) const {
  QString name = QString::fromLatin1(doomed);
  const std::shared_ptr<IAlignmentDatabase> store = copies.Store();
  LibraryCall call;
  bool deleted = false;
  if (kind_ == Kind::Site) {
    const std::unique_ptr<AntennaAlignmentPdfReportData> reports(store->GetAlignmentReportDataForSite(name));
    const int index = reports ? IndexOf(*reports->AlignmentData(), *key_,
                                        [](const auto* record) { return record->AntennaAlignmentKey(); })
                              : -1;
    deleted = index >= 0 && store->DeleteReportsBySiteAndIndex(name, index);
  } else {
    const std::unique_ptr<PathAlignmentPdfReportData> reports(store->GetPathAlignmentReportDataForSite(name));
    const int index = reports && reports->PathData() != nullptr
                          ? IndexOf(*reports->PathData(), *key_,
                                    [](const auto* record) { return record->PathAlignmentKey(); })
                          : -1;
    deleted = index >= 0 && store->DeleteReportsByPathAndIndex(name, index);
  }
  call.RequireSuccess(deleted, QStringLiteral("the report of ") + ShownSubject(kind_, identifier_) +
                                   QStringLiteral(" could not be deleted"));
  // The library leaves the thresholds of a site's report behind.
  const Belonging::Tables& tables = Belonging::Of(kind_);
  copies.Db().Execute("DELETE FROM " + Table("thresholds", tables.thresholds) + " WHERE " +
                      tables.alignmentKey + " = " + QByteArray::number(*key_) + " AND " +
                      tables.thresholdsOwner + " = " + QByteArray::number(owner_));
}

void Deletion::RequireGone(const Sqlite& db, qint64 remaining) const {
  const Belonging::Tables& tables = Belonging::Of(kind_);
  const QByteArray count = "SELECT count(*) FROM main." + QByteArray(tables.alignments);
  const QByteArray owners = "SELECT count(*) FROM main." + QByteArray(tables.owners) + " WHERE " +
                            tables.ownerKey + " = " + QByteArray::number(owner_);
  if (db.Number(count) == remaining && db.Number(count + " WHERE " + AlignmentCondition()) == 0 &&
      db.Number(owners) == (key_ ? 1 : 0)) {
    return;
  }
  throw Failure(ShownSubject(kind_, identifier_) +
                QStringLiteral(" could not be deleted, perhaps because of a trigger; nothing was deleted"));
}
