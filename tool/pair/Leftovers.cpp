#include "tool/pair/Leftovers.h"

#include <unistd.h>

#include <QList>
#include <QRandomGenerator>
#include <array>

#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFile.h"

namespace {

// SQLite names those of its own so, too.
constexpr char superJournalSuffix[] = "-mj";
constexpr int randomDigits = 9;

/// It is of no use once neither file has a journal of its own.
void RemoveIfAbandoned(const QByteArray& superJournal) {
  const Descriptor file(superJournal, O_RDONLY);
  if (!file.IsOpen()) return;
  std::array<char, 1 << 14> names{};
  const ssize_t size = pread(file.Number(), names.data(), names.size(), 0);
  if (size < 0) return;
  for (const QByteArray& name : QByteArray(names.data(), int(size)).split('\0')) {
    if (!name.isEmpty() && access(name.constData(), F_OK) == 0) return;
  }
  unlink(superJournal.constData());
}

}  // namespace

namespace Leftovers {

void Remove(const QByteArray& mainPath, const QByteArray& thresholdsPath) {
  for (const QByteArray& path : {mainPath, thresholdsPath}) {
    if (!path.isEmpty()) NewFile::RemoveLeftovers(path);
  }
  const QByteArray pattern = superJournalSuffix + QByteArray(randomDigits, '?');
  for (const QByteArray& superJournal : PathsLike(mainPath, pattern.constData())) {
    RemoveIfAbandoned(superJournal);
  }
}

void RemoveBegunJournal(const QByteArray& path) {
  const QByteArray journal = path + "-journal";
  char first = 0;
  const Descriptor file(journal, O_RDONLY);
  if (file.IsOpen() && pread(file.Number(), &first, 1, 0) >= 0 && first == 0) unlink(journal.constData());
}

QByteArray NewSuperJournal(const QByteArray& mainPath) {
  const QByteArray digits =
      QByteArray::number(QRandomGenerator::system()->generate64(), 16).toUpper().right(randomDigits);
  return mainPath + superJournalSuffix + digits.rightJustified(randomDigits, '0');
}

}  // namespace Leftovers
