// A file is read page by page as the engine reads it, whatever the engine put into it; of what is damaged
// nothing is invented.
#include "tool/pair/DamagedFile.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <QFile>
#include <QStringList>
#include <QtEndian>

#include "tests/support/DatabaseDump.h"
#include "tests/support/PrintQt.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class AnyShape : public RowShape {
 public:
  bool Fits(const StoredRow& /*row*/) const override { return true; }
};

// As the query below has them. Real numbers of these tests are multiples of an eighth.
QString Text(const StoredRow& row) {
  const StoredValue& value = row.values.at(1);
  const QString hex = QString::fromLatin1(value.bytes.toHex().toUpper());
  const QString key = QString::number(row.key);
  switch (value.type) {
    case StoredValue::Type::Null:
      return '\'' + key + " null '";
    case StoredValue::Type::Integer:
      return '\'' + key + " integer " + QString::number(value.integer) + '\'';
    case StoredValue::Type::Real:
      return '\'' + key + " real " + QString::number(qint64(value.real * 8)) + '\'';
    case StoredValue::Type::Text:
      return '\'' + key + " text " + hex + '\'';
    case StoredValue::Type::Blob:
      return '\'' + key + " blob " + hex + '\'';
  }
  return {};
}

const QString asTexts = QStringLiteral(
    "SELECT key || ' ' || typeof(v) || ' ' || CASE typeof(v) WHEN 'real' THEN CAST(v * 8 AS INTEGER) "
    "WHEN 'integer' THEN v WHEN 'null' THEN '' ELSE hex(v) END FROM t ORDER BY key");

