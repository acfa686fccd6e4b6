#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "tests/support/PrintQt.h"

// What the two files hold, byte for byte; a null text means that the file is not there.
struct Contents {
  QByteArray main;
  QByteArray thresholds;
};

// Rows and schema entries that one file has gained and lost, in the order of the canonical dump. Key
// sequences are left out: they may run ahead.
struct Change {
  QStringList made;
  QStringList gone;

  bool IsNone() const { return made.isEmpty() && gone.isEmpty(); }
  bool operator==(const Change& other) const { return made == other.made && gone == other.gone; }
};

// Lines of the canonical dump without key sequences; none for a file that is missing or empty.
QStringList LinesOf(const QString& path);

// The table that a line of a dump belongs to, whether it is a row or the table's schema entry.
QString TableOf(const QString& line);

QByteArray ReadFile(const QString& path);
void WriteFile(const QString& path, const QByteArray& bytes);

// Two files in a folder of their own that can be put back to where they started. The folder is in memory
// where there is such a file system: a sweep syncs files thousands of times.
class Scene {
 public:
  explicit Scene(const Contents& start) : Scene(start, FolderForSweeps()) {}
  Scene(const Contents& start, const QString& parentFolder);

  QString Main() const { return Path(QStringLiteral("main.sqlite")); }
  QString Thresholds() const { return Path(QStringLiteral("thresholds.sqlite")); }
  QString Path(const QString& name) const { return folder_.filePath(name); }

  // Both files as they were, and no journals beside them.
  void Restore();
  // Lets the engine finish what an interrupted writer left, and fails the test unless both files are
  // sound: integrity and foreign keys.
  void ExpectSound() const;

  Change MainChange() const { return ChangeOf(Main(), start_.main, mainLines_); }
  Change ThresholdsChange() const { return ChangeOf(Thresholds(), start_.thresholds, thresholdsLines_); }

 private:
  static QString FolderForSweeps();
  static Change ChangeOf(const QString& path, const QByteArray& bytesBefore, const QStringList& before);

  QTemporaryDir folder_;
  Contents start_;
  QStringList mainLines_;
  QStringList thresholdsLines_;
};

inline void PrintTo(const Change& change, std::ostream* out) {
  *out << "made ";
  PrintTo(change.made, out);
  *out << "; gone ";
  PrintTo(change.gone, out);
}
