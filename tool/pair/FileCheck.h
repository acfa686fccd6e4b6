#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "tool/pair/CheckRules.h"
#include "tool/pair/PrivatePair.h"

/// Looks private copies over by every rule there is.
class FileCheck {
 public:
  /// The rule that what is damaged breaks.
  static constexpr char Integrity[] = "integrity errors";

  explicit FileCheck(PrivatePair* files);

  const std::vector<Finding>& Findings() const { return findings_; }
  Finding::Severity Worst() const;
  /// 0 where there is none to be read.
  qint64 Version() const { return version_; }

 private:
  /// Files that a rule is about; it is looked at where these are sound.
  enum class About { Main, Thresholds };

  void Add(About file, const char* rule, Finding::Severity severity, const QStringList& found);
  /// Calls `look`; what it cannot read is an error, too.
  void Look(About file, const char* rule, Finding::Severity severity,
            const std::function<QStringList()>& look);
  void Skip(About file, const char* rule);
  void LookAtMain();
  void LookAtThresholds();
  void LookAtPair();
  bool LookAtFile(About file);
  bool LookAtSchema(About file, const Sqlite& db, const QByteArray& freshPath);
  void LookByRules(About file, const Sqlite* db, const std::vector<CheckRule>& rules);
  bool IsConverted() const;

  PrivatePair* const files_;
  std::vector<Finding> findings_;
  qint64 version_ = 0;
  bool mainIsSound_ = false;
  bool thresholdsAreSound_ = false;
};
