#pragma once

#include <QString>
#include <QStringList>

/// The library's debug lines. They are kept, so that an error message can quote them, and shown only where
/// asked for.
namespace LibraryLog {

/// From now on debug lines come here.
void Install();
/// Whether every line also goes to standard error as it comes.
void SetVerbose(bool verbose);
/// Forgets the lines kept, so that those of the next operation stand alone.
void Clear();
/// Those of the lines kept that tell of a failure. Operations on paths leave connections open, and each of
/// those logs a refused close: `refusedCloses` of these are what is meant to be.
QStringList Failures(int refusedCloses = 0);

/// Throws a Failure with the message and all lines kept.
[[noreturn]] void Fail(const QString& message);
/// Fails if a line kept tells of a failure.
void FailOnFailures(const QString& message, int refusedCloses = 0);

}  // namespace LibraryLog