class DamagedFileTest : public testing::Test {
 protected:
  // An empty table, on pages of that size whose last bytes are left to others.
  void Create(int pageSize, const int reserved) {
    QFile::remove(folder_.Main());
    sqlite3* db = nullptr;
    int inAndOut = reserved;
    ASSERT_EQ(sqlite3_open(folder_.Main().toUtf8().constData(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_file_control(db, "main", SQLITE_FCNTL_RESERVE_BYTES, &inAndOut), SQLITE_OK);
    const QString sql =
        QString("PRAGMA page_size = %1; CREATE TABLE t (key INTEGER PRIMARY KEY, v)").arg(pageSize);
    ASSERT_EQ(sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_close(db), SQLITE_OK);
    ASSERT_EQ(int(Content().at(20)), reserved);
  }

  void ExpectToReadAll() { ExpectToRead(Rows(folder_.Main(), asTexts), 0); }

  void ExpectToRead(const QStringList& rows, quint32 usualRoot) {
    const StoredTable table = ReadTable(usualRoot);
    EXPECT_TRUE(table.gaps.empty());
    ASSERT_EQ(table.rows.size(), std::size_t(rows.size()));
    auto expected = rows.begin();
    for (const auto& [key, row] : table.rows) ASSERT_TRUE(Text(row) == *expected++) << key;
  }

  StoredTable ReadTable(quint32 usualRoot = 0) const {
    const AnyShape any;
    return DamagedFile(folder_.Main().toUtf8()).Read({{"t", {&any, usualRoot}}})["t"];
  }

  QByteArray Content() const {
    QFile file(folder_.Main());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  void Overwrite(qint64 at, const QByteArray& bytes) const {
    QFile file(folder_.Main());
    EXPECT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(at) && file.write(bytes) == bytes.size());
  }

  const TemporaryFolder folder_;
};

TEST_F(DamagedFileTest, NumbersOfAllSizes) {
  Create(512, 0);
  QStringList values{"NULL", "0.5", "-2.25", "1125899906842624.125", "''", "'ż'", "x''", "x'00FF'"};
  QStringList keys{"-9223372036854775807", "9223372036854775807"};
  for (int bits = 0; bits < 63; ++bits) {
    const qint64 power = qint64(1) << bits;
    for (const qint64 number : {power - 1, power, -power, -power - 1}) values.append(QString::number(number));
    keys.append({QString::number(-power), QString::number(power)});
  }
  QString sql = "BEGIN";
  for (int number = 0; number < values.size(); ++number) {
    const QString key = keys.value(number, QString::number(1000 + number));
    sql += QString("; INSERT OR IGNORE INTO t VALUES (%1, %2)").arg(key, values[number]);
  }
  RunSql(folder_.Main(), sql + "; COMMIT");
  EXPECT_GT(Rows(folder_.Main(), asTexts).size(), 200);
  ExpectToReadAll();
}

// Records stand on their page, or go on on others from sizes on that depend on the page's.
TEST_F(DamagedFileTest, RecordsOfAllLengths) {
  for (const auto& [pageSize, step] :
       {std::pair(512, 1), std::pair(1024, 5), std::pair(4096, 61), std::pair(65536, 4099)}) {
    for (const int reserved : {0, 32}) {
      SCOPED_TRACE(QString("%1, %2").arg(pageSize).arg(reserved).toStdString());
      Create(pageSize, reserved);
      const QString all =
          QString("WITH RECURSIVE n(l) AS (VALUES (0) UNION ALL SELECT l + %1 FROM n WHERE l < %2) ")
              .arg(step)
              .arg(4 * pageSize);
      RunSql(folder_.Main(), all + "INSERT INTO t SELECT l, randomblob(l) FROM n");
      ExpectToReadAll();
      // What is deleted leaves pages, blocks and bytes free.
      RunSql(folder_.Main(),
             QString("DELETE FROM t WHERE key / %1 % 5 IN (1, 3); INSERT INTO t SELECT key + 1, key FROM t "
                     "WHERE key / %1 % 5 = 2 AND key % 2 = 0 AND key + 1 NOT IN (SELECT key FROM t)")
                 .arg(step));
      ExpectToReadAll();
      RunSql(folder_.Main(), "DELETE FROM t WHERE key > 100");
      ExpectToReadAll();
    }
  }
}

// The pages are told by what they look like: of two rows, and of more. With the first page its table is lost,
// too, which then is looked for where it usually stands.
TEST_F(DamagedFileTest, LostHeadsOfAllPageSizes) {
  for (int pageSize = 512; pageSize <= 65536; pageSize *= 2) {
    SCOPED_TRACE(pageSize);
    for (const auto& [part, lost, usualRoot] :
         {std::tuple(0.4, 100, quint32(0)), std::tuple(0.15, pageSize, quint32(2))}) {
      Create(pageSize, 0);
      RunSql(folder_.Main(),
             QString("WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k < 40) "
                     "INSERT INTO t SELECT k, printf('%*c', %1, 'x') FROM n")
                 .arg(int(part * pageSize)));
      const QStringList rows = Rows(folder_.Main(), asTexts);
      ASSERT_EQ(rows.size(), 40);
      Overwrite(0, QByteArray(lost, '\x55'));
      ExpectToRead(rows, usualRoot);
    }
  }
}

// Where no page tells it by its looks, the size is the engine's own: what is left on this leaf is near its
// begin.
TEST_F(DamagedFileTest, ALostHeadWhereNothingLooksLikeALeaf) {
  Create(4096, 0);
  RunSql(folder_.Main(),
         "WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k < 10) "
         "INSERT INTO t SELECT k, printf('%*c', 380, 'x') FROM n; DELETE FROM t WHERE key < 10");
  const QStringList rows = Rows(folder_.Main(), asTexts);
  ASSERT_EQ(rows.size(), 1);
  Overwrite(0, QByteArray(100, '\x55'));
  ExpectToRead(rows, 0);
}

// A row whose key is that of the row before its page is not believed, nor is a page lost with its number.
TEST_F(DamagedFileTest, KeysThatAreThereTwice) {
  constexpr int pageSize = 512;
  Create(pageSize, 0);
  RunSql(folder_.Main(),
         "WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k < 100) "
         "INSERT INTO t SELECT k, printf('%*c', 70 + k % 30, 'x') FROM n");
  const QStringList rows = Rows(folder_.Main(), asTexts);
  const QByteArray whole = Content();
  const auto byteAt = [&whole](int at) { return int(uchar(whole.at(at))); };
  const auto readWith = [&](int at, int value) {
    Overwrite(at, QByteArray(1, char(value)));
    StoredTable table = ReadTable();
    Overwrite(at, whole.mid(at, 1));
    return table;
  };
  int leaves = 0;
  for (int page = 2 * pageSize; page < whole.size(); page += pageSize) {
    ASSERT_EQ(byteAt(page), 0x0D);
    // Behind one byte of the record's size.
    const int firstKey = page + 256 * byteAt(page + 8) + byteAt(page + 9) + 1;
    if (byteAt(firstKey) == 1) continue;
    ++leaves;
    const StoredTable table = readWith(firstKey, byteAt(firstKey) - 1);
    for (const auto& [key, row] : table.rows) EXPECT_TRUE(rows.contains(Text(row))) << key;
    EXPECT_GE(table.rows.size(), 98U);
    EXPECT_FALSE(table.gaps.empty());
  }
  ASSERT_EQ(byteAt(pageSize), 0x05);
  const auto keyOfChild = [&](int child) {
    const int pointer = pageSize + 12 + 2 * child;
    return pageSize + 256 * byteAt(pointer) + byteAt(pointer + 1) + 4;
  };
  for (int child = 1; child < leaves; ++child) {
    SCOPED_TRACE(child);
    EXPECT_EQ(readWith(keyOfChild(child), byteAt(keyOfChild(child - 1))).rows.size(), 100U);
  }
  EXPECT_GT(leaves, 10);
}

// What is left of a deleted record on a free page does not become the end of another one.
TEST_F(DamagedFileTest, ARecordDoesNotGoOnOnAFreePage) {
  constexpr int pageSize = 512;
  Create(pageSize, 0);
  RunSql(folder_.Main(),
         "PRAGMA secure_delete = 0; INSERT INTO t VALUES (1, printf('%*c', 600, 'a')), (2, printf('%*c', "
         "600, 'b')),"
         "(3, printf('%*c', 600, 'c')); DELETE FROM t WHERE key > 1");
  const QStringList rows = Rows(folder_.Main(), asTexts);
  ExpectToRead(rows, 0);
  const QByteArray whole = Content();
  const auto number = [&whole](int at) { return int(uchar(whole.at(at + 3))); };
  const int trunk = number(32);
  ASSERT_EQ(number((trunk - 1) * pageSize + 4), 1);
  const QByteArray freed = whole.mid((trunk - 1) * pageSize + 8, 4);
  const int pageOfRest =
      Rows(folder_.Main(), "SELECT pageno FROM dbstat WHERE pagetype = 'overflow'").value(0).toInt();
  const auto pointer = whole.indexOf(QByteArray("\0\0\0", 3) + char(pageOfRest), pageSize + 16);
  ASSERT_TRUE(pageOfRest > 2 && pointer > 0 && pointer < 2 * pageSize);
  Overwrite(pointer, freed);
  const StoredTable table = ReadTable();
  EXPECT_TRUE(table.rows.empty());
  EXPECT_FALSE(table.gaps.empty());
}

// A trunk of 512 bytes has room for 126 pages; where it says more nobody knows which pages are free, and
// pages to which no tree leads may be among them.
TEST_F(DamagedFileTest, AListOfFreePagesThatDoesNotFitIsNotBelieved) {
  constexpr int pageSize = 512;
  constexpr quint32 room = 126;
  constexpr quint32 someNumber = 1000;
  const auto number = [](quint32 value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
  };
  for (const quint32 said : {room, room + 1}) {
    Create(pageSize, 0);
    RunSql(
        folder_.Main(),
        "CREATE TABLE u (v); WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k < 100) "
        "INSERT INTO t SELECT k, printf('%*c', 70, 'x') FROM n; DROP TABLE u");
    QByteArray trunk = number(0) + number(said);
    for (quint32 place = 0; place < room; ++place) trunk += number(someNumber + place);
    ASSERT_EQ(Content().mid(32, 4), number(3));
    Overwrite(2 * pageSize, trunk);
    Overwrite(36, number(said + 1));
    // The root.
    Overwrite(pageSize, QByteArray(pageSize, '\x55'));
    EXPECT_EQ(ReadTable().rows.size(), said == room ? 100U : 0U);
  }
}

// It tells of more children than a page has room for: the last one, which stands apart, is not believed
// either.
TEST_F(DamagedFileTest, APageOfChildrenThatDoesNotFitIsNotBelieved) {
  constexpr int pageSize = 512;
  Create(pageSize, 0);
  RunSql(folder_.Main(),
         "CREATE TABLE u (key INTEGER PRIMARY KEY, v); WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k "
         "+ 1 FROM n WHERE k < 100) INSERT INTO t SELECT k, printf('%*c', 70, 'x') FROM n");
  Overwrite(pageSize + 3, QByteArray("\x01\0", 2));
  // Of the leaves nobody can tell any more whether they are of one table or of the other.
  Overwrite(2 * pageSize, QByteArray(pageSize, '\x55'));
  const AnyShape any;
  const auto tables = DamagedFile(folder_.Main().toUtf8()).Read({{"t", {&any, 0}}, {"u", {&any, 0}}});
  for (const char* table : {"t", "u"}) {
    EXPECT_TRUE(tables.at(table).rows.empty()) << table;
    EXPECT_FALSE(tables.at(table).gaps.empty()) << table;
  }
}

// Four bytes each, of which the first to come is the last on the page.
TEST_F(DamagedFileTest, TheSmallestRows) {
  Create(512, 0);
  RunSql(folder_.Main(),
         "CREATE TABLE keys (key INTEGER PRIMARY KEY); INSERT INTO keys VALUES (1), (2), (3);"
         "DELETE FROM keys WHERE key = 1");
  const AnyShape any;
  const StoredTable table = DamagedFile(folder_.Main().toUtf8()).Read({{"keys", {&any, 0}}})["keys"];
  EXPECT_TRUE(table.gaps.empty());
  ASSERT_EQ(table.rows.size(), 2U);
  EXPECT_EQ(table.rows.begin()->first, 2);
  EXPECT_EQ(table.rows.rbegin()->first, 3);
}

// Two entries that contradict are no help: the rows are found by what they look like.
TEST_F(DamagedFileTest, TwoEntriesOfOneTableAreNotBelieved) {
  Create(512, 0);
  RunSql(folder_.Main(), "INSERT INTO t VALUES (1, 'of t'), (2, 'of t')");
  const QStringList rows = Rows(folder_.Main(), asTexts);
  RunSql(folder_.Main(),
         "CREATE TABLE u (key INTEGER PRIMARY KEY, v); INSERT INTO u VALUES (1, 'of u'), (2, 'of u');"
         "PRAGMA writable_schema = 1; UPDATE sqlite_schema SET rootpage = 3 WHERE name = 't';"
         "INSERT INTO sqlite_schema SELECT type, name, tbl_name, 2, sql FROM sqlite_schema WHERE name = 't'");
  const AnyShape any;
  const auto tables = DamagedFile(folder_.Main().toUtf8()).Read({{"t", {&any, 0}}, {"u", {&any, 0}}});
  QStringList read;
  for (const auto& [key, row] : tables.at("t").rows) read.append(Text(row));
  EXPECT_EQ(read, rows);
  EXPECT_EQ(tables.at("u").rows.size(), 2U);
}

// A nought has a type of its own and no bytes; the two types beyond it and 1 are nobody's.
TEST_F(DamagedFileTest, ValuesOfReservedTypesAreNone) {
  Create(512, 0);
  RunSql(folder_.Main(), "INSERT INTO t VALUES (1, 0)");
  ExpectToReadAll();
  // Sizes of record and head, and the key, whose column holds nothing.
  const QByteArray record("\x03\x01\x03\0\x08", 5);
  const auto at = Content().indexOf(record);
  ASSERT_GT(at, 512);
  for (const char type : {char(10), char(11)}) {
    Overwrite(at + 4, QByteArray(1, type));
    const StoredTable table = ReadTable();
    EXPECT_TRUE(table.rows.empty());
    EXPECT_FALSE(table.gaps.empty());
  }
}

// Whichever page is lost, what was deleted does not come back, though its pages are still there.
TEST_F(DamagedFileTest, DeletedRowsStayDeleted) {
  constexpr int pageSize = 512;
  Create(pageSize, 0);
  RunSql(folder_.Main(),
         "PRAGMA secure_delete = 0; WITH RECURSIVE n(k) AS (VALUES (1) UNION ALL SELECT k + 1 FROM n WHERE k "
         "< 400) "
         "INSERT INTO t SELECT k, printf('%*c', 50 + k % 40, 'x') FROM n; DELETE FROM t WHERE key BETWEEN "
         "100 AND 300");
  const QStringList rows = Rows(folder_.Main(), asTexts);
  ASSERT_EQ(rows.size(), 199);
  EXPECT_GT(Rows(folder_.Main(), "PRAGMA freelist_count").value(0).toInt(), 30);
  const QByteArray whole = Content();
  int lessened = 0;
  for (qint64 at = pageSize; at < whole.size(); at += pageSize) {
    SCOPED_TRACE(at / pageSize);
    Overwrite(at, QByteArray(pageSize, '\x55'));
    const StoredTable table = ReadTable();
    for (const auto& [key, row] : table.rows) EXPECT_TRUE(rows.contains(Text(row))) << key;
    EXPECT_GE(table.rows.size(), 190U);
    lessened += table.rows.size() < 199 ? 1 : 0;
    Overwrite(at, whole.mid(int(at), pageSize));
  }
  EXPECT_GT(lessened, 30);
}

}  // namespace
