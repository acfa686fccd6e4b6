#include "tool/pair/DamagedFile.h"

#include <QtEndian>
#include <algorithm>
#include <cstring>

#include "tool/pair/FileCopy.h"

namespace {

constexpr uchar interiorTable = 0x05;
constexpr uchar leafTable = 0x0D;
constexpr int fileHead = 100;
constexpr int interiorHead = 12;
constexpr int leafHead = 8;
/// Stands as 0 or 1 where two bytes hold a size.
constexpr quint32 largestPage = 65536;
constexpr KeyRange everywhere{};

quint32 BigEndian16(const uchar* bytes) { return qFromBigEndian<quint16>(bytes); }
quint32 BigEndian32(const uchar* bytes) { return qFromBigEndian<quint32>(bytes); }

bool IsPageSize(quint32 size) { return size >= 512 && size <= largestPage && (size & (size - 1)) == 0; }

/// A number of one to nine bytes; answers how many, 0 where they go beyond the end.
int ReadVarint(const uchar* bytes, qint64 available, qint64* number) {
  constexpr int longest = 9;
  quint64 value = 0;
  for (int at = 0; at < longest && at < available; ++at) {
    if (at == longest - 1) {
      *number = qint64(value << 8 | bytes[at]);
      return longest;
    }
    value = value << 7 | (bytes[at] & 0x7F);
    if ((bytes[at] & 0x80) == 0) {
      *number = qint64(value);
      return at + 1;
    }
  }
  return 0;
}

/// Cells are put in from the page's end on, so one stands near to it.
bool LooksLikeLeaf(const uchar* page, quint32 size) {
  const quint32 start = BigEndian16(page + 5);
  const quint32 cells = BigEndian16(page + 3);
  if (page[0] != leafTable || cells == 0 || leafHead + 2 * cells > start || start >= size) return false;
  quint32 last = 0;
  for (qint64 number = 0; number < cells; ++number) {
    last = std::max(last, BigEndian16(page + leafHead + 2 * number));
  }
  return last > size / 2 && last < size;
}

qint64 BytesOf(qint64 serialType) {
  constexpr int sizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
  if (serialType < 0 || serialType == 10 || serialType == 11) return -1;
  return serialType < 10 ? sizes[serialType] : (serialType - 12) / 2;
}

StoredValue ValueOf(qint64 serialType, const QByteArray& bytes) {
  StoredValue value;
  if (serialType == 0) return value;
  if (serialType >= 12) {
    value.type = serialType % 2 == 1 ? StoredValue::Type::Text : StoredValue::Type::Blob;
    value.bytes = bytes;
    return value;
  }
  value.type = serialType == 7 ? StoredValue::Type::Real : StoredValue::Type::Integer;
  if (serialType >= 8) {
    value.integer = serialType - 8;
    return value;
  }
  quint64 bits = (uchar(bytes.at(0)) & 0x80) != 0 && serialType != 7 ? ~quint64{0} : 0;
  for (const char byte : bytes) bits = bits << 8 | uchar(byte);
  value.integer = qint64(bits);
  if (serialType == 7) std::memcpy(&value.real, &bits, sizeof bits);
  return value;
}

/// The values of a record; false unless it comes out even.
bool Decode(const QByteArray& payload, std::vector<StoredValue>* values) {
  const auto* const bytes = reinterpret_cast<const uchar*>(payload.constData());
  qint64 headSize = 0;
  int at = ReadVarint(bytes, payload.size(), &headSize);
  if (at == 0 || headSize < at || headSize > payload.size()) return false;
  qint64 body = headSize;
  while (at < headSize) {
    qint64 type = 0;
    const int length = ReadVarint(bytes + at, headSize - at, &type);
    const qint64 size = length == 0 ? -1 : BytesOf(type);
    if (size < 0 || size > payload.size() - body) return false;
    values->push_back(ValueOf(type, payload.mid(int(body), int(size))));
    body += size;
    at += length;
  }
  return body == payload.size();
}

/// Of the rows of the schema itself.
class EntryShape : public RowShape {
 public:
  bool Fits(const StoredRow& row) const override {
    using Type = StoredValue::Type;
    if (row.values.size() != 5) return false;
    for (std::size_t text = 0; text < 3; ++text) {
      if (row.values[text].type != Type::Text) return false;
    }
    static const std::set<QByteArray> kinds{"table", "index", "view", "trigger"};
    return row.values[3].type == Type::Integer && kinds.count(row.values[0].bytes) == 1;
  }
};

/// Whatever a stray leaf has.
class AnyShape : public RowShape {
 public:
  bool Fits(const StoredRow& /*row*/) const override { return true; }
};

bool FitsInto(const StoredTable& leaf, const RowShape& shape, const StoredTable& table) {
  const auto fits = [&](const auto& row) {
    return shape.Fits(row.second) && table.rows.count(row.first) == 0;
  };
  if (!std::all_of(leaf.rows.begin(), leaf.rows.end(), fits)) return false;
  return std::any_of(table.gaps.begin(), table.gaps.end(), [&leaf](const KeyRange& gap) {
    return leaf.rows.begin()->first > gap.after && leaf.rows.rbegin()->first <= gap.to;
  });
}

}  // namespace

