#include "tests/tool/SmallDisk.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <cstdio>

namespace {

// $0 is the program, $1 the room.
const char* const onSmallFileSystem = R"(
room=$1
shift
mount -t tmpfs -o size=${room}k tmpfs disk
cp -p m t disk/ 2>/dev/null
(cd disk && "$0" "$@")
status=$?
rm -f m t
cp -a disk/. .
umount disk
exit $status
)";
const char* const withSmallFiles = R"(
room=$1
shift
cp -p m t disk/ 2>/dev/null
(cd disk && trap "" XFSZ && ulimit -f $((room * 2)) && exec "$0" "$@")
status=$?
rm -f m t
cp -a disk/. .
rm -rf disk/* disk/.[!.]*
exit $status
)";

}  // namespace

bool SmallDisk::LimitsFiles() {
  static const bool mayMount =
      QProcess::execute("unshare", {"--user", "--map-root-user", "--mount", "true"}) == 0;
  return !mayMount || GetParam() == Shortage::SmallFiles;
}

std::string SmallDisk::NameOf(const testing::TestParamInfo<Shortage>& test) {
  return test.param == Shortage::SmallFiles ? "Files" : "FileSystem";
}

Outcome SmallDisk::RunWithRoom(int kilobytes, const QStringList& words) {
  EXPECT_TRUE(QDir(Folder()).mkpath("disk"));
  const bool files = LimitsFiles();
  QStringList call{"sh", "-c", files ? withSmallFiles : onSmallFileSystem, TARNBEAM_TOOL,
                   QString::number(kilobytes)};
  if (!files) call = QStringList{"unshare", "--user", "--map-root-user", "--mount"} + call;
  call += words;
  const Outcome outcome = RunProgram(call.takeFirst(), call);
  EXPECT_TRUE(QDir(Folder()).rmdir("disk"));
  return outcome;
}

void SmallDisk::Sweep(const QStringList& words, int first, int step) {
  if (LimitsFiles() && GetParam() == Shortage::SmallFileSystem) {
    std::puts(
        "[ INSTEAD  ] no file system can be mounted here: files may not grow beyond what it would hold");
  }
  if (qEnvironmentVariableIntValue("TARNBEAM_FULL_SWEEPS") == 1) step = 4;
  QMap<QString, QByteArray> before;
  for (const QString& name : FilesInFolder()) before[name] = ReadFile(name);
  int failed = 0;
  constexpr int enough = 4096;
  for (int room = first; room < enough; room += step) {
    SCOPED_TRACE(room);
    const Outcome outcome = RunWithRoom(room, words);
    if (outcome.status == 0) break;
    ++failed;
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, QString());
    EXPECT_TRUE(outcome.err.startsWith("tarnbeam-db: ")) << outcome.err.toStdString();
    EXPECT_EQ(FilesInFolder(), before.keys());
    for (auto file = before.cbegin(); file != before.cend(); ++file) {
      EXPECT_EQ(ReadFile(file.key()), file.value()) << file.key().toStdString();
    }
    if (HasFailure()) return;
  }
  EXPECT_GE(failed, 3);
}
