#pragma once

#include <QByteArray>
#include <QString>

/// A folder of this run's own for private copies, within the folder for temporary files (TMPDIR, else /tmp).
/// Nobody else can read it. It is removed with everything in it when the run ends, even by a signal that can
/// be caught; what a killed run leaves is named tarnbeam-db-XXXXXX.
class PrivateFolder {
 public:
  PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder();

  /// A file in the folder. The names are few and fixed, so that a signal handler can remove them.
  enum class Name { Main, Thresholds, ReadMain, ReadThresholds, FreshMain, FreshThresholds };
  QByteArray Path(Name name) const;

  /// Whether the path lies in the folder of a run: nothing there has to survive a power cut.
  static bool Holds(const char* path);

  /// Removes the folders of runs that were killed.
  static void RemoveLeftovers();

 private:
  QByteArray path_;
  int descriptor_ = -1;
};
