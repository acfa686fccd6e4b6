#pragma once

#include <QString>
#include <memory>

#include "store/AllStores.h"

/// What differs by schema version is asked of the library's stores.
namespace Versions {

/// Version 7 brought the thresholds file.
constexpr unsigned int firstWithThresholds = 7;

bool IsKnown(qint64 version);

/// The store of a known version over existing files; its destructor is its class's own.
std::shared_ptr<IAlignmentDatabase> Open(unsigned int version, const QString& mainPath,
                                         const QString& thresholdsPath);
/// Makes new files of a known version; throws a Failure if that fails.
void Create(unsigned int version, const QString& mainPath, const QString& thresholdsPath);

/// The number by now of a height's source: heights by GPS had another one in earlier versions.
qint64 CurrentHeightType(unsigned int version, qint64 stored);

/// Throws a Failure (4) for a version that this program does not know.
void RequireKnown(qint64 version, const QString& shownMain);

}  // namespace Versions
