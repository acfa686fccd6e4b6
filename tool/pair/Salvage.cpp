#include "tool/pair/Salvage.h"

#include <QSet>
#include <algorithm>
#include <cmath>
#include <optional>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/Belonging.h"
#include "tool/pair/FileCheck.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFile.h"
#include "tool/pair/PrivatePair.h"
#include "tool/pair/SourceFile.h"
#include "tool/pair/TableShape.h"
#include "tool/pair/Versions.h"

namespace Salvage {
namespace {

using Type = StoredValue::Type;

/// Read before all others.
constexpr char versionTable[] = "Version";
/// Where SQLite remembers the last key that it gave in each table.
constexpr char sequenceTable[] = "sqlite_sequence";

StoredValue Integer(qint64 number) {
  StoredValue value;
  value.type = Type::Integer;
  value.integer = number;
  return value;
}

/// One damaged file: its tables as a new file of its version has them, and what could be read of each.
class Source {
 public:
  Source(DamagedFile* file, const QByteArray& freshPath)
      : shapes_(ShapesOf(Sqlite(freshPath, QStringLiteral("a new file")))) {
    const DamagedFile fresh(freshPath);
    std::map<QByteArray, DamagedFile::Wanted> wanted;
    for (const auto& [name, shape] : shapes_) {
      if (name == versionTable) continue;
      const auto usual = fresh.Schema().find(name);
      wanted[name] = {&shape, usual == fresh.Schema().end() ? 0 : usual->second.root};
    }
    tables_ = file->Read(wanted);
    for (const Kind kind : {Kind::Site, Kind::Path}) DropRepeatedNames(Belonging::Of(kind));
  }
  const TableShape& Shape(const QByteArray& table) const { return shapes_.at(table); }
  const StoredTable& Table(const QByteArray& table) const { return tables_.at(table); }
  const std::map<QByteArray, StoredTable>& Tables() const { return tables_; }

 private:
  /// No two sites have one name. Where two seem to, one of them is damaged, and nobody knows which.
  void DropRepeatedNames(const Belonging::Tables& tables) {
    const auto owners = tables_.find(tables.owners);
    if (owners == tables_.end()) return;
    std::map<QByteArray, std::vector<qint64>> keys;
    for (const auto& [key, row] : owners->second.rows) {
      keys[Shape(tables.owners).ValueOf(row, tables.ownerName).bytes].push_back(key);
    }
    for (const auto& [name, ofName] : keys) {
      if (ofName.size() == 1) continue;
      for (const qint64 key : ofName) {
        owners->second.rows.erase(key);
        owners->second.gaps.push_back({key, key});
      }
    }
  }

  std::map<QByteArray, TableShape> shapes_;
  std::map<QByteArray, StoredTable> tables_;
};

/// Puts rows into a new file.
class Writer {
 public:
  Writer(const Sqlite& db, const QByteArray& schema, const QByteArray& table)
      : db_(db), target_(schema + '.' + table) {}
  /// Columns and their values; what is not named gets its default.
  void Write(qint64 key, const std::map<QByteArray, StoredValue>& values) {
    QByteArray names = "rowid";
    QByteArray places = "?1";
    int number = 1;
    for (const auto& [name, value] : values) {
      names += ", " + name;
      places += ", ?" + QByteArray::number(++number);
    }
    const QByteArray sql = "INSERT INTO " + target_ + " (" + names + ") VALUES (" + places + ')';
    if (sql != sql_) insert_.emplace(db_.Select(sql));
    sql_ = sql;
    insert_->Restart();
    insert_->Bind(1, key);
    number = 1;
    for (const auto& [name, value] : values) Bind(++number, value);
    insert_->Next();
  }

 private:
  void Bind(int number, const StoredValue& value) {
    if (value.type == Type::Integer) insert_->Bind(number, value.integer);
    if (value.type == Type::Real) insert_->Bind(number, value.real);
    if (value.type == Type::Text) insert_->Bind(number, value.bytes);
  }

