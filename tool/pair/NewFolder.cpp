#include "tool/pair/NewFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFile.h"

namespace {

/// Only files are ever made in such a folder.
void RemoveFolder(const QByteArray& path) {
  for (const QByteArray& file : PathsLike(path, "/*")) unlink(file.constData());
  rmdir(path.constData());
}

/// A link that leads nowhere, too.
bool Exists(const QByteArray& path) {
  struct stat status {};
  return lstat(path.constData(), &status) == 0;
}

bool MoveFolder(const QByteArray& from, const QByteArray& to) {
  if (MoveToFreePlace(from, to)) return true;
  // A file system that knows no such move, and no links of folders. An empty folder is all that could be
  // lost.
  return errno == EPERM && !Exists(to) && rename(from.constData(), to.constData()) == 0;
}

}  // namespace

NewFolder::NewFolder(const QString& name) : shown_(FileName::Shown(name)), path_(FileName::ToBytes(name)) {
  while (path_.size() > 1 && path_.endsWith('/')) path_.chop(1);
  if (Exists(path_)) throw Failure(shown_ + QStringLiteral(": exists already"));
  RemoveLeftovers(path_);
  beside_ = path_ + ".creating-XXXXXX";
  if (mkdtemp(beside_.data()) == nullptr) FailWithErrno(shown_);
  descriptor_ = open(beside_.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  // Held as long as the run lives: what nobody holds was left by one that was killed.
  if (descriptor_ >= 0) flock(descriptor_, LOCK_EX | LOCK_NB);
}

NewFolder::~NewFolder() {
  if (!beside_.isEmpty()) RemoveFolder(beside_);
  if (descriptor_ >= 0) close(descriptor_);
}

void NewFolder::Copy(const QByteArray& from, const char* name) const {
  const Descriptor source(from, O_RDONLY);
  if (!source.IsOpen()) FailWithErrno(from);
  const QByteArray target = beside_ + '/' + name;
  const Descriptor file(target, O_WRONLY | O_CREAT | O_EXCL, 0666);
  if (!file.IsOpen()) FailWithErrno(target);
  CopyContent(source.Number(), shown_, file.Number(), target);
  if (fsync(file.Number()) != 0) FailWithErrno(target);
}

void NewFolder::Write(const QByteArray& content, const char* name) const {
  const QByteArray target = beside_ + '/' + name;
  const Descriptor file(target, O_WRONLY | O_CREAT | O_EXCL, 0666);
  if (!file.IsOpen()) FailWithErrno(target);
  WriteAll(file.Number(), content.constData(), content.size(), target);
  if (fsync(file.Number()) != 0) FailWithErrno(target);
}

void NewFolder::Place() {
  constexpr mode_t mayBeEntered = 0111;
  // Who may read a file that is simply made may enter the folder.
  const mode_t mode = OrdinaryMode();
  if (chmod(beside_.constData(), mode | (mode >> 2 & mayBeEntered)) != 0) FailWithErrno(shown_);
  Sync(beside_);
  if (!MoveFolder(beside_, path_)) FailWithErrno(shown_);
  beside_.clear();
  try {
    Sync(FolderOf(path_));
  } catch (...) {
    RemoveFolder(path_);
    throw;
  }
}

void NewFolder::RemoveLeftovers(const QByteArray& path) {
  for (const QByteArray& beside : PathsLike(path, ".creating-??????")) {
    const Descriptor left(beside, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (left.IsOpen() && flock(left.Number(), LOCK_EX | LOCK_NB) == 0) RemoveFolder(beside);
  }
}
