#include "tests/support/PowerCut.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/Fault.h"
#include "tests/support/FileCalls.h"
#include "tests/support/NextDefinition.h"

namespace {

using Inode = std::pair<dev_t, ino_t>;

// A descriptor of its own keeps the file, whatever becomes of its name. It is never closed: that would
// release the locks that SQLite holds on the file.
struct Held {
  int descriptor = -1;
  mode_t mode = 0;
};

struct Unsynced {
  Held file;
  QByteArray synced;
};

// A name that was made, removed or replaced.
struct NameChange {
  Inode folder;
  QByteArray from;  // empty: `name` is new; else it was called so before
  QByteArray name;
  Held replaced;  // what it stood for before, if anything
  bool removed = false;
};

struct State {
  QByteArray ignoredSyncs;
  std::map<Inode, Unsynced> files;
  std::vector<NameChange> names;
};

State* active = nullptr;

Inode InodeOf(const struct stat& info) { return {info.st_dev, info.st_ino}; }

Inode FolderOf(const QByteArray& path) {
  const auto slash = path.lastIndexOf('/');
  struct stat info = {};
  stat(slash < 0 ? "." : path.left(slash + 1).constData(), &info);
  return InodeOf(info);
}

bool IsFile(const char* path) {
  struct stat info = {};
  return lstat(path, &info) == 0 && S_ISREG(info.st_mode);
}

QByteArray LinkTo(int descriptor) { return "/proc/self/fd/" + QByteArray::number(descriptor); }

Held Hold(const char* path) {
  Held held;
  held.descriptor = NEXT_DEFINITION(open)(path, O_RDWR | O_CLOEXEC);
  struct stat info = {};
  if (held.descriptor >= 0 && fstat(held.descriptor, &info) == 0) held.mode = info.st_mode & 07777;
  return held;
}

QByteArray ContentsOf(const Held& file) {
  struct stat info = {};
  fstat(file.descriptor, &info);
  QByteArray contents(static_cast<int>(info.st_size), '\0');
  if (pread(file.descriptor, contents.data(), static_cast<std::size_t>(contents.size()), 0) != info.st_size) {
    std::perror("the contents of a file for the power cut");
  }
  return contents;
}

void SetContents(int descriptor, const QByteArray& contents) {
  const auto size = static_cast<std::size_t>(contents.size());
  if (NEXT_DEFINITION(ftruncate)(descriptor, contents.size()) != 0 ||
      NEXT_DEFINITION(pwrite)(descriptor, contents.constData(), size, 0) != contents.size()) {
    std::perror("a file after the power cut");
  }
}

// The file is about to be changed.
void Remember(const char* path) {
  struct stat info = {};
  if (stat(path, &info) != 0 || !S_ISREG(info.st_mode) || active->files.count(InodeOf(info)) > 0) return;
  const Held held = Hold(path);
  active->files[InodeOf(info)] = {held, ContentsOf(held)};
}

void Sync(int descriptor) {
  char path[PATH_MAX];
  const ssize_t length = readlink(LinkTo(descriptor).constData(), path, sizeof path);
  const QByteArray name(path, static_cast<int>(std::max<ssize_t>(length, 0)));
  if (!active->ignoredSyncs.isEmpty() && name.contains(active->ignoredSyncs)) return;
  struct stat info = {};
  fstat(descriptor, &info);
  active->files.erase(InodeOf(info));
  auto& names = active->names;
  names.erase(std::remove_if(names.begin(), names.end(),
                             [&](const NameChange& change) { return change.folder == InodeOf(info); }),
              names.end());
}

// Between the two contents: a file that grew has its new size, one that shrank its old one.
QByteArray Torn(const QByteArray& synced, const QByteArray& written) {
  constexpr int sector = 512;
  const int size = static_cast<int>(std::max(synced.size(), written.size()));
  QByteArray torn = synced + QByteArray(size - static_cast<int>(synced.size()), '\0');
  int differing = 0;
  for (int at = 0; at < size; at += sector) {
    const QByteArray part = written.mid(at, sector);
    if (part == torn.mid(at, sector) || ++differing % 2 == 0) continue;
    const int kept = differing == 1 ? sector / 2 : sector;
    torn.replace(at, std::min<int>(kept, static_cast<int>(part.size())), part.left(kept));
  }
  return torn;
}

void TakeBackContents(const std::map<Inode, Unsynced>& files, PowerCut::Data data) {
  if (data == PowerCut::Data::Kept) return;
  for (const auto& [inode, unsynced] : files) {
    const bool torn = data == PowerCut::Data::Torn;
    SetContents(unsynced.file.descriptor,
                torn ? Torn(unsynced.synced, ContentsOf(unsynced.file)) : unsynced.synced);
  }
}

void PutBack(const Held& file, const QByteArray& name) {
  const int descriptor =
      NEXT_DEFINITION(open)(name.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, file.mode);
  SetContents(descriptor, ContentsOf(file));
  fchmod(descriptor, file.mode);
  NEXT_DEFINITION(close)(descriptor);
}

void TakeBackNames(const std::vector<NameChange>& names) {
  for (auto change = names.rbegin(); change != names.rend(); ++change) {
    if (!change->from.isEmpty()) {
      NEXT_DEFINITION(rename)(change->name.constData(), change->from.constData());
    } else if (!change->removed) {
      NEXT_DEFINITION(unlink)(change->name.constData());
    }
    if (change->replaced.descriptor >= 0) PutBack(change->replaced, change->name);
  }
}

[[noreturn]] void Happen(const PowerCut::Loss& loss) {
  State* const state = std::exchange(active, nullptr);
  TakeBackContents(state->files, loss.data);
  if (loss.names == PowerCut::Names::Undone) TakeBackNames(state->names);
  delete state;
  LeaveProcess(Fault::killedStatus);
}

}  // namespace

int PowerCut::RunUntil(int number, const Loss& loss, const std::function<bool()>& work,
                       const QByteArray& ignoredSyncs) {
  return RunInChild([&] {
    active = new State;
    active->ignoredSyncs = ignoredSyncs;
    FileCalls::Record();
    if (number > 0) FileCalls::Arm(Fault::Before("", [&] { Happen(loss); }).At(number));
    if (work() && number == 0) Happen(loss);
  });
}

void PowerCut::Before(const char* name, int descriptor) {
  if (!active) return;
  const QByteArray call(name);
  if (call == "sync") Sync(descriptor);
  if (call == "write" || call == "truncate" || call == "copy") Remember(LinkTo(descriptor).constData());
}

void PowerCut::Before(const char* name, const char* path) {
  if (!active) return;
  const QByteArray call(name);
  if (call == "unlink" && IsFile(path)) active->names.push_back({FolderOf(path), {}, path, Hold(path), true});
  if (call != "create") return;
  Remember(path);
  struct stat info = {};
  if (stat(path, &info) != 0) active->names.push_back({FolderOf(path), {}, path, {}, false});
}

void PowerCut::Before(const char* name, const char* from, const char* to) {
  if (!active) return;
  const QByteArray call(name);
  if (call == "link") active->names.push_back({FolderOf(to), {}, to, {}, false});
  // A rename that will be refused, as one to another file system is, leaves nothing to take back.
  struct stat info = {};
  if (call != "rename" || lstat(from, &info) != 0 || info.st_dev != FolderOf(to).first) return;
  active->names.push_back({FolderOf(to), from, to, IsFile(to) ? Hold(to) : Held(), false});
}
