#pragma once

#include <QCoreApplication>
#include <QSet>
#include <QString>
#include <QTimeZone>
#include <memory>

#include "tool/Alignment.h"

/// Reports on paper: what a rigger hands over. Needs Qt GUI; a program built without it says so.
namespace ReportPdf {

/// The application object, with what drawing needs where --pdf is among the arguments.
std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv);

/// What stands at the head of every first page; empty texts are left out.
struct Head {
  QString title;
  QTimeZone timeZone = QTimeZone::utc();
  QString serialNumber;
  QString calibrationDate;
  QString technician;
};

/// Writes pages into a folder, a file for each site or path.
class Writer {
 public:
  /// Throws a Failure if there is no such folder.
  Writer(const QString& folder, const Head& head);

  /// Writes a file and returns its path. Either it is on the disk whole and an earlier one is gone; or a
  /// Failure is thrown, and an earlier one is as it was. No two calls write the same file.
  QString Write(const Reports& reports);

 private:
  QString NewPath(const Reports& reports);

  const QString folder_;
  const Head head_;
  QSet<QString> names_;
};

}  // namespace ReportPdf