/// A row, and where on its page it stands.
struct DamagedFile::Cell {
  int from = 0;
  int to = 0;
  StoredRow row;
  bool isTrusted = false;
  /// What it takes of the page is known, though the rest of it, on other pages, may not be read.
  bool isPlaced = false;
};

DamagedFile::DamagedFile(const QByteArray& path) : file_(QFile::decodeName(path)) {
  if (!file_.open(QIODevice::ReadOnly)) FailWithErrno(path);
  size_ = file_.size();
  if (size_ == 0) return;
  content_ = file_.map(0, size_);
  if (content_ == nullptr) FailWithErrno(path);
  hasHead_ = size_ >= fileHead && std::memcmp(content_, "SQLite format 3", 16) == 0;
  if (hasHead_) pageSize_ = BigEndian16(content_ + 16) == 1 ? largestPage : BigEndian16(content_ + 16);
  usable_ = hasHead_ ? -int(content_[20]) : 0;
  if (!IsPageSize(pageSize_)) {
    hasHead_ = false;
    usable_ = 0;
    pageSize_ = GuessPageSize();
  }
  usable_ += int(pageSize_);
  AllowReading();
  pages_ = quint32((size_ + pageSize_ - 1) / pageSize_);
  ReadFreePages();
  ReadSchema();
}

void DamagedFile::AllowReading() {
  constexpr qint64 timesRead = 16;
  recordsLeft_ = timesRead * size_;
}

/// The one by which most of the file looks like leaves of tables.
quint32 DamagedFile::GuessPageSize() const {
  quint32 best = 4096;
  qint64 most = 0;
  for (quint32 size = 512; size <= largestPage; size *= 2) {
    qint64 bytes = 0;
    for (qint64 at = size; at + size <= size_; at += size) {
      if (LooksLikeLeaf(content_ + at, size)) bytes += size;
    }
    if (bytes <= most) continue;
    most = bytes;
    best = size;
  }
  return best;
}

DamagedFile::Page DamagedFile::At(quint32 number) const {
  if (number == 0 || number > pages_) return {};
  const qint64 from = qint64(number - 1) * pageSize_;
  return {number, content_ + from, std::min(qint64(pageSize_), size_ - from)};
}

void DamagedFile::ReadFreePages() {
  if (!hasHead_) return;
  const quint32 wanted = BigEndian32(content_ + 36);
  for (quint32 trunk = BigEndian32(content_ + 32); trunk != 0;) {
    const Page page = At(trunk);
    if (page.bytes == nullptr || page.size < usable_ || !freePages_.insert(trunk).second) return;
    const qint64 leaves = BigEndian32(page.bytes + 4);
    if (leaves > usable_ / 4 - 2) return;
    for (qint64 number = 0; number < leaves; ++number) {
      if (!freePages_.insert(BigEndian32(page.bytes + 8 + 4 * number)).second) return;
    }
    trunk = BigEndian32(page.bytes);
  }
  freePagesAreKnown_ = freePages_.size() == wanted;
}

void DamagedFile::ReadSchema() {
  const EntryShape shape;
  const StoredTable read = ReadTree(1, shape);
  TakeEntries(read);
  if (read.gaps.empty()) return;
  for (const auto& [page, leaf] : StrayLeaves(shape)) {
    visited_.insert(page);
    TakeEntries(leaf);
  }
}

void DamagedFile::TakeEntries(const StoredTable& table) {
  for (const auto& [key, row] : table.rows) {
    if (row.values[0].bytes != "table") continue;
    const auto root = quint32(row.values[3].integer);
    const auto [entry, isNew] = schema_.try_emplace(row.values[1].bytes, Entry{root, row.values[4].bytes});
    // Of two that contradict nobody knows which is right.
    if (!isNew && entry->second.root != root) entry->second.root = 0;
  }
}

