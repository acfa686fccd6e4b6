#include "tool/pair/Backup.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFolder.h"
#include "tool/pair/Snapshot.h"

namespace Backup {
namespace {

constexpr char mainFile[] = "main.sqlite";
constexpr char thresholdsFile[] = "thresholds.sqlite";
constexpr char manifestFile[] = "manifest.json";
const QString mainMember = QStringLiteral("main");
const QString thresholdsMember = QStringLiteral("thresholds");
const QString digestMember = QStringLiteral("digest");
const QString sizeMember = QStringLiteral("size");
const QString hashMember = QStringLiteral("sha256");

QJsonObject PartOf(const QByteArray& path) {
  const Descriptor file(path, O_RDONLY);
  if (!file.IsOpen()) FailWithErrno(path);
  const QString shown = FileName::Shown(path);
  return {{sizeMember, SizeOf(file.Number(), shown)},
          {hashMember, QString::fromLatin1(Sha256(file.Number(), shown))}};
}

/// Over all the rest of the manifest.
QString DigestOf(QJsonObject manifest) {
  manifest.remove(digestMember);
  const QByteArray text = QJsonDocument(manifest).toJson(QJsonDocument::Compact);
  return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex());
}

QByteArray Text(QJsonObject manifest) {
  manifest.insert(digestMember, DigestOf(manifest));
  return QJsonDocument(manifest).toJson();
}

qint64 CountAlignments(const Sqlite& db) {
  return db.Number(
      "SELECT (SELECT count(*) FROM main.AntennaAlignment) + (SELECT count(*) FROM main.PathAlignment)");
}

QString ShownIn(const QString& folder, const char* file) {
  return FileName::Shown(folder) + QLatin1Char('/') + QLatin1String(file);
}

/// A file of the folder, and nothing that stands in its place without end.
class PartFile {
 public:
  PartFile(const QString& folder, const char* name)
      : shown_(ShownIn(folder, name)), file_(FileName::ToBytes(folder) + '/' + name, O_RDONLY | O_NONBLOCK) {
    if (!file_.IsOpen()) FailWithErrno(shown_);
    struct stat status {};
    if (fstat(file_.Number(), &status) != 0 || !S_ISREG(status.st_mode)) {
      throw Failure(shown_ + QStringLiteral(": is not a file"));
    }
  }
  int Number() const { return file_.Number(); }
  const QString& Shown() const { return shown_; }

 private:
  const QString shown_;
  const Descriptor file_;
};

QJsonObject ReadManifest(const QString& folder) {
  constexpr qint64 largest = 1 << 16;
  const PartFile file(folder, manifestFile);
  QByteArray text(int(qMin(SizeOf(file.Number(), file.Shown()), largest)), Qt::Uninitialized);
  const bool isRead = pread(file.Number(), text.data(), std::size_t(text.size()), 0) == text.size();
  QJsonObject manifest = QJsonDocument::fromJson(text).object();
  // Also of what means the same in JSON, not a byte may be another.
  if (isRead && Text(manifest) == text) return manifest;
  throw Failure(ShownIn(folder, manifestFile) +
                QStringLiteral(": is not as 'tarnbeam-db backup' wrote it; nothing was restored"));
}

void CopyPart(const QString& folder, const char* name, const QJsonObject& part, const QByteArray& target) {
  {
    const PartFile file(folder, name);
    CopyInto(file.Number(), file.Shown(), target);
  }
  // Of the copy, so it does not matter what becomes of the folder meanwhile.
  if (PartOf(target) == part) return;
  throw Failure(
      ShownIn(folder, name) +
          QStringLiteral(": is not what was backed up: its size or SHA-256 differs; nothing was restored"),
      Status::Damaged);
}

}  // namespace

void Make(const QString& mainName, const QString& thresholdsName, const QString& folderName,
          const Deadline& deadline, const std::function<void(const Summary&)>& announce) {
  Snapshot snapshot(mainName, thresholdsName, deadline);
  PrivatePair& files = snapshot.Files();
  files.RequireBelonging();
  const Summary summary{files.Version(), CountAlignments(files.Db()), QDateTime::currentDateTimeUtc()};
  files.Close();
  NewFolder folder(folderName);
  QJsonObject manifest{{QStringLiteral("version"), int(summary.version)},
                       {QStringLiteral("alignments"), summary.alignments},
                       {QStringLiteral("time"), summary.time.toString(Qt::ISODate)},
                       {QStringLiteral("programVersion"), QStringLiteral(TARNBEAM_VERSION)},
                       {mainMember, PartOf(files.MainPath())}};
  folder.Copy(files.MainPath(), mainFile);
  if (files.HasThresholds()) {
    manifest.insert(thresholdsMember, PartOf(files.ThresholdsPath()));
    folder.Copy(files.ThresholdsPath(), thresholdsFile);
  }
  folder.Write(Text(manifest), manifestFile);
  announce(summary);
  folder.Place();
}

Checked::Checked(const QString& folder, bool asPair)
    : files_(ShownIn(folder, mainFile), asPair ? ShownIn(folder, thresholdsFile) : QString()) {
  const QJsonObject manifest = ReadManifest(folder);
  said_ = {unsigned(manifest.value(QStringLiteral("version")).toInt()),
           qint64(manifest.value(QStringLiteral("alignments")).toDouble()),
           QDateTime::fromString(manifest.value(QStringLiteral("time")).toString(), Qt::ISODate)};
  const bool isPair = manifest.contains(thresholdsMember);
  if (isPair != asPair) {
    throw WrongUsage(FileName::Shown(folder) +
                     (isPair ? QStringLiteral(": holds a pair, so THRESHOLDS has to be given")
                             : QStringLiteral(": holds a main file alone: leave THRESHOLDS out")));
  }
  CopyPart(folder, mainFile, manifest.value(mainMember).toObject(), files_.MainPath());
  if (isPair) {
    CopyPart(folder, thresholdsFile, manifest.value(thresholdsMember).toObject(), files_.ThresholdsPath());
  }
  files_.RequirePair();
  files_.RequireBelonging();
  if (files_.Version() != said_.version || CountAlignments(files_.Db()) != said_.alignments) {
    throw Failure(ShownIn(folder, mainFile) +
                      QStringLiteral(": has another version or number of alignments than the manifest says; "
                                     "nothing was restored"),
                  Status::Damaged);
  }
  files_.Close();
}

}  // namespace Backup
