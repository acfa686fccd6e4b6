#pragma once

#include <QByteArray>
#include <QFile>
#include <limits>
#include <map>
#include <set>
#include <vector>

/// A value as a record holds it.
struct StoredValue {
  enum class Type { Null, Integer, Real, Text, Blob };
  Type type = Type::Null;
  qint64 integer = 0;
  double real = 0;
  QByteArray bytes;
};

struct StoredRow {
  qint64 key = 0;
  std::vector<StoredValue> values;
};

/// The keys after the first up to the second.
struct KeyRange {
  qint64 after = std::numeric_limits<qint64>::min();
  qint64 to = std::numeric_limits<qint64>::max();
};

/// What can be read of a table.
struct StoredTable {
  std::map<qint64, StoredRow> rows;
  /// Where rows may be that could not be read; none where the table is whole.
  std::vector<KeyRange> gaps;
};

/// What the rows of a table look like.
class RowShape {
 public:
  virtual ~RowShape() = default;
  virtual bool Fits(const StoredRow& row) const = 0;
};

/// A database file read page by page, without the engine, which gives up at what is not right. Rows are taken
/// where the page around them is consistent: on a damaged page, what stands next to something that cannot be
/// made out is not believed. Whatever the file holds, it comes to an end: a page belongs to one table at
/// most, and is looked at once.
class DamagedFile {
 public:
  explicit DamagedFile(const QByteArray& path);

  struct Entry {
    quint32 root = 0;
    QByteArray sql;
  };
  /// Tables by their names, as far as the schema can be read.
  const std::map<QByteArray, Entry>& Schema() const { return schema_; }

  struct Wanted {
    const RowShape* shape;
    /// Where the table stands unless the schema tells.
    quint32 usualRoot;
  };
  /// A leaf that its table has lost is found again where only one table can have lost it.
  std::map<QByteArray, StoredTable> Read(const std::map<QByteArray, Wanted>& wanted);

 private:
  /// A page, or what there is of it.
  struct Page {
    quint32 number = 0;
    const uchar* bytes = nullptr;
    qint64 size = 0;
  };
  struct Task {
    quint32 page;
    KeyRange range;
  };
  struct Cell;

  void AllowReading();
  quint32 GuessPageSize() const;
  Page At(quint32 number) const;
  void ReadFreePages();
  void ReadSchema();
  void TakeEntries(const StoredTable& rows);
  StoredTable ReadTree(quint32 root, const RowShape& shape);
  bool ReadInterior(const Page& page, const KeyRange& range, std::vector<Task>* tasks,
                    StoredTable* table) const;
  /// Whether all of it can be made out. `any`: whether something can.
  bool ReadLeaf(const Page& page, const KeyRange& range, const RowShape& shape, StoredTable* table,
                bool* any) const;
  bool ReadCell(const Page& page, int at, Cell* cell) const;
  bool ReadOverflow(quint32 first, qint64 size, QByteArray* payload) const;
  /// Whether all of the page is accounted for.
  bool DistrustNeighboursOfGaps(const Page& page, int from, std::vector<Cell>* cells) const;
  std::map<quint32, StoredTable> StrayLeaves(const RowShape& shape) const;
  void TakeStrayLeaves(const std::map<QByteArray, Wanted>& wanted, std::map<QByteArray, StoredTable>* tables);

  QFile file_;
  const uchar* content_ = nullptr;
  qint64 size_ = 0;
  quint32 pageSize_ = 0;
  int usable_ = 0;
  quint32 pages_ = 0;
  bool hasHead_ = false;
  /// Rows on pages without use were deleted; unless all such pages are known no stray page is believed.
  bool freePagesAreKnown_ = false;
  std::set<quint32> freePages_;
  std::set<quint32> visited_;
  /// How many bytes of records may still be read. Each byte of the file is of one record, and read a few
  /// times at most; records that share pages could keep a run busy for days.
  mutable qint64 recordsLeft_ = 0;
  std::map<QByteArray, Entry> schema_;
};
