#pragma once

#include <QtGlobal>

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>

// Sets the local encoding for as long as an object of it lives.
class LocalEncoding {
 public:
  // Whether it can be anything other than UTF-8.
  static constexpr bool varies = true;

  explicit LocalEncoding(const char* name) { QTextCodec::setCodecForLocale(QTextCodec::codecForName(name)); }
  ~LocalEncoding() { QTextCodec::setCodecForLocale(before_); }
  LocalEncoding(const LocalEncoding&) = delete;
  LocalEncoding& operator=(const LocalEncoding&) = delete;

 private:
  QTextCodec* const before_ = QTextCodec::codecForLocale();
};
#else
// From Qt 6 on the local encoding is UTF-8 on every Unix, whatever the locale says.
class LocalEncoding {
 public:
  static constexpr bool varies = false;

  explicit LocalEncoding(const char* /*name*/) {}
};
#endif