  const Sqlite& db_;
  const QByteArray target_;
  QByteArray sql_;
  std::optional<Sqlite::Rows> insert_;
};

std::map<QByteArray, StoredValue> ValuesOf(const TableShape& shape, const StoredRow& row) {
  std::map<QByteArray, StoredValue> values;
  for (std::size_t at = 0; at < row.values.size(); ++at) {
    if (int(at) != shape.KeyColumn()) values[shape.Columns()[at]] = row.values[at];
  }
  return values;
}

double Number(const std::map<QByteArray, StoredValue>& values, const char* column) {
  const StoredValue& value = values.at(column);
  return value.type == Type::Real ? value.real : double(value.integer);
}

/// What the steps to the current version make of values that mean something else there.
void BringForward(unsigned int version, const QByteArray& table, std::map<QByteArray, StoredValue>* values) {
  constexpr double tolerance = 0.00001;
  if (table == "Height") {
    qint64& type = values->at("HeightType").integer;
    type = Versions::CurrentHeightType(version, type);
  }
  if (table != "Preferences" || version > 1) return;
  const auto isZero = [&](const char* column) { return std::fabs(Number(*values, column)) <= tolerance; };
  const bool isAsMade = isZero("AccelerometerXOffset") && isZero("AccelerometerYOffset") &&
                        isZero("AccelerometerZOffset") &&
                        std::fabs(Number(*values, "AccelerometerXGain") - 1) <= tolerance &&
                        std::fabs(Number(*values, "AccelerometerZGain")) <= 1 + tolerance;
  (*values)["AccelerometerCalibrated"] = Integer(isAsMade ? 0 : 1);
  (*values)["AutoShutoffDelay"] = Integer(1);
}

/// Keys that were given and of which no row could be read.
class LostKeys {
 public:
  /// `last`: the highest key that was ever given, as far as anything tells.
  LostKeys(const StoredTable& table, qint64 last) {
    std::vector<KeyRange> gaps = table.gaps;
    std::sort(gaps.begin(), gaps.end(),
              [](const KeyRange& one, const KeyRange& other) { return one.after < other.after; });
    qint64 done = 0;
    for (const KeyRange& gap : gaps) {
      const qint64 to = std::min(gap.to, last);
      qint64 from = std::max(gap.after, done);
      for (auto row = table.rows.upper_bound(from); row != table.rows.end() && row->first <= to; ++row) {
        Add(from, row->first - 1);
        from = row->first;
      }
      Add(from, to);
      done = std::max(done, to);
    }
  }
  qint64 Count() const { return count_; }
  QString Shown() const { return shown_.join(QStringLiteral(", ")); }

 private:
  void Add(qint64 after, qint64 to) {
    if (to <= after) return;
    count_ += to - after;
    shown_.append(to == after + 1 ? QString::number(to)
                                  : QString::number(after + 1) + QLatin1Char('-') + QString::number(to));
  }
  qint64 count_ = 0;
  QStringList shown_;
};

class Rescue {
 public:
  Rescue(const PrivatePair& fresh, unsigned int version, const Source& mainFile, const Source* thresholds)
      : db_(fresh.Db()), version_(version), main_(mainFile), thresholds_(thresholds) {}

  void Run() {
    db_.Execute("BEGIN");
    for (const Kind kind : {Kind::Site, Kind::Path}) {
      KeepAlignments(kind);
      TellOfLost(kind);
    }
    for (const char* table : {"Sites", "Paths", "Orientation", "Geolocation", "Height"})
      WriteRows(table, &used_[table]);
    for (const char* table : {"Preferences", "SiteScreenContents", "PathScreenContents"})
      WriteRows(table, nullptr);
    if (thresholds_ != nullptr) {
      WriteTable(*thresholds_, "thresholds", "PreferencesPathLength", nullptr);
    }
    db_.Execute("COMMIT");
  }

  qint64 Kept() const { return kept_; }

  QString Account() const {
    QString lines = ReadLines(main_) + (thresholds_ != nullptr ? ReadLines(*thresholds_) : QString());
    if (thresholds_ == nullptr && version_ >= Versions::firstWithThresholds) {
      lines += QStringLiteral("without a thresholds file: all alignments that are kept have no thresholds\n");
    }
    return lines + losses_ + Console::Counted(kept_, QStringLiteral("alignment")) +
           QStringLiteral(" kept, %1 incomplete, %2%3 lost\n")
               .arg(incomplete_)
               .arg(isUnknown_ ? QStringLiteral("at least ") : QString())
               .arg(lost_);
  }