std::map<QByteArray, StoredTable> DamagedFile::Read(const std::map<QByteArray, Wanted>& wanted) {
  AllowReading();
  std::map<QByteArray, StoredTable> tables;
  for (const auto& [name, how] : wanted) {
    const auto entry = schema_.find(name);
    tables[name] = ReadTree(entry != schema_.end() ? entry->second.root : how.usualRoot, *how.shape);
  }
  if (freePagesAreKnown_) TakeStrayLeaves(wanted, &tables);
  return tables;
}

void DamagedFile::TakeStrayLeaves(const std::map<QByteArray, Wanted>& wanted,
                                  std::map<QByteArray, StoredTable>* tables) {
  for (const auto& [page, leaf] : StrayLeaves(AnyShape())) {
    StoredTable* owner = nullptr;
    int owners = 0;
    for (auto& [name, table] : *tables) {
      if (!FitsInto(leaf, *wanted.at(name).shape, table)) continue;
      owner = &table;
      ++owners;
    }
    if (owners != 1) continue;
    visited_.insert(page);
    owner->rows.insert(leaf.rows.begin(), leaf.rows.end());
  }
}

std::map<quint32, StoredTable> DamagedFile::StrayLeaves(const RowShape& shape) const {
  std::map<quint32, StoredTable> leaves;
  for (quint32 number = 2; number <= pages_; ++number) {
    const Page page = At(number);
    if (visited_.count(number) > 0 || freePages_.count(number) > 0 || page.bytes[0] != leafTable) continue;
    StoredTable leaf;
    bool any = false;
    if (ReadLeaf(page, everywhere, shape, &leaf, &any) && !leaf.rows.empty())
      leaves.emplace(number, std::move(leaf));
  }
  return leaves;
}

StoredTable DamagedFile::ReadTree(quint32 root, const RowShape& shape) {
  StoredTable table;
  std::vector<Task> tasks{{root, everywhere}};
  while (!tasks.empty()) {
    const Task task = tasks.back();
    tasks.pop_back();
    const Page page = At(task.page);
    const int head = page.number == 1 ? fileHead : 0;
    const uchar type = page.size > head + interiorHead ? page.bytes[head] : 0;
    bool isOurs = false;
    if (visited_.count(task.page) == 0 && freePages_.count(task.page) == 0) {
      if (type == interiorTable) isOurs = ReadInterior(page, task.range, &tasks, &table);
      if (type == leafTable && !ReadLeaf(page, task.range, shape, &table, &isOurs)) {
        table.gaps.push_back(task.range);
        if (isOurs) visited_.insert(task.page);
        continue;
      }
    }
    if (isOurs) {
      visited_.insert(task.page);
    } else {
      table.gaps.push_back(task.range);
    }
  }
  return table;
}

bool DamagedFile::ReadInterior(const Page& page, const KeyRange& range, std::vector<Task>* tasks,
                               StoredTable* table) const {
  const int head = page.number == 1 ? fileHead : 0;
  const int cells = int(BigEndian16(page.bytes + head + 3));
  const int end = head + interiorHead + 2 * cells;
  if (page.size < usable_ || end > usable_) return false;
  KeyRange left{range.after, range.after};
  bool isLost = false;
  for (qint64 number = 0; number < cells; ++number) {
    const int at = int(BigEndian16(page.bytes + head + interiorHead + 2 * number));
    qint64 key = 0;
    const bool isRead =
        at >= end && at + 5 <= usable_ && ReadVarint(page.bytes + at + 4, usable_ - at - 4, &key) > 0;
    if (!isRead || key <= left.to || key > range.to) {
      isLost = true;
      continue;
    }
    left = {left.to, key};
    if (isLost) table->gaps.push_back(left);
    isLost = false;
    tasks->push_back({BigEndian32(page.bytes + at), left});
  }
  const KeyRange right{left.to, range.to};
  if (isLost) table->gaps.push_back(right);
  tasks->push_back({BigEndian32(page.bytes + head + 8), right});
  return true;
}

