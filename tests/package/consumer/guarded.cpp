#include <cstdio>
#include <memory>

#include "core/OperationGuard.h"
#include "store/AlignmentDatabaseVersion7.h"

int main() {
  std::unique_ptr<AlignmentDatabaseVersion7> store(
      AlignmentDatabaseVersion7::Open("main.sqlite", "thresholds.sqlite"));

  OperationGuard::Limits limits;
  limits.milliseconds = 5000;  // for each call; the default is no limit
  OperationGuard guard(limits);
  const QVector<QString> sites = store->GetSiteIdentifiers();
  for (const QString& site : sites) std::printf("%s\n", qPrintable(site));

  for (const OperationGuard::Failure& failure : guard.Failures())
    std::fprintf(stderr, "%d: %s\n", failure.code, qPrintable(failure.text));
  return guard.Succeeded() ? 0 : 1;
}
