#pragma once

#include <QByteArray>

/// What killed runs of commands that change files left, there and beside the files.
namespace Leftovers {

/// To be called while the two files are locked, or were looked at by SQLite; without thresholds file that
/// path is empty. Journals that still belong to the files stay.
void Remove(const QByteArray& mainPath, const QByteArray& thresholdsPath);

/// A journal of this file that a killed run had only begun: it is empty or starts with a zero, and SQLite
/// ignores it.
void RemoveBegunJournal(const QByteArray& path);

/// The name of a journal that two files share in a change, with something random in it.
QByteArray NewSuperJournal(const QByteArray& mainPath);

}  // namespace Leftovers
