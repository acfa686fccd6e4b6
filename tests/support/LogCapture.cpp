#include "tests/support/LogCapture.h"

#include <utility>

namespace {
LogCapture* innermost = nullptr;
}

LogCapture::LogCapture() : outer_(innermost), previous_(qInstallMessageHandler(&LogCapture::Handle)) {
  innermost = this;
}

LogCapture::~LogCapture() {
  innermost = outer_;
  qInstallMessageHandler(previous_);
}

QStringList LogCapture::TakeLines() { return std::exchange(lines_, QStringList()); }

void LogCapture::Handle(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  innermost->lines_.append(text);
  if (type == QtDebugMsg && qstrcmp(context.category, "default") == 0 && !context.file && !context.function &&
      context.line == 0) {
    return;
  }
  innermost->misfits_.append(QStringLiteral("type=%1 category=%2 file=%3 line=%4 function=%5: %6")
                                 .arg(static_cast<int>(type))
                                 .arg(QLatin1String(context.category), QLatin1String(context.file))
                                 .arg(context.line)
                                 .arg(QLatin1String(context.function), text));
}
