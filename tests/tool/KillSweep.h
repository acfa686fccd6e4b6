#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include "tests/tool/ToolTest.h"

// Runs the program step by step from one system call to the next.
class Traced {
 public:
  Traced(const QString& folder, const QStringList& words);
  Traced(const Traced&) = delete;
  Traced& operator=(const Traced&) = delete;

  // Lets it run until its nth call that changes a file in the folder, and kills it there; false if it ended
  // by itself before that.
  bool KillAt(int number);

  int Calls() const { return calls_; }
  int ExitStatus() const { return exitStatus_; }

 private:
  bool EntersChange() const;
  bool LeadsThere(int descriptor) const;
  bool IsThere(int folder, quint64 address) const;

  const QString folder_;
  pid_t child_ = -1;
  int calls_ = 0;
  int exitStatus_ = -1;
};

// A command, and how often it is killed.
struct Change {
  const char* name;
  QStringList words;
  // Of its calls, besides the last ones, each so many-th.
  int every;
};

void PrintTo(const Change& change, std::ostream* out);
std::string NameOf(const testing::TestParamInfo<Change>& test);

// A run is killed at every system call that changes one of the user's files: they are as they were or as they
// were to be, all of them, for whoever looks at them next, and the next change comes through.
class KillSweep : public ToolTest, public testing::WithParamInterface<Change> {
 protected:
  // Keeps the files of the folder for Restore(); not those in further folders, nor those whose names end with
  // .json.
  void Keep();
  void Restore();

  // What a reading command makes of it.
  virtual QString Seen() = 0;
  // Comes through whatever a killed run left, and takes that away; answers the files that are to be there.
  virtual QStringList ChangeAgain() = 0;

  // Every call with TARNBEAM_FULL_SWEEPS=1, else some and all of the last ones, among them those of the
  // commit.
  void Sweep();

 private:
  bool IsOfUser(const QString& name) const;
  // Seen, which changes nothing of what was left behind.
  QString SeenQuietly();
  // The files that are there, as SQLite itself makes them of what was left behind.
  QMap<QString, QString> Dumped() const;
  void ExpectDumped(const QMap<QString, QString>& expected, const QMap<QString, QString>& after) const;

  QMap<QString, QByteArray> files_;
};
