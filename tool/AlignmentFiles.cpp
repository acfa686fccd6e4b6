#include "tool/AlignmentFiles.h"

#include <QFileInfo>

#include "reports/AntennaAlignmentPdfReportData.h"
#include "reports/PathAlignmentPdfReportData.h"
#include "tool/Console.h"
#include "tool/LibraryLog.h"
#include "tool/ReadOnlyDatabase.h"

namespace {

template <typename Container, typename Records>
Reports Gather(Kind kind, const Container& container, const Records& records) {
  Reports reports;
  reports.kind = kind;
  reports.identifier = container.Name();
  reports.pdfName = container.FileName(QStringLiteral(".pdf"));
  for (const auto* record : records) reports.alignments.emplace_back(*record);
  return reports;
}

}  // namespace

unsigned int RequireVersion(const QString& mainPath) {
  RequireDatabaseFile(mainPath);
  LibraryLog::Clear();
  unsigned int version = 0;
  if (!AlignmentDatabase::GetDatabaseFileVersion(mainPath, &version)) {
    LibraryLog::Fail(
        QStringLiteral("%1: carries no version, so it is no main file of alignments").arg(mainPath));
  }
  return version;
}

void RequireDifferentFiles(const QString& mainPath, const QString& thresholdsPath) {
  if (QFileInfo(mainPath).absoluteFilePath() == QFileInfo(thresholdsPath).absoluteFilePath() ||
      (QFileInfo::exists(mainPath) &&
       QFileInfo(mainPath).canonicalFilePath() == QFileInfo(thresholdsPath).canonicalFilePath())) {
    throw Failure(QStringLiteral("%1: cannot be main and thresholds file at once").arg(mainPath));
  }
}

void RequireThresholdsFile(const QString& path) {
  const QStringList tables = ReadOnlyDatabase(path).Column(
      QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name IN "
                     "('PreferencesPathLength','AntennaAlignmentThresholds','PathAlignmentThresholds')"));
  if (tables.size() != 3) throw Failure(QStringLiteral("%1: is no thresholds file").arg(path));
}

AlignmentFiles::AlignmentFiles(const QString& mainPath, const QString& thresholdsPath) : mainPath_(mainPath) {
  RequireDifferentFiles(mainPath, thresholdsPath);
  const unsigned int version = RequireVersion(mainPath);
  if (version < CurrentVersion) {
    throw Failure(QStringLiteral("%1: is of version %2; 'tarnbeam-db migrate' brings it to version %3")
                      .arg(mainPath)
                      .arg(version)
                      .arg(CurrentVersion));
  }
  if (version > CurrentVersion) {
    throw Failure(QStringLiteral("%1: is of version %2, newer than this program knows (%3)")
                      .arg(mainPath)
                      .arg(version)
                      .arg(CurrentVersion));
  }
  RequireThresholdsFile(thresholdsPath);
  store_.reset(AlignmentDatabaseVersion7::Open(mainPath, thresholdsPath));
}

QStringList AlignmentFiles::Identifiers(Kind kind) const {
  LibraryLog::Clear();
  const QVector<QString> identifiers =
      kind == Kind::Site ? store_->GetSiteIdentifiers() : store_->GetPathIdentifiers();
  LibraryLog::FailOnFailures(QStringLiteral("%1: cannot be listed").arg(mainPath_));
  return identifiers.toList();
}

Reports AlignmentFiles::ReadReports(Kind kind, const QString& identifier) const {
  if (!Identifiers(kind).contains(identifier)) {
    throw Failure(QStringLiteral("%1: there is no %2 %3")
                      .arg(mainPath_, KindName(kind), Console::Printable(identifier)));
  }
  return ReadKnown(kind, identifier);
}

Reports AlignmentFiles::ReadKnown(Kind kind, const QString& identifier) const {
  const QString failed = QStringLiteral("%1: the reports of %2 %3 cannot be read")
                             .arg(mainPath_, KindName(kind), Console::Printable(identifier));
  LibraryLog::Clear();
  if (kind == Kind::Site) {
    QString name = identifier;
    const std::unique_ptr<AntennaAlignmentPdfReportData> container(
        store_->GetAlignmentReportDataForSite(name));
    if (container == nullptr) LibraryLog::Fail(failed);
    LibraryLog::FailOnFailures(failed);
    return Gather(kind, *container, *container->AlignmentData());
  }
  const std::unique_ptr<PathAlignmentPdfReportData> container(
      store_->GetPathAlignmentReportDataForSite(identifier));
  if (container == nullptr) LibraryLog::Fail(failed);
  // Both connections of a path's retrieval stay open, and each says so.
  LibraryLog::FailOnFailures(failed, 2);
  return Gather(kind, *container, *container->PathData());
}
