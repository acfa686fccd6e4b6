#pragma once

#include <QByteArray>
#include <QString>

/// Well-formed files from which the fuzzer starts: as small as SQLite makes them.
namespace Seeds {

struct Pair {
  QString main;
  QString thresholds;
};

/// Files of the current version with alignments of two sites and two paths, preferences and both screens.
void MakeCurrent(const Pair& files);

/// One file for every golden dump, for the current version and for every text in fuzz/hostile/, in the
/// folders "main" and "thresholds" below `folder`.
void MakeAll(const QString& folder);

QByteArray Read(const QString& path);
void Write(const QString& path, const QByteArray& content);

}  // namespace Seeds
