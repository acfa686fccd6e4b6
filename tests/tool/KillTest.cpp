// A run is killed at every system call that changes one of the user's files: both are as they were or as they
// were to be, for whoever looks at them next, and the next change succeeds.
#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <algorithm>
#include <array>

#include "tests/support/DatabaseDump.h"
#include "tests/tool/ToolTest.h"

namespace {

// Runs a program step by step from one system call to the next.
class Traced {
 public:
  Traced(const QString& folder, const QStringList& words) : folder_(folder) {
    QList<QByteArray> bytes{TARNBEAM_TOOL};
    for (const QString& word : words) bytes.append(word.toUtf8());
    std::vector<char*> argv;
    for (QByteArray& word : bytes) argv.push_back(word.data());
    argv.push_back(nullptr);
    const QByteArray place = folder.toUtf8();
    child_ = fork();
    if (child_ == 0) {
      const int nowhere = open("/dev/null", O_RDWR);
      for (int descriptor : {0, 1, 2}) dup2(nowhere, descriptor);
      // The leak sanitizer cannot look at a process that is traced.
      setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
      if (chdir(place.constData()) == 0 && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0) {
        execv(TARNBEAM_TOOL, argv.data());
      }
      _exit(127);
    }
    int status = 0;
    waitpid(child_, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  }

  // Lets it run until its nth call that changes a file in the folder, and kills it there; false if it ended
  // by itself before that.
  bool KillAt(int number) {
    int signal = 0;
    for (;;) {
      int status = 0;
      if (ptrace(PTRACE_SYSCALL, child_, nullptr, signal) != 0 || waitpid(child_, &status, 0) != child_)
        return false;
      if (WIFEXITED(status) || WIFSIGNALED(status)) {
        exitStatus_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return false;
      }
      const int stopped = WSTOPSIG(status);
      signal = stopped == (SIGTRAP | 0x80) || stopped == SIGTRAP ? 0 : stopped;
      if (stopped != (SIGTRAP | 0x80) || !EntersChange()) continue;
      if (++calls_ < number) continue;
      kill(child_, SIGKILL);
      waitpid(child_, &status, 0);
      return true;
    }
  }

  int Calls() const { return calls_; }
  int ExitStatus() const { return exitStatus_; }

 private:
  bool EntersChange() const {
    __ptrace_syscall_info info{};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, child_, sizeof info, &info) <= 0) return false;
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY) return false;
    const auto& arguments = info.entry.args;
    switch (info.entry.nr) {
      case SYS_write:
      case SYS_pwrite64:
      case SYS_ftruncate:
      case SYS_fsync:
      case SYS_fdatasync:
      case SYS_fchmod:
      case SYS_fallocate:
        return LeadsThere(int(arguments[0]));
#ifdef SYS_unlink
      case SYS_unlink:
      case SYS_rename:
      case SYS_link:
        return IsThere(AT_FDCWD, arguments[0]);
#endif
      case SYS_unlinkat:
      case SYS_renameat2:
      case SYS_linkat:
        return IsThere(int(arguments[0]), arguments[1]);
      case SYS_openat:
        return (arguments[2] & O_CREAT) != 0 && IsThere(int(arguments[0]), arguments[1]);
      default:
        return false;
    }
  }

  bool LeadsThere(int descriptor) const {
    const QString target = QFile::symLinkTarget(QString("/proc/%1/fd/%2").arg(child_).arg(descriptor));
    return (target + '/').startsWith(folder_ + '/');
  }

  // The program empties its own folders using names relative to them.
  bool IsThere(int folder, quint64 address) const {
    // In two pieces: the page after the one that the text begins in need not be there.
    constexpr quint64 PageSize = 4096;
    std::array<char, 512> text{};
    const size_t wanted = text.size() - 1;
    const size_t inPage = std::min<size_t>(wanted, PageSize - address % PageSize);
    iovec local{text.data(), wanted};
    const std::array<iovec, 2> remote{iovec{reinterpret_cast<void*>(address), inPage},
                                      iovec{reinterpret_cast<void*>(address + inPage), wanted - inPage}};
    if (process_vm_readv(child_, &local, 1, remote.data(), remote.size(), 0) <= 0) return false;
    const QByteArray path(text.data());
    if (path.startsWith('/')) return path.startsWith(folder_.toUtf8() + '/');
    return folder == AT_FDCWD || LeadsThere(folder);
  }

  const QString folder_;
  pid_t child_ = -1;
  int calls_ = 0;
  int exitStatus_ = -1;
};

