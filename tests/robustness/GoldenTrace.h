#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

// The calls to SQLite and the debug lines of an operation, as they are checked in under tests/golden/traces.
// Whatever is changed inside the library, they stay as they are, unless they were meant to change.

// How an operation is traced: `run` puts the files back, runs it and returns its result in words. Texts of
// `names`, paths most of all, are replaced by their names. `endless` says of a call that the operation does
// not return once that call has failed.
struct TracedOperation {
  std::function<QString()> run;
  QMap<QString, QString> names;
  std::function<bool(const QString& call)> endless = [](const QString&) { return false; };
};

// The run without any fault: its result, its lines and its calls, with SQL texts spelt out where they are
// prepared and numbered from then on. Then one entry for each of its calls that can fail: the run in which
// that call returns SQLITE_IOERR, by its result, a hash of all its calls, and its lines. Of these, the first
// ones are only counted if they are those of the run without fault.
QString TraceOf(const TracedOperation& operation);

// One file of traces, with a section for each version. A section that is the same as the one before it only
// refers to it.
class GoldenTraces {
 public:
  explicit GoldenTraces(const QString& name) : name_(name) {}

  void Add(const QString& title, const QString& trace);
  // Compares the sections with the file. If TARNBEAM_REWRITE_TRACES=1 is set, writes them there instead and
  // reports the test as skipped.
  void ExpectAsRecorded() const;

 private:
  struct Section {
    QString title;
    QString trace;
  };

  QString Path() const;
  QString Text() const;

  QString name_;
  std::vector<Section> sections_;
};
