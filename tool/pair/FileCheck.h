#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

#include "tool/pair/KeyUse.h"
#include "tool/pair/PrivatePair.h"

/// What was found by one rule in one of the files.
struct Finding {
  enum class Severity {
    None,
    Skipped,  ///< Not looked at, since the file is damaged or lacks tables.
    Note,     ///< What normal work leaves.
    Warning,
    Error
  };
  bool inMain = true;
  QString shownFile;
  QString rule;
  Severity severity = Severity::None;
  qint64 count = 0;
  /// The first of the things found.
  QStringList keys;
};

/// Checks private copies by every rule there is.
class FileCheck {
 public:
  /// The rule that what is damaged breaks.
  static constexpr char Integrity[] = "integrity errors";

  explicit FileCheck(PrivatePair* files);

  const std::vector<Finding>& Findings() const { return findings_; }
  Finding::Severity Worst() const;
  /// 0 if none can be read.
  qint64 Version() const { return version_; }

 private:
  /// Files that a rule is about; it is applied only if these are sound.
  enum class About { Main, Thresholds };

  void Add(About file, const char* rule, Finding::Severity severity, const QStringList& found);
  /// Calls `look`; what it cannot read is an error too.
  void Look(About file, const char* rule, Finding::Severity severity,
            const std::function<QStringList()>& look);
  void Skip(About file, const char* rule);
  void LookAtMain();
  void LookAtThresholds();
  void LookAtPair();
  bool LookAtFile(About file, const Sqlite& db);
  bool LookAtSchema(About file, const Sqlite& db, const Sqlite& fresh);
  bool IsConverted() const;

  PrivatePair* const files_;
  const Sqlite main_;
  std::vector<Finding> findings_;
  qint64 version_ = 0;
  /// Known once the main file was found sound.
  std::unique_ptr<KeyUse> used_;
  bool mainIsSound_ = false;
  bool thresholdsAreSound_ = false;
};
