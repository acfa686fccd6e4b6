#include "tool/pair/NewFile.h"

#include <fcntl.h>
#include <glob.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"

mode_t OrdinaryMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

bool MoveToFreePlace(const QByteArray& from, const QByteArray& to) {
  if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  if (link(from.constData(), to.constData()) != 0) return false;
  unlink(from.constData());
  return true;
}

NewFile::NewFile(const QByteArray& content, const QString& name)
    : shown_(FileName::Shown(name)), path_(FileName::ToBytes(name)) {
  beside_ = path_ + ".creating-XXXXXX";
  descriptor_ = mkostemp(beside_.data(), O_CLOEXEC);
  if (descriptor_ < 0) FailWithErrno(shown_);
  try {
    // Locked as long as the run lives: a file that nobody has locked was left by a run that was killed.
    flock(descriptor_, LOCK_EX | LOCK_NB);
    const Descriptor source(content, O_RDONLY);
    if (!source.IsOpen()) FailWithErrno(content);
    CopyContent(source.Number(), shown_, descriptor_, path_);
    if (fchmod(descriptor_, OrdinaryMode()) != 0 || fsync(descriptor_) != 0) FailWithErrno(shown_);
  } catch (...) {
    unlink(beside_.constData());
    close(descriptor_);
    throw;
  }
}

NewFile::~NewFile() {
  if (!beside_.isEmpty()) unlink(beside_.constData());
  close(descriptor_);
}

void NewFile::Place() {
  if (!MoveToFreePlace(beside_, path_)) FailWithErrno(shown_);
  beside_.clear();
  try {
    Sync(FolderOf(path_));
  } catch (...) {
    TakeBack();
    throw;
  }
}

void NewFile::TakeBack() {
  if (beside_.isEmpty()) unlink(path_.constData());
}

void NewFile::RemoveLeftovers(const QByteArray& path) {
  for (const QByteArray& beside : PathsLike(path, ".creating-??????")) {
    const Descriptor left(beside, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (left.IsOpen() && flock(left.Number(), LOCK_EX | LOCK_NB) == 0) unlink(beside.constData());
  }
}

void PlaceTogether(NewFile* mainFile, NewFile* thresholdsFile) {
  if (thresholdsFile != nullptr) thresholdsFile->Place();
  try {
    if (mainFile != nullptr) mainFile->Place();
  } catch (...) {
    if (thresholdsFile != nullptr) thresholdsFile->TakeBack();
    throw;
  }
}

std::vector<QByteArray> PathsLike(const QByteArray& path, const char* pattern) {
  QByteArray whole;
  for (const char character : path) {
    // In the path itself nothing stands for more than itself.
    if (std::strchr("\\*?[", character) != nullptr) whole += '\\';
    whole += character;
  }
  whole += pattern;
  std::vector<QByteArray> paths;
  glob_t found{};
  if (glob(whole.constData(), GLOB_NOSORT, nullptr, &found) == 0) {
    paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  return paths;
}
