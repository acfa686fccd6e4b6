#pragma once

#include <QStringList>

#include "tests/store/StoreVersions.h"
#include "tests/support/SampleAlignments.h"

// The rows of a file in dump form, without its schema, version record and sequences. The form shows the
// storage class of every value: reals have a point, texts are quoted.
inline QStringList SavedRows(const QString& path) {
  QStringList rows;
  for (const QString& line : DumpDatabase(path).split('\n', Qt::SkipEmptyParts)) {
    const QString table = line.section('|', 0, 0);
    if (table != "schema" && table != "Version" && table != "sqlite_sequence") rows.append(line);
  }
  return rows;
}

// The optional columns that end the alignment rows of sample 2, whose tilt inversion is on.
inline QString SiteColumnsOfSample2(const StoreVersion& version) {
  QString columns;
  if (version.HasTiltInversion()) columns += "|1";
  if (version.HasSiteNote()) columns += "|'note 2'";
  if (version.HasRollPrecision()) columns += "|12";
  return columns;
}
inline QString PathColumnsOfSample2(const StoreVersion& version) {
  QString columns;
  if (version.HasTiltInversion()) columns += "|1";
  if (version.HasPathNote()) columns += "|'note 2'";
  return columns;
}