 private:
  static QString ReadLines(const Source& source) {
    QString lines;
    for (const auto& [name, table] : source.Tables()) {
      if (name.startsWith("sqlite_")) continue;
      lines += QString::fromUtf8(name) + QStringLiteral(": ") +
               Console::Counted(qint64(table.rows.size()), QStringLiteral("row")) + QStringLiteral(" read") +
               (table.gaps.empty() ? QString() : QStringLiteral(", others cannot be read")) +
               QLatin1Char('\n');
    }
    return lines;
  }

  /// Rows of thresholds by the alignments that they name and agree with.
  std::map<qint64, std::vector<const StoredRow*>> ThresholdsOf(Kind kind) const {
    std::map<qint64, std::vector<const StoredRow*>> rows;
    if (thresholds_ == nullptr) return rows;
    const Belonging::Tables& tables = Belonging::Of(kind);
    const TableShape& shape = thresholds_->Shape(tables.thresholds);
    const TableShape& alignmentShape = main_.Shape(tables.alignments);
    const StoredTable& alignments = main_.Table(tables.alignments);
    for (const auto& [key, row] : thresholds_->Table(tables.thresholds).rows) {
      const auto alignment = alignments.rows.find(shape.ValueOf(row, tables.alignmentKey).integer);
      if (alignment == alignments.rows.end()) continue;
      const qint64 owner = alignmentShape.ValueOf(alignment->second, tables.ownerKey).integer;
      if (shape.ValueOf(row, tables.thresholdsOwner).integer == owner) rows[alignment->first].push_back(&row);
    }
    return rows;
  }

  void KeepAlignments(Kind kind) {
    const Belonging::Tables& tables = Belonging::Of(kind);
    const auto thresholds = ThresholdsOf(kind);
    Writer writer(db_, "main", tables.alignments);
    Writer thresholdsWriter(db_, "thresholds", tables.thresholds);
    for (const auto& [key, row] : main_.Table(tables.alignments).rows) {
      const auto own = thresholds.find(key);
      const bool hasThresholds = own != thresholds.end();
      const QStringList missing = MissingOf(kind, row, hasThresholds);
      if (!missing.isEmpty()) {
        ++incomplete_;
        losses_ += QStringLiteral("incomplete: ") + KindName(kind) + QStringLiteral(" alignment ") +
                   QString::number(key) + QStringLiteral(", which needs ") +
                   missing.join(QStringLiteral(", ")) + QLatin1Char('\n');
        continue;
      }
      Keep(kind, row, &writer);
      if (hasThresholds) {
        const TableShape& shape = thresholds_->Shape(tables.thresholds);
        for (const StoredRow* found : own->second)
          thresholdsWriter.Write(found->key, ValuesOf(shape, *found));
      } else if (thresholds_ == nullptr) {
        WriteNoThresholds(kind, row, &thresholdsWriter);
      }
    }
  }

  /// What an alignment cannot do without and of what no row could be read.
  QStringList MissingOf(Kind kind, const StoredRow& row, bool hasThresholds) const {
    const Belonging::Tables& tables = Belonging::Of(kind);
    QStringList missing;
    for (const Belonging::Reference& reference : Belonging::ReferencesOf(kind)) {
      const qint64 wanted = main_.Shape(tables.alignments).ValueOf(row, reference.column).integer;
      if (main_.Table(reference.table).rows.count(wanted) == 0) {
        missing.append(QLatin1String(reference.table) + QLatin1Char(' ') + QString::number(wanted));
      }
    }
    // Whether it had any can be told where all rows are there.
    if (!hasThresholds && thresholds_ != nullptr && !thresholds_->Table(tables.thresholds).gaps.empty()) {
      missing.append(QStringLiteral("thresholds"));
    }
    return missing;
  }

  void Keep(Kind kind, const StoredRow& row, Writer* writer) {
    const TableShape& shape = main_.Shape(Belonging::Of(kind).alignments);
    ++kept_;
    for (const Belonging::Reference& reference : Belonging::ReferencesOf(kind)) {
      used_[reference.table].insert(shape.ValueOf(row, reference.column).integer);
    }
    writer->Write(row.key, ValuesOf(shape, row));
  }

