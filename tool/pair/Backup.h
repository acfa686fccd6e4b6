#pragma once

#include <QDateTime>
#include <QString>
#include <functional>

#include "tool/pair/Deadline.h"
#include "tool/pair/PrivatePair.h"

/// A folder with copies of the files and a manifest, by which every byte of it can be checked.
namespace Backup {

/// What the manifest says beside sizes and hashes.
struct Summary {
  unsigned int version = 0;
  qint64 alignments = 0;
  QDateTime time;
};

/// Makes the folder; at its place it is complete or absent. What `announce` throws, for one because nobody
/// can be told, leaves it absent.
void Make(const QString& mainName, const QString& thresholdsName, const QString& folder,
          const Deadline& deadline, const std::function<void(const Summary&)>& announce);

/// A backup, read whole and checked: the manifest to the letter, sizes, hashes, and what the files hold.
class Checked {
 public:
  /// Whether it is to become a pair or a main file alone has to be right; else WrongUsage.
  Checked(const QString& folder, bool asPair);

  const Summary& Said() const { return said_; }
  /// Private copies, closed.
  const PrivatePair& Files() const { return files_; }

 private:
  Summary said_;
  PrivatePair files_;
};

}  // namespace Backup