struct Change {
  const char* name;
  QStringList words;
};

void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }

class KillTest : public ToolTest, public testing::WithParamInterface<Change> {
 protected:
  // A pair in the middle of its life, in a mode of its own.
  void SetUp() override {
    CreateFilesWith({SiteEntry("S", "1"), SiteEntry("S", "2"), PathEntry("P")});
    WriteJson("none.json", {});
    WriteJson("more.json", {SiteEntry("T"), PathEntry("P"), PathEntry("Q")});
    ASSERT_TRUE(QDir(Folder()).mkdir("source"));
    RunWell({"create", "source/m", "source/t"});
    RunWell({"import", "source/m", "source/t", "more.json"});
    mainFile_ = ReadFile("m");
    thresholds_ = ReadFile("t");
    before_ = Exported();
  }

  void Restore() {
    for (const QString& name : FilesInFolder()) {
      if (!name.endsWith(".json")) QFile::remove(Path(name));
    }
    WriteFile("m", mainFile_);
    WriteFile("t", thresholds_);
  }

  // What a reading command makes of it; it changes nothing of what was left behind.
  QString Exported() {
    const QStringList files = FilesInFolder();
    const QString exported = RunWell({"export", "m", "t"});
    EXPECT_EQ(FilesInFolder(), files);
    return exported;
  }

  // Of both, as SQLite itself reads them with what was left behind.
  QString Dumped() const {
    EXPECT_EQ(IntegrityCheck(Path("m")), QString("ok"));
    EXPECT_EQ(IntegrityCheck(Path("t")), QString("ok"));
    return DumpDatabase(Path("m")) + DumpDatabase(Path("t"));
  }

  QByteArray mainFile_;
  QByteArray thresholds_;
  QString before_;
};

// Every call with TARNBEAM_FULL_SWEEPS=1, else every third and all of the last ones, among them those of the
// commit.
TEST_P(KillTest, BothFilesAreBeforeOrAfter) {
  Traced whole(Folder(), GetParam().words);
  EXPECT_FALSE(whole.KillAt(1 << 30));
  ASSERT_EQ(whole.ExitStatus(), 0);
  const QString after = Exported();
  const QString dumpedAfter = Dumped();
  Restore();
  const QString dumpedBefore = Dumped();
  ASSERT_NE(after, before_);
  ASSERT_GT(whole.Calls(), 10);
  const bool all = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1;
  int oldOnes = 0;
  int newOnes = 0;
  for (int number = 1; number <= whole.Calls(); ++number) {
    if (!all && number % 3 != 1 && number <= whole.Calls() - 15) continue;
    SCOPED_TRACE(number);
    Restore();
    Traced killed(Folder(), GetParam().words);
    ASSERT_TRUE(killed.KillAt(number));
    const QString exported = Exported();
    ASSERT_TRUE(exported == before_ || exported == after) << exported.toStdString();
    ++(exported == before_ ? oldOnes : newOnes);
    const QStringList left = FilesInFolder();
    // The next change succeeds, and removes what was left.
    if (number % 4 == 0) {
      EXPECT_EQ(RunWell({"import", "m", "t", "none.json"}),
                "0 alignments saved, 0 of sites and 0 of paths\n");
      EXPECT_EQ(FilesInFolder(), (QStringList{"in.json", "m", "more.json", "none.json", "source", "t"}))
          << left.join(' ').toStdString();
    }
    EXPECT_EQ(Dumped(), exported == before_ ? dumpedBefore : dumpedAfter);
    if (HasFailure()) return;
  }
  EXPECT_GT(oldOnes, 5);
  EXPECT_GT(newOnes, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Tool, KillTest,
    testing::Values(Change{"Import", {"import", "m", "t", "more.json"}},
                    Change{"Merge", {"merge", "m", "t", "source/m", "source/t"}},
                    Change{"DeleteSite", {"delete", "m", "t", "--site", "S", "--yes"}},
                    Change{"DeleteReport", {"delete", "m", "t", "--path", "P", "--index", "0", "--yes"}}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