  /// As an alignment without thresholds reads.
  void WriteNoThresholds(Kind kind, const StoredRow& row, Writer* writer) const {
    const Belonging::Tables& tables = Belonging::Of(kind);
    const bool isSite = kind == Kind::Site;
    writer->Write(row.key,
                  {{tables.alignmentKey, Integer(row.key)},
                   {tables.thresholdsOwner, main_.Shape(tables.alignments).ValueOf(row, tables.ownerKey)},
                   {"AzimuthThreshold", Integer(0)},
                   {"TiltThreshold", Integer(0)},
                   {isSite ? "RollThreshold" : "PathLengthThreshold", Integer(isSite ? 0 : -1)}});
  }

  void TellOfLost(Kind kind) {
    const Belonging::Tables& tables = Belonging::Of(kind);
    const StoredTable& alignments = main_.Table(tables.alignments);
    if (alignments.gaps.empty()) return;
    const std::optional<qint64> sequence = LastKeyGiven(tables.alignments);
    qint64 last = sequence.value_or(0);
    if (!alignments.rows.empty()) last = std::max(last, alignments.rows.rbegin()->first);
    if (!sequence && thresholds_ != nullptr) {
      const TableShape& shape = thresholds_->Shape(tables.thresholds);
      for (const auto& [key, row] : thresholds_->Table(tables.thresholds).rows) {
        last = std::max(last, shape.ValueOf(row, tables.alignmentKey).integer);
      }
    }
    const LostKeys lost(alignments, last);
    lost_ += lost.Count();
    if (lost.Count() > 0) {
      losses_ += QStringLiteral("lost: ") + KindName(kind) + QStringLiteral(" alignments ") + lost.Shown() +
                 QLatin1Char('\n');
    }
    if (sequence) return;
    isUnknown_ = true;
    losses_ += QStringLiteral("lost: ") + KindName(kind) + QStringLiteral(" alignments after ") +
               QString::number(last) + QStringLiteral(", if there were any\n");
  }

  std::optional<qint64> LastKeyGiven(const QByteArray& table) const {
    const StoredTable& sequence = main_.Table(sequenceTable);
    for (const auto& [key, row] : sequence.rows) {
      if (row.values.at(0).bytes == table) return main_.Shape(sequenceTable).ValueOf(row, "seq").integer;
    }
    return sequence.gaps.empty() ? std::optional<qint64>(0) : std::nullopt;
  }

  void WriteRows(const QByteArray& table, const QSet<qint64>* only) {
    WriteTable(main_, "main", table, only);
  }

  void WriteTable(const Source& source, const QByteArray& schema, const QByteArray& table,
                  const QSet<qint64>* only) {
    Writer writer(db_, schema, table);
    for (const auto& [key, row] : source.Table(table).rows) {
      if (only != nullptr && !only->contains(key)) continue;
      auto values = ValuesOf(source.Shape(table), row);
      BringForward(version_, table, &values);
      writer.Write(key, values);
    }
  }

