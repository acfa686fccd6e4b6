#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

#include "store/AlignmentDatabaseVersion7.h"
#include "tool/Alignment.h"

/// The schema version of files that this program works on, and the newest it can make.
constexpr unsigned int CurrentVersion = 7;

/// The version that a main file carries, asked of the library. Throws a Failure, naming the file, for one
/// that is missing, no database, or without a version; the library itself would create a missing file.
unsigned int RequireVersion(const QString& mainPath);

/// All alignments of a site or path, and the name of the file for their page.
struct Reports {
  Kind kind = Kind::Site;
  QString identifier;
  QString pdfName;
  std::vector<Alignment> alignments;
};

/// A main file of the current version with its thresholds file. Every failure, also one that the library
/// tells of in its debug lines alone, is thrown as a Failure.
class AlignmentFiles {
 public:
  /// Throws a Failure unless both are what they have to be.
  AlignmentFiles(const QString& mainPath, const QString& thresholdsPath);

  /// Identifiers of all sites or paths, in the order of the file.
  QStringList Identifiers(Kind kind) const;
  /// Fails for an identifier that is not stored.
  Reports ReadReports(Kind kind, const QString& identifier) const;
  /// The same for one that is known to be stored.
  Reports ReadKnown(Kind kind, const QString& identifier) const;

  AlignmentDatabaseVersion7* Store() const { return store_.get(); }

 private:
  const QString mainPath_;
  std::unique_ptr<AlignmentDatabaseVersion7> store_;
};

/// Fails if both paths lead to the same file.
void RequireDifferentFiles(const QString& mainPath, const QString& thresholdsPath);
/// Fails unless the path holds a thresholds file.
void RequireThresholdsFile(const QString& path);