bool DamagedFile::ReadLeaf(const Page& page, const KeyRange& range, const RowShape& shape, StoredTable* table,
                           bool* any) const {
  const int head = page.number == 1 ? fileHead : 0;
  if (page.size < head + leafHead) return false;
  const int count = int(BigEndian16(page.bytes + head + 3));
  const int said = int(BigEndian16(page.bytes + head + 5));
  const int start = said == 0 ? int(largestPage) : said;
  const int end = head + leafHead + 2 * count;
  if (end > start || start > usable_ || end > page.size) return false;
  std::vector<Cell> cells(static_cast<std::size_t>(count));
  for (qint64 number = 0; number < count; ++number) {
    Cell& cell = cells[std::size_t(number)];
    const int at = int(BigEndian16(page.bytes + head + leafHead + 2 * number));
    cell.isTrusted = at >= start && ReadCell(page, at, &cell) && shape.Fits(cell.row);
  }
  bool isWhole = DistrustNeighboursOfGaps(page, start, &cells) && page.size >= usable_;
  Cell* before = nullptr;
  for (Cell& cell : cells) {
    if (!cell.isTrusted) continue;
    const bool isInRange = cell.row.key > range.after && cell.row.key <= range.to;
    if (!isInRange || (before != nullptr && before->row.key >= cell.row.key)) cell.isTrusted = false;
    if (isInRange && !cell.isTrusted) before->isTrusted = false;
    before = &cell;
  }
  *any = cells.empty() && isWhole;
  for (Cell& cell : cells) {
    isWhole = isWhole && cell.isTrusted;
    if (!cell.isTrusted) continue;
    *any = true;
    table->rows[cell.row.key] = std::move(cell.row);
  }
  return isWhole;
}

bool DamagedFile::ReadCell(const Page& page, int at, Cell* cell) const {
  const qint64 available = std::min(page.size, qint64(usable_));
  qint64 size = 0;
  cell->from = at;
  const int sizeLength = at < available ? ReadVarint(page.bytes + at, available - at, &size) : 0;
  if (sizeLength == 0 || size < 0 || size > size_) return false;
  at += sizeLength;
  const int keyLength = ReadVarint(page.bytes + at, available - at, &cell->row.key);
  if (keyLength == 0) return false;
  at += keyLength;
  // How much of a record stands on the page itself is told by its size.
  const qint64 most = usable_ - 35;
  const qint64 least = (usable_ - 12) * 32 / 255 - 23;
  const qint64 fitting = least + (size - least) % (usable_ - 4);
  const qint64 local = size <= most ? size : fitting <= most ? fitting : least;
  if (local > available - at || (size > local && local + 4 > available - at)) return false;
  if ((recordsLeft_ -= local) < 0) return false;
  QByteArray payload(reinterpret_cast<const char*>(page.bytes) + at, int(local));
  at += int(local);
  const bool goesOn = size > local;
  cell->to = at + (goesOn ? 4 : 0);
  if (goesOn) {
    cell->isPlaced = true;
    if (!ReadOverflow(BigEndian32(page.bytes + at), size, &payload)) return false;
  }
  return Decode(payload, &cell->row.values);
}

bool DamagedFile::ReadOverflow(quint32 first, qint64 size, QByteArray* payload) const {
  quint32 next = first;
  while (payload->size() < size) {
    const Page page = At(next);
    if (page.number < 2 || page.size < usable_ || freePages_.count(next) > 0) return false;
    const qint64 wanted = std::min(size - payload->size(), qint64(usable_) - 4);
    if ((recordsLeft_ -= wanted) < 0) return false;
    payload->append(reinterpret_cast<const char*>(page.bytes) + 4, int(wanted));
    next = BigEndian32(page.bytes);
  }
  return next == 0;
}

/// What is neither a cell nor free may be what a damaged cell was. SQLite itself leaves three bytes at most.
bool DamagedFile::DistrustNeighboursOfGaps(const Page& page, int from, std::vector<Cell>* cells) const {
  constexpr int largestFragment = 3;
  std::vector<Cell> areas;
  const int head = page.number == 1 ? fileHead : 0;
  const int available = int(std::min(page.size, qint64(usable_)));
  for (int block = int(BigEndian16(page.bytes + head + 1)), before = 0;
       block > before && block + 4 <= available;) {
    const int size = int(BigEndian16(page.bytes + block + 2));
    areas.push_back({block, block + size, {}, true, true});
    before = block;
    block = int(BigEndian16(page.bytes + block));
  }
  std::vector<Cell*> sorted;
  sorted.reserve(areas.size() + cells->size());
  for (Cell& area : areas) sorted.push_back(&area);
  for (Cell& cell : *cells) {
    if (cell.isTrusted || cell.isPlaced) sorted.push_back(&cell);
  }
  std::sort(sorted.begin(), sorted.end(),
            [](const Cell* one, const Cell* other) { return one->from < other->from; });
  Cell* before = nullptr;
  int at = from;
  bool isAccountedFor = true;
  for (Cell* const cell : sorted) {
    if (cell->from < at || cell->from > at + largestFragment) {
      isAccountedFor = false;
      cell->isTrusted = false;
      if (before != nullptr) before->isTrusted = false;
    }
    at = std::max(at, cell->to);
    before = cell;
  }
  if (at <= usable_ && at + largestFragment >= usable_) return isAccountedFor;
  if (before != nullptr) before->isTrusted = false;
  return false;
}