  const Sqlite& db_;
  const unsigned int version_;
  const Source& main_;
  const Source* const thresholds_;
  std::map<QByteArray, QSet<qint64>> used_;
  QString losses_;
  qint64 kept_ = 0;
  qint64 incomplete_ = 0;
  qint64 lost_ = 0;
  bool isUnknown_ = false;
};

/// The version record, or else the columns that only later versions have.
unsigned int VersionOf(DamagedFile* file, const PrivatePair& pair, bool hasThresholds, const QString& shown) {
  const TableShape shape(Sqlite(pair.MainPath(), shown), versionTable);
  constexpr quint32 usualRoot = 2;
  const std::map<QByteArray, StoredTable> read = file->Read({{versionTable, {&shape, usualRoot}}});
  const auto& rows = read.at(versionTable).rows;
  if (!rows.empty()) {
    const qint64 version = rows.begin()->second.values.at(0).integer;
    if (Versions::IsKnown(version)) return unsigned(version);
    if (rows.size() == 1 && read.at(versionTable).gaps.empty()) Versions::RequireKnown(version, shown);
  }
  const auto preferences = file->Schema().find("Preferences");
  if (preferences != file->Schema().end() && !preferences->second.sql.isEmpty()) {
    constexpr const char* lastColumns[] = {"UserTechId", "GeoidFormat",          "RollPrecision",
                                           "Language",   "BluetoothDisplayName", "AccelerometerCalibrated"};
    unsigned int version = currentSchemaVersion;
    for (const char* column : lastColumns) {
      if (preferences->second.sql.contains(column)) return version;
      --version;
    }
    return version;
  }
  if (hasThresholds) return currentSchemaVersion;
  throw Failure(
      shown + QStringLiteral(": neither its version nor its tables can be made out; if it is of version 7, "
                             "give THRESHOLDS"),
      Status::Damaged);
}

/// A log or journal that goes with a copy is applied as far as SQLite can.
void ApplyJournal(const QByteArray& path, const QString& shown) {
  try {
    Sqlite(path, shown).Execute("PRAGMA journal_mode = DELETE");
  } catch (const Failure&) {
    // What it cannot open stays as it is.
  }
}

void CopySources(const Files& files, const PrivatePair& fresh, const Deadline& deadline) {
  const QByteArray mainPath = fresh.Folder().Path(PrivateFolder::Name::ReadMain);
  const QByteArray thresholdsPath = fresh.Folder().Path(PrivateFolder::Name::ReadThresholds);
  CopyTogether(files.main, mainPath, files.thresholds, thresholdsPath, deadline, SourceFile::Needs::AnyFile);
  ApplyJournal(mainPath, FileName::Shown(files.main));
  if (!files.thresholds.isEmpty()) ApplyJournal(thresholdsPath, FileName::Shown(files.thresholds));
}

void RequireFreePlaces(const Files& files) {
  if (FileName::ToBytes(files.newMain) == FileName::ToBytes(files.newThresholds)) {
    FailAsBoth(FileName::Shown(files.newMain));
  }
  for (const QString& name : {files.newMain, files.newThresholds}) {
    if (FileExists(name)) throw Failure(FileName::Shown(name) + QStringLiteral(": exists already"));
    NewFile::RemoveLeftovers(FileName::ToBytes(name));
  }
}

void RequireRight(PrivatePair* fresh) {
  const FileCheck check(fresh);
  for (const Finding& finding : check.Findings()) {
    if (finding.severity != Finding::Severity::Error) continue;
    throw Failure(finding.shownFile + QStringLiteral(": what was read does not fit together: ") +
                      finding.rule + QStringLiteral("; nothing was written"),
                  Status::Damaged);
  }
}

}  // namespace

QString Run(const Files& files, const Deadline& deadline) {
  const QString shown = FileName::Shown(files.main);
  RequireFreePlaces(files);
  PrivateFolder::RemoveLeftovers();
  PrivatePair fresh(FileName::Shown(files.newMain), FileName::Shown(files.newThresholds));
  CopySources(files, fresh, deadline);
  Versions::Create(currentSchemaVersion, QString::fromLocal8Bit(fresh.MainPath()),
                   QString::fromLocal8Bit(fresh.ThresholdsPath()));
  fresh.RequirePair();
  const bool hasThresholds = !files.thresholds.isEmpty();
  DamagedFile mainFile(fresh.Folder().Path(PrivateFolder::Name::ReadMain));
  const unsigned int version = VersionOf(&mainFile, fresh, hasThresholds, shown);
  if (hasThresholds && version < Versions::firstWithThresholds) {
    throw WrongUsage(shown + QStringLiteral(": is of version ") + QString::number(version) +
                     QStringLiteral(", which has no thresholds file: leave THRESHOLDS out"));
  }
  fresh.MakeFresh(version);
  const Source source(&mainFile, fresh.FreshMainPath());
  std::optional<Source> thresholds;
  if (hasThresholds) {
    DamagedFile thresholdsFile(fresh.Folder().Path(PrivateFolder::Name::ReadThresholds));
    thresholds.emplace(&thresholdsFile, fresh.FreshThresholdsPath());
  }
  Rescue rescue(fresh, version, source, thresholds ? &*thresholds : nullptr);
  rescue.Run();
  fresh.Close();
  RequireRight(&fresh);
  NewFile newMain(fresh.MainPath(), files.newMain);
  NewFile newThresholds(fresh.ThresholdsPath(), files.newThresholds);
  PlaceTogether(&newMain, &newThresholds);
  return rescue.Account();
}

}  // namespace Salvage
