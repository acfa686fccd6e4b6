#pragma once

#include <QDir>
#include <QFileInfo>
#include <QStringList>

// What every descriptor of the process stands for, sorted; the one that reads the list is not among them.
inline QStringList OpenDescriptors() {
  QStringList targets;
  const QFileInfoList entries =
      QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::System | QDir::Files);
  for (const QFileInfo& entry : entries) targets << entry.symLinkTarget();
  targets.sort();
  return targets;
}
