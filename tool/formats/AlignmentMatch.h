#pragma once

#include <QString>
#include <tuple>

#include "tool/Alignment.h"

/// Identifies a measurement among others, even if its values differ: kind, identifier, sector, position and
/// time.
using MatchKey = std::tuple<Kind, QString, QString, QString, qint64>;
MatchKey MatchKeyOf(const Alignment& alignment);

/// The same as it can be shown on a line: "site S, sector A, position 1, 2024-05-14T07:12:33Z".
QString ShownMatch(const Alignment& alignment);
