#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QJsonParseError>
#include <QJsonValue>
#include <QSet>
#include <QString>
#include <QVector>

/// Walks through a JSON text that is one array, an element at a time, so that memory has to hold no more than
/// one of them. Each element is read by Qt; what Qt passes over in silence is found on the way to its end.
class JsonElements {
 public:
  /// Something about an element that its value does not tell.
  struct Fault {
    QString member;
    QString what;
  };

  /// The source is read from where it stands and stays the caller's. Messages begin with the name.
  JsonElements(QIODevice* source, const QString& shownName);

  /// Reads the next element; false after the last. Throws a Failure for a text that this class does not
  /// accept: not JSON, not an array, not UTF-8, too large, too deep.
  bool Next(QJsonValue* element);
  /// Of the element last read: members that occur twice, and numbers out of reach. These read as 0.
  const QVector<Fault>& Faults() const { return faults_; }

 private:
  /// An object or array that has begun and not ended.
  struct Frame {
    bool isObject;
    bool expectsName;
    QString name;
    QSet<QString> names;
  };

  int Get();
  void Unget() { --position_; }
  int GetNonBlank();
  bool Fill();
  void Start();
  void RequireEnd();
  void Collect(int first);
  bool CollectBracket(char bracket);
  void CollectString();
  void CollectNumber(char first);
  void NoteName(const QByteArray& quoted);
  QString MemberName() const;
  QJsonValue Parse(int firstLine) const;
  [[noreturn]] void Fail(const QString& what) const;
  [[noreturn]] void FailAtLine(int line, const QString& what) const;
  [[noreturn]] void FailLikeParser(QJsonParseError::ParseError error) const;

  QIODevice* const source_;
  const QString shownName_;
  QByteArray buffer_;
  decltype(QByteArray().size()) position_ = 0;
  qint64 bytesRead_ = 0;
  int line_ = 1;
  bool started_ = false;
  bool isFirst_ = true;
  QByteArray text_;
  QVector<Frame> frames_;
  QVector<Fault> faults_;
};
