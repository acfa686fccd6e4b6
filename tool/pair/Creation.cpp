#include "tool/pair/Creation.h"

#include <memory>

#include "store/AllStores.h"
#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/pair/FileCopy.h"
#include "tool/pair/NewFile.h"
#include "tool/pair/Operands.h"
#include "tool/pair/PrivatePair.h"
#include "tool/pair/Snapshot.h"
#include "tool/pair/SourceFile.h"
#include "tool/pair/Versions.h"

namespace {

void RequireMainFile(const QString& name, const Deadline& deadline) {
  const Snapshot file(name, QString(), deadline, Snapshot::Look::Version);
  if (file.Version() == currentSchemaVersion) return;
  throw Failure(FileName::Shown(name) + QStringLiteral(": exists and is of version ") +
                QString::number(file.Version()) + QStringLiteral(", not ") +
                QString::number(currentSchemaVersion));
}

bool NameTheSamePlace(const QString& one, const QString& other) {
  if (FileName::ToBytes(one) == FileName::ToBytes(other)) return true;
  return FileExists(one) && FileExists(other) && SourceFile(one).IsSameFileAs(SourceFile(other));
}

}  // namespace

void RequireThresholdsFile(const QString& name, const Deadline& deadline) {
  Snapshot file(name, QString(), deadline, Snapshot::Look::AsItIs);
  file.Files().Open();
  if (!IsThresholdsFile(file.Files().Db(), Has::AllTables)) {
    throw Failure(FileName::Shown(name) + QStringLiteral(": is no thresholds file"), Status::Damaged);
  }
}

QStringList CreateMissing(const QString& mainName, const QString& thresholdsName, const Deadline& deadline) {
  const QString shownMain = FileName::Shown(mainName);
  if (NameTheSamePlace(mainName, thresholdsName)) {
    FailAsBoth(shownMain);
  }
  const bool makesMain = !FileExists(mainName);
  const bool makesThresholds = !FileExists(thresholdsName);
  if (!makesMain && !makesThresholds) {
    throw Failure(shownMain + QStringLiteral(" and ") + FileName::Shown(thresholdsName) +
                  QStringLiteral(" exist already"));
  }
  if (!makesMain) RequireMainFile(mainName, deadline);
  if (!makesThresholds) RequireThresholdsFile(thresholdsName, deadline);
  PrivateFolder::RemoveLeftovers();
  NewFile::RemoveLeftovers(FileName::ToBytes(mainName));
  NewFile::RemoveLeftovers(FileName::ToBytes(thresholdsName));
  PrivatePair fresh(shownMain, FileName::Shown(thresholdsName));
  Versions::Create(currentSchemaVersion, QString::fromLocal8Bit(fresh.MainPath()),
                   QString::fromLocal8Bit(fresh.ThresholdsPath()));
  fresh.RequirePair();
  std::unique_ptr<NewFile> mainFile;
  std::unique_ptr<NewFile> thresholdsFile;
  if (makesMain) mainFile = std::make_unique<NewFile>(fresh.MainPath(), mainName);
  if (makesThresholds) thresholdsFile = std::make_unique<NewFile>(fresh.ThresholdsPath(), thresholdsName);
  PlaceTogether(mainFile.get(), thresholdsFile.get());
  QStringList created;
  for (const auto* file : {mainFile.get(), thresholdsFile.get()}) {
    if (file != nullptr) created.append(file->Shown());
  }
  return created;
}
