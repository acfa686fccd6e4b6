#include <gtest/gtest.h>

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>

#include "tests/support/PrintQt.h"
#include "tests/tool/formats/Samples.h"
#include "tool/Console.h"
#include "tool/formats/AlignmentJson.h"

namespace {

std::vector<Alignment> Read(const QByteArray& text) {
  QBuffer buffer;
  buffer.setData(text);
  buffer.open(QIODevice::ReadOnly);
  return AlignmentJson::Read(&buffer, QStringLiteral("f"));
}

// What is wrong with the text, without the program's name and the last line.
QString Wrong(const QByteArray& text) {
  try {
    Read(text);
  } catch (const Failure& failure) {
    QString message = QString::fromUtf8(failure.what());
    message.remove(QStringLiteral("tarnbeam-db: "));
    message.remove(QStringLiteral("\nnothing was saved"));
    return message;
  }
  return QStringLiteral("nothing");
}

QByteArray Entry(const Alignment& alignment) {
  return QJsonDocument(AlignmentJson::ToObject(alignment, AlignmentJson::Uid::With)).toJson();
}

TEST(JsonReaderTest, WhatIsWrittenIsRead) {
  const std::vector<Alignment> read =
      Read('[' + Entry(SampleSite()) + ",\t\r\n" + Entry(SamplePath()) + "]\n");
  ASSERT_EQ(read.size(), 2U);
  for (Alignment written : {SampleSite(), SamplePath()}) {
    // What is derived is not read.
    written.azimuthDeviation = written.tiltDeviation = written.rollDeviation = 0;
    EXPECT_EQ(Entry(read.at(written.kind == Kind::Site ? 0 : 1)), Entry(written));
  }
  EXPECT_TRUE(Read("[]").empty());
  EXPECT_TRUE(Read(" [ ] ").empty());
}

TEST(JsonReaderTest, AnElementMayLieAcrossThePiecesThatAreRead) {
  for (int blanks = (1 << 16) - 40; blanks < (1 << 16) + 10; ++blanks) {
    const QByteArray text =
        '[' + QByteArray(blanks, ' ') + QJsonDocument(QJsonObject{{"kind", "mast"}}).toJson() + ",12]";
    EXPECT_EQ(Wrong(text), "f: entry 1: kind must be site or path\nf: entry 2: must be an object") << blanks;
  }
}

TEST(JsonReaderTest, WhatIsNoArrayOfAlignments) {
  const QString noArray = QStringLiteral("f: must be an array of alignments");
  EXPECT_EQ(Wrong(""), noArray);
  EXPECT_EQ(Wrong("  "), noArray);
  EXPECT_EQ(Wrong("{}"), noArray);
  EXPECT_EQ(Wrong("1"), noArray);
  EXPECT_EQ(Wrong("[1, \"a\", null, [], [{}]]"),
            "f: entry 1: must be an object\nf: entry 2: must be an object\nf: entry 3: must be an object\n"
            "f: entry 4: must be an object\nf: entry 5: must be an object");
}

TEST(JsonReaderTest, WhatIsNoJsonIsNamedWithItsLine) {
  EXPECT_EQ(Wrong("["), "f: line 1: unterminated array");
  EXPECT_EQ(Wrong("[\n\n1"), "f: line 3: unterminated array");
  EXPECT_EQ(Wrong("[\n1\n\n2]"), "f: line 4: missing value separator");
  EXPECT_EQ(Wrong("[1,]"), "f: line 1: illegal value");
  EXPECT_EQ(Wrong("[1]\n[2]"), "f: line 2: garbage at the end of the document");
  EXPECT_EQ(Wrong("[{\"a\": 1\n} {}]"), "f: line 2: missing value separator");
  EXPECT_EQ(Wrong("[\n{\"a\":\n]"), "f: line 3: object is missing after a comma");
  EXPECT_EQ(Wrong("[\n{\"a\": 1,\n\"b\" 1}]"), "f: line 3: missing name separator");
  EXPECT_EQ(Wrong("[{\"a\": 1"), "f: line 1: unterminated object");
  EXPECT_EQ(Wrong("[{\"a"), "f: line 1: unterminated string");
  EXPECT_EQ(Wrong("[\n{\"a\": 1.e}]"), "f: line 2: illegal number");
  EXPECT_EQ(Wrong("[\n{\"a\": nul}]"), "f: line 2: illegal value");
}

TEST(JsonReaderTest, ByteOrderMarks) {
  const QString mark = QStringLiteral("f: begins with a byte-order mark; save it as UTF-8 without one");
  EXPECT_EQ(Wrong("\xEF\xBB\xBF[]"), mark);
  EXPECT_EQ(Wrong(QByteArray("\xFF\xFE[\0]\0", 6)), mark);
  EXPECT_EQ(Wrong(QByteArray("\xFE\xFF\0[\0]", 6)), mark);
}

TEST(JsonReaderTest, TextsThatAreNotUtf8) {
  EXPECT_EQ(Wrong("[\n{\"kind\": \"s\xFFite\"}]"), "f: line 2: a text is not UTF-8");
  EXPECT_EQ(Wrong("[\n{\"k\xC0\xAFind\": \"site\"}]"), "f: line 2: a text is not UTF-8");
}

TEST(JsonReaderTest, Depth) {
  const QByteArray deepest = '[' + QByteArray(64, '[') + QByteArray(64, ']') + ']';
  EXPECT_EQ(Wrong(deepest), "f: entry 1: must be an object");
  EXPECT_EQ(Wrong("[\n" + QByteArray(65, '[') + QByteArray(65, ']') + ']'),
            "f: line 2: is nested deeper than 64 levels");
  EXPECT_EQ(Wrong('[' + QByteArray(1000000, '{')), "f: line 1: is nested deeper than 64 levels");
}

// A device that claims to hold more than it may, or goes on for ever, or to its end.
class Endless : public QIODevice {
 public:
  explicit Endless(qint64 size, qint64 end = -1) : size_(size), end_(end) { open(QIODevice::ReadOnly); }
  qint64 size() const override { return size_; }
  bool isSequential() const override { return size_ == 0; }
  bool atEnd() const override { return given_ == end_; }
  qint64 Given() const { return given_; }

