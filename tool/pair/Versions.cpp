#include "tool/pair/Versions.h"

#include "model/HeightSource.h"
#include "tool/Console.h"
#include "tool/pair/LibraryCall.h"

namespace {

using Opener = std::shared_ptr<IAlignmentDatabase> (*)(const QString&, const QString&);

template <typename Store>
std::shared_ptr<IAlignmentDatabase> OpenStore(const QString& mainPath, const QString& thresholdsPath) {
  return std::shared_ptr<Store>(Store::Open(mainPath, thresholdsPath));
}

template <typename Store>
std::shared_ptr<IAlignmentDatabase> CreateStore(const QString& mainPath, const QString& thresholdsPath) {
  return std::shared_ptr<Store>(Store::Create(mainPath, thresholdsPath));
}

// The store at index N - 1 is that of version N.
constexpr auto openers =
    AllStores::Table([](auto store) -> Opener { return &OpenStore<typename decltype(store)::Type>; });
constexpr auto creators =
    AllStores::Table([](auto store) -> Opener { return &CreateStore<typename decltype(store)::Type>; });

}  // namespace

namespace Versions {

bool IsKnown(qint64 version) { return version >= 1 && version <= qint64(currentSchemaVersion); }

std::shared_ptr<IAlignmentDatabase> Open(unsigned int version, const QString& mainPath,
                                         const QString& thresholdsPath) {
  return openers.at(version - 1)(mainPath, thresholdsPath);
}

void Create(unsigned int version, const QString& mainPath, const QString& thresholdsPath) {
  LibraryCall call;
  creators.at(version - 1)(mainPath, thresholdsPath);
  call.RequireSuccess(true, QStringLiteral("new files cannot be made in the folder for temporary files"));
}

qint64 CurrentHeightType(unsigned int version, qint64 stored) {
  constexpr unsigned int lastWithOldNumber = 5;
  return version <= lastWithOldNumber && stored == 1 ? qint64(HeightSource::Gps) : stored;
}

void RequireKnown(qint64 version, const QString& shownMain) {
  if (IsKnown(version)) return;
  QString text = shownMain + QStringLiteral(": is of version ") + QString::number(version);
  text += version > qint64(currentSchemaVersion)
              ? QStringLiteral(", newer than this program knows (")
              : QStringLiteral(", which this program does not know (1 to ");
  throw Failure(text + QString::number(currentSchemaVersion) + QLatin1Char(')'), Status::Damaged);
}

}  // namespace Versions
