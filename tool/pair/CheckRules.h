#pragma once

#include <vector>

#include "tool/pair/FileCheck.h"
#include "tool/pair/KeyUse.h"

/// Rules about rows of sound files that belong together, or do not: what a check names, and what a repair
/// takes away.
namespace CheckRules {

struct OfMain {
  const char* name;
  KeyUse::Of table;
};

constexpr OfMain Unused[] = {{"sites that no alignment refers to", KeyUse::Of::Sites},
                             {"paths that no alignment refers to", KeyUse::Of::Paths},
                             {"orientations that no alignment refers to", KeyUse::Of::Orientations},
                             {"locations that no alignment refers to", KeyUse::Of::Locations},
                             {"heights that no alignment refers to", KeyUse::Of::Heights}};

struct OfPair {
  const char* ofSites;
  const char* ofPaths;
  QStringList ThresholdsUse::*found;
  Finding::Severity severity;
  /// Null where nobody can tell what would be right.
  std::vector<qint64> ThresholdsUse::*deletable;
};

constexpr OfPair Thresholds[] = {
    {"site alignments without thresholds", "path alignments without thresholds",
     &ThresholdsUse::alignmentsWithout, Finding::Severity::Warning, nullptr},
    {"thresholds without site alignment", "thresholds without path alignment", &ThresholdsUse::rowsWithout,
     Finding::Severity::Note, &ThresholdsUse::deletableWithout},
    {"two thresholds rows for one site alignment", "two thresholds rows for one path alignment",
     &ThresholdsUse::doubled, Finding::Severity::Warning, &ThresholdsUse::deletableDoubled},
    {"thresholds that name another site than their alignment",
     "thresholds that name another path than their alignment", &ThresholdsUse::ofOthers,
     Finding::Severity::Warning, nullptr}};

}  // namespace CheckRules
