#include "tool/formats/JsonElements.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStringList>
#include <cmath>

#include "tool/Console.h"

namespace {

constexpr int endOfText = -1;
constexpr qint64 largestSize = 512LL * 1024 * 1024;
constexpr int deepestLevel = 64;
constexpr int pieceSize = 1 << 16;

bool IsBlank(int character) {
  return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

bool IsOfNumber(int character) {
  return (character >= '0' && character <= '9') || character == '-' || character == '+' || character == '.' ||
         character == 'e' || character == 'E';
}

/// A valid number that 64 bits cannot hold: too large, or so small that nothing of it is left.
bool IsOutOfReach(const QByteArray& number) {
  bool held = false;
  const double value = number.toDouble(&held);
  if (held && std::isfinite(value)) return false;
  static const QRegularExpression Form(QStringLiteral("^-?(0|[1-9]\\d*)(\\.\\d+)?([eE][+-]?\\d+)?$"));
  return Form.match(QString::fromLatin1(number)).hasMatch();
}

QString Message(QJsonParseError::ParseError code) {
  if (code == QJsonParseError::IllegalUTF8String) return QStringLiteral("a text is not UTF-8");
  QJsonParseError error;
  error.error = code;
  return error.errorString();
}

}  // namespace

JsonElements::JsonElements(QIODevice* source, const QString& shownName)
    : source_(source), shownName_(shownName) {}

bool JsonElements::Next(QJsonValue* element) {
  if (!started_) Start();
  int character = GetNonBlank();
  if (character == ']') {
    RequireEnd();
    return false;
  }
  if (!isFirst_) {
    if (character == endOfText) FailLikeParser(QJsonParseError::UnterminatedArray);
    if (character != ',') FailLikeParser(QJsonParseError::MissingValueSeparator);
    character = GetNonBlank();
    if (character == ']') FailLikeParser(QJsonParseError::IllegalValue);
  }
  if (character == endOfText) FailLikeParser(QJsonParseError::UnterminatedArray);
  isFirst_ = false;
  const int firstLine = line_;
  Collect(character);
  *element = Parse(firstLine);
  return true;
}

int JsonElements::Get() {
  if (position_ == buffer_.size() && !Fill()) return endOfText;
  const char character = buffer_.at(position_++);
  return static_cast<unsigned char>(character);
}

/// What was read last is kept in front, for the one character that may be put back.
bool JsonElements::Fill() {
  const QByteArray kept = buffer_.right(1);
  const QByteArray piece = source_->read(pieceSize);
  if (piece.isEmpty()) {
    if (!source_->atEnd()) Fail(source_->errorString());
    return false;
  }
  bytesRead_ += piece.size();
  if (bytesRead_ > largestSize) Fail(QStringLiteral("is larger than 512 MiB; split it into several files"));
  buffer_ = kept + piece;
  position_ = kept.size();
  return true;
}

int JsonElements::GetNonBlank() {
  int character = Get();
  for (; IsBlank(character); character = Get()) line_ += character == '\n' ? 1 : 0;
  return character;
}

void JsonElements::Start() {
  started_ = true;
  if (source_->size() > largestSize) {
    Fail(QStringLiteral("is larger than 512 MiB; split it into several files"));
  }
  const QByteArray start = source_->peek(3);
  if (start == "\xEF\xBB\xBF" || start.startsWith("\xFF\xFE") || start.startsWith("\xFE\xFF")) {
    Fail(QStringLiteral("begins with a byte-order mark; save it as UTF-8 without one"));
  }
  if (GetNonBlank() != '[') Fail(QStringLiteral("must be an array of alignments"));
}

void JsonElements::RequireEnd() {
  if (GetNonBlank() != endOfText) FailLikeParser(QJsonParseError::GarbageAtEnd);
}

/// Takes the text of an element, to its end or to where the parser is sure to find fault with it.
void JsonElements::Collect(int first) {
  text_.clear();
  frames_.clear();
  faults_.clear();
  for (int character = first; character != endOfText; character = Get()) {
    const char byte = static_cast<char>(character);
    if (byte == '{' || byte == '[' || ((byte == '}' || byte == ']') && !frames_.isEmpty())) {
      if (!CollectBracket(byte)) return;
    } else if (frames_.isEmpty() && (byte == ',' || byte == ']')) {
      Unget();
      return;
    } else if (byte == '"') {
      CollectString();
    } else if (byte == '-' || (byte >= '0' && byte <= '9')) {
      CollectNumber(byte);
    } else {
      if (byte == ',') frames_.last().expectsName = frames_.last().isObject;
      if (byte == '\n') ++line_;
      text_ += byte;
    }
  }
}

/// False if the element ends, or ought not to have gone on like this.
bool JsonElements::CollectBracket(char bracket) {
  text_ += bracket;
  if (bracket == '{' || bracket == '[') {
    if (frames_.size() == deepestLevel) {
      Fail(QStringLiteral("line %1: is nested deeper than %2 levels").arg(line_).arg(deepestLevel));
    }
    frames_.append({bracket == '{', bracket == '{', QString(), {}});
    return true;
  }
  if (frames_.last().isObject != (bracket == '}')) return false;
  frames_.removeLast();
  return !frames_.isEmpty();
}

void JsonElements::CollectString() {
  const auto begin = text_.size();
  text_ += '"';
  bool escaped = false;
  for (int character = Get(); character != endOfText; character = Get()) {
    text_ += static_cast<char>(character);
    if (character == '\n') ++line_;
    if (character == '"' && !escaped) {
      if (!frames_.isEmpty() && frames_.last().expectsName) NoteName(text_.mid(begin));
      return;
    }
    escaped = character == '\\' && !escaped;
  }
}

void JsonElements::CollectNumber(char first) {
  QByteArray number(1, first);
  int character = Get();
  for (; IsOfNumber(character); character = Get()) number += static_cast<char>(character);
  if (character != endOfText) Unget();
  if (!IsOutOfReach(number)) {
    text_ += number;
    return;
  }
  constexpr int mostShown = 40;
  const QString shown = QString::fromLatin1(number.left(mostShown)) +
                        (number.size() > mostShown ? QStringLiteral("...") : QString());
  faults_.append({MemberName(), QStringLiteral("is too large or too small for a number: %1").arg(shown)});
  text_ += '0';
}

void JsonElements::NoteName(const QByteArray& quoted) {
  Frame& object = frames_.last();
  object.expectsName = false;
  object.name = QString::fromUtf8(quoted.mid(1, quoted.size() - 2));
  if (quoted.contains('\\')) {
    object.name = QJsonDocument::fromJson('[' + quoted + ']').array().at(0).toString(object.name);
  }
  if (object.names.contains(object.name)) {
    faults_.append({MemberName(), QStringLiteral("is there twice")});
  }
  object.names.insert(object.name);
}

QString JsonElements::MemberName() const {
  QStringList names;
  for (const Frame& frame : frames_) {
    if (frame.isObject) names.append(frame.name);
  }
  return names.join(QLatin1Char('.'));
}

QJsonValue JsonElements::Parse(int firstLine) const {
  QJsonParseError error{};
  const QJsonDocument document = QJsonDocument::fromJson('[' + text_ + ']', &error);
  if (error.error != QJsonParseError::NoError) {
    FailAtLine(firstLine + static_cast<int>(text_.left(error.offset - 1).count('\n')), Message(error.error));
  }
  return document.array().at(0);
}

void JsonElements::Fail(const QString& what) const {
  throw Failure(QStringLiteral("%1: %2").arg(shownName_, what));
}

void JsonElements::FailAtLine(int line, const QString& what) const {
  Fail(QStringLiteral("line %1: %2").arg(QString::number(line), what));
}

void JsonElements::FailLikeParser(QJsonParseError::ParseError error) const {
  FailAtLine(line_, Message(error));
}
