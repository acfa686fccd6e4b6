#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include "tests/support/PrintQt.h"

// Collects the debug lines that are written while it lives; the previous handler is put back afterwards.
// Several may be nested; not for use from several threads.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // Whole lines in the order in which they were written.
  QStringList Lines() const { return lines_; }
  // The same, and forgets them.
  QStringList TakeLines();
  // Lines that were not debug lines of category "default" without file, line and function: each with what it
  // carried instead. Empty if all were as they should be.
  QStringList Misfits() const { return misfits_; }

 private:
  static void Handle(QtMsgType type, const QMessageLogContext& context, const QString& text);

  LogCapture* outer_;
  QtMessageHandler previous_;
  QStringList lines_;
  QStringList misfits_;
};
