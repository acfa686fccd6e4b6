#include "tests/tool/KillSweep.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>

#include "tests/support/DatabaseDump.h"

Traced::Traced(const QString& folder, const QStringList& words) : folder_(folder) {
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

bool Traced::KillAt(int number) {
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

bool Traced::EntersChange() const {
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

bool Traced::LeadsThere(int descriptor) const {
  const QString target = QFile::symLinkTarget(QString("/proc/%1/fd/%2").arg(child_).arg(descriptor));
  return (target + '/').startsWith(folder_ + '/');
}

// The program empties its own folders using names relative to them.
bool Traced::IsThere(int folder, quint64 address) const {
  // In two pieces: the page after the one that the text begins in need not be there.
  constexpr quint64 pageSize = 4096;
  std::array<char, 512> text{};
  const size_t wanted = text.size() - 1;
  const size_t inPage = std::min<size_t>(wanted, pageSize - address % pageSize);
  iovec local{text.data(), wanted};
  const std::array<iovec, 2> remote{iovec{reinterpret_cast<void*>(address), inPage},
                                    iovec{reinterpret_cast<void*>(address + inPage), wanted - inPage}};
  if (process_vm_readv(child_, &local, 1, remote.data(), remote.size(), 0) <= 0) return false;
  const QByteArray path(text.data());
  if (path.startsWith('/')) return path.startsWith(folder_.toUtf8() + '/');
  return folder == AT_FDCWD || LeadsThere(folder);
}

void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }

std::string NameOf(const testing::TestParamInfo<Change>& test) { return test.param.name; }

bool KillSweep::IsOfUser(const QString& name) const {
  return !name.endsWith(".json") && QFileInfo(Path(name)).isFile();
}

void KillSweep::Keep() {
  for (const QString& name : FilesInFolder()) {
    if (IsOfUser(name)) files_[name] = ReadFile(name);
  }
}

void KillSweep::Restore() {
  for (const QString& name : FilesInFolder()) {
    if (IsOfUser(name)) QFile::remove(Path(name));
  }
  for (auto file = files_.cbegin(); file != files_.cend(); ++file) WriteFile(file.key(), file.value());
}

QString KillSweep::SeenQuietly() {
  const QStringList files = FilesInFolder();
  const QString seen = Seen();
  EXPECT_EQ(FilesInFolder(), files);
  return seen;
}

QMap<QString, QString> KillSweep::Dumped() const {
  QMap<QString, QString> dumped;
  for (const char* name : {"m", "t"}) {
    if (!QFile::exists(Path(name))) continue;
    EXPECT_EQ(IntegrityCheck(Path(name)), QString("ok"));
    dumped[name] = DumpDatabase(Path(name));
  }
  return dumped;
}

void KillSweep::ExpectDumped(const QMap<QString, QString>& expected,
                             const QMap<QString, QString>& after) const {
  const QMap<QString, QString> dumped = Dumped();
  for (auto file = dumped.cbegin(); file != dumped.cend(); ++file) {
    // One that was not there before is whole.
    EXPECT_EQ(file.value(), expected.value(file.key(), after.value(file.key())));
  }
  for (const QString& name : expected.keys()) EXPECT_TRUE(dumped.contains(name)) << name.toStdString();
}

void KillSweep::Sweep() {
  const QString before = SeenQuietly();
  Traced whole(Folder(), GetParam().words);
  EXPECT_FALSE(whole.KillAt(1 << 30));
  ASSERT_EQ(whole.ExitStatus(), 0);
  const QString after = SeenQuietly();
  const QMap<QString, QString> dumpedAfter = Dumped();
  Restore();
  const QMap<QString, QString> dumpedBefore = Dumped();
  ASSERT_NE(after, before);
  ASSERT_GT(whole.Calls(), 5);
  const bool all = qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1;
  int oldOnes = 0;
  int newOnes = 0;
  for (int number = 1; number <= whole.Calls(); ++number) {
    if (!all && (number - 1) % GetParam().every != 0 && number <= whole.Calls() - 15) continue;
    SCOPED_TRACE(number);
    Restore();
    Traced killed(Folder(), GetParam().words);
    ASSERT_TRUE(killed.KillAt(number));
    QString seen = SeenQuietly();
    ASSERT_TRUE(seen == before || seen == after) << seen.toStdString();
    ++(seen == before ? oldOnes : newOnes);
    const QStringList left = FilesInFolder();
    if (number % 4 == 0) {
      const QStringList files = ChangeAgain();
      EXPECT_EQ(FilesInFolder(), files) << left.join(' ').toStdString();
      seen = SeenQuietly();
    }
    ExpectDumped(seen == before ? dumpedBefore : dumpedAfter, dumpedAfter);
    if (HasFailure()) return;
  }
  EXPECT_GT(oldOnes, 3);
  EXPECT_GT(newOnes, 0);
}