 protected:
  qint64 readData(char* data, qint64 length) override {
    if (end_ >= 0) length = std::min(length, end_ - given_);
    std::fill(data, data + length, ' ');
    if (given_ == 0) *data = '[';
    given_ += length;
    return length;
  }
  qint64 writeData(const char* /*data*/, qint64 /*length*/) override { return -1; }

 private:
  const qint64 size_;
  const qint64 end_;
  qint64 given_ = 0;
};

QString WrongWith(QIODevice* device) {
  try {
    AlignmentJson::Read(device, QStringLiteral("f"));
  } catch (const Failure& failure) {
    return QString::fromUtf8(failure.what());
  }
  return {};
}

TEST(JsonReaderTest, Size) {
  const QString tooLarge = QStringLiteral("f: is larger than 512 MiB; split it into several files");
  Endless file((512LL << 20) + 1);
  EXPECT_EQ(WrongWith(&file), tooLarge);
  EXPECT_EQ(file.Given(), 0);
  Endless pipe(0);
  EXPECT_EQ(WrongWith(&pipe), tooLarge);
  EXPECT_LT(pipe.Given(), (512LL << 20) + (1 << 20));
  Endless largest(0, 512LL << 20);
  EXPECT_EQ(WrongWith(&largest), "f: line 1: unterminated array");
}

class Failing : public Endless {
 public:
  Failing() : Endless(0) { setErrorString(QStringLiteral("the card is gone")); }

 protected:
  qint64 readData(char* /*data*/, qint64 /*length*/) override { return -1; }
};

TEST(JsonReaderTest, AReadErrorIsNoEnd) {
  Failing device;
  EXPECT_EQ(WrongWith(&device), "f: the card is gone");
}

QString WrongAfter(QByteArray entry, const QByteArray& before, const QByteArray& after) {
  EXPECT_TRUE(entry.contains(before)) << before.constData();
  return Wrong('[' + entry.replace(before, after) + ']');
}

TEST(JsonReaderTest, MembersThatAreThereTwice) {
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"kind\"", "\"kind\": \"site\", \"kind\""),
            "f: entry 1: kind is there twice");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"note\"", "\"note\": \"a\", \"no\\u0074e\""),
            "f: entry 1: options.note is there twice");
  // Members of two objects are no doubles, nor is a name that stands as a value.
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"Alpha\"", "\"sector\""), "nothing");
}

TEST(JsonReaderTest, NumbersThatNoNumberHolds) {
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "59.318742", "1e999"),
            "f: entry 1: location.latitude is too large or too small for a number: 1e999");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "59.318742", "-1.5E-999"),
            "f: entry 1: location.latitude is too large or too small for a number: -1.5E-999");
  EXPECT_EQ(
      WrongAfter(Entry(SampleSite()), "59.318742", QByteArray(400, '9')),
      "f: entry 1: location.latitude is too large or too small for a number: " + QString(40, '9') + "...");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "59.318742", "0e999"), "nothing");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "59.318742", "0.0000"), "nothing");
}

TEST(JsonReaderTest, UnknownMembers) {
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"kind\"", "\"mast\": {}, \"kind\""),
            "f: entry 1: mast is not a field of a site alignment");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"kind\"", "\"target.azimuth\": 1, \"kind\""),
            "f: entry 1: target.azimuth is not a field of a site alignment");
  EXPECT_EQ(WrongAfter(Entry(SamplePath()), "\"kind\"", "\"a\\u001b[2J\\n\": 1, \"kind\""),
            "f: entry 1: a\\x1b[2J\\n is not a field of a path alignment");
  EXPECT_EQ(WrongAfter(Entry(SampleSite()), "\"note\"", "\"uid\": 1, \"note\""),
            "f: entry 1: options.uid is not a field of a site alignment");
}

TEST(JsonReaderTest, WhatIsDerivedMayBeAnything) {
  QJsonObject entry = AlignmentJson::ToObject(SampleSite(), AlignmentJson::Uid::Without);
  entry["judgement"] = QJsonArray{1};
  entry["verdict"] = QJsonValue::Null;
  entry["uid"] = 7;
  EXPECT_EQ(Wrong(QJsonDocument(QJsonArray{entry}).toJson()), "nothing");
}

TEST(JsonReaderTest, AThousandFaultsAreNamed) {
  QByteArray text = "[1";
  for (int number = 1; number < 1002; ++number) text += ",1";
  const QStringList lines = Wrong(text + "]").split('\n');
  EXPECT_EQ(lines.size(), 1001);
  EXPECT_EQ(lines.at(999), "f: entry 1000: must be an object");
  EXPECT_EQ(lines.last(), "and 2 more");
}

}  // namespace
