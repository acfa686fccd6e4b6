#pragma once

#include "tests/robustness/StoreOperations.h"

// The outcomes that each kind of operation may have when one call fails on the way. Each returns an empty
// text, or what is wrong with the outcome. What an operation writes is compared with what it writes without a
// fault; which part of that may be missing, and with which result, is said here.
namespace Allowed {

QString Creation(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString Reading(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString Listing(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString SiteReports(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString PathReports(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString Save(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString SiteDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString PathDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString ReportDeletion(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString PreferencesSave(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString PreferencesRestore(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString ScreensStore(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString ScreensClear(const Outcome& outcome, const Outcome& clean, FaultLevel level);
QString ScreensRestore(const Outcome& outcome, const Outcome& clean, FaultLevel level);

// What a writing operation may have left when its process ended on the way: nothing, what it commits first,
// or all of it.
QString Interrupted(const Change& main, const Change& thresholds, const Outcome& clean);

}  // namespace Allowed
