#pragma once

#include <QByteArray>

#include "tool/formats/AlignmentWriter.h"

// Alignments of which no two values are alike.
Alignment SampleSite();
Alignment SamplePath();

Reports ReportsOf(const std::vector<Alignment>& alignments);

// A moment in UTC, ISO 8601.
QDateTime Moment(const char* text);

// Keeps what is written.
class Written {
 public:
  TextSink Sink() {
    return [this](const QByteArray& piece) { text_ += piece; };
  }
  const QByteArray& Text() const { return text_; }

 private:
  QByteArray text_;
};
