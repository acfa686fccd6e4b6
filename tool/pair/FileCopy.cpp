#include "tool/pair/FileCopy.h"

#include <QCryptographicHash>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <vector>

#include "tool/Console.h"
#include "tool/FileName.h"

void WriteAll(int descriptor, const char* content, qint64 size, const QByteArray& target) {
  while (size > 0) {
    const ssize_t count = write(descriptor, content, static_cast<std::size_t>(size));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailWithErrno(target);
    content += count;
    size -= count;
  }
}

void FailWithErrno(const QString& shown) {
  throw Failure(shown + QStringLiteral(": ") + FileName::SystemError(errno));
}

void FailWithErrno(const QByteArray& path) { FailWithErrno(FileName::Shown(path)); }

namespace {

/// Hands on an open file from its beginning, piece by piece.
template <typename Take>
void ReadContent(int from, const QString& shown, Take take) {
  constexpr std::size_t blockSize = 1 << 20;
  std::vector<char> block(blockSize);
  for (off_t at = 0;;) {
    const ssize_t count = pread(from, block.data(), block.size(), at);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) FailWithErrno(shown);
    if (count == 0) return;
    take(block.data(), count);
    at += count;
  }
}

}  // namespace

void CopyContent(int from, const QString& shown, int to, const QByteArray& target) {
  ReadContent(from, shown, [&](const char* content, ssize_t size) { WriteAll(to, content, size, target); });
}

QByteArray Sha256(int descriptor, const QString& shown) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  ReadContent(descriptor, shown, [&](const char* content, ssize_t size) {
    hash.addData(QByteArray::fromRawData(content, int(size)));
  });
  return hash.result().toHex();
}

QByteArray ResolvedPath(const QString& name) {
  std::array<char, PATH_MAX> resolved{};
  if (realpath(FileName::ToBytes(name).constData(), resolved.data()) != nullptr) return resolved.data();
  if (errno == ENOENT) throw Failure(FileName::Shown(name) + QStringLiteral(": no such file"));
  FailWithErrno(FileName::Shown(name));
}

bool FileExists(const QByteArray& path) { return Stamp(path).there; }

bool FileExists(const QString& name) { return FileExists(FileName::ToBytes(name)); }

qint64 SizeOf(int descriptor, const QString& shown) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) FailWithErrno(shown);
  return status.st_size;
}

void CopyInto(int from, const QString& shown, const QByteArray& target) {
  const Descriptor copy(target, O_RDWR | O_CREAT | O_TRUNC, 0600);
  if (!copy.IsOpen()) FailWithErrno(target);
  CopyContent(from, shown, copy.Number(), target);
}

void CopyFile(const QByteArray& from, const QByteArray& target) {
  const Descriptor source(from, O_RDONLY);
  if (!source.IsOpen()) FailWithErrno(from);
  CopyInto(source.Number(), FileName::Shown(from), target);
}

void Sync(const QByteArray& path) {
  const Descriptor file(path, O_RDONLY);
  if (!file.IsOpen() || fsync(file.Number()) != 0) FailWithErrno(path);
}

QByteArray FolderOf(const QByteArray& path) {
  const int slash = static_cast<int>(path.lastIndexOf('/'));
  if (slash < 0) return ".";
  return slash == 0 ? QByteArray("/") : path.left(slash);
}
