#include "tool/pair/Saving.h"

#include "tool/Console.h"

namespace {

/// Rows that one saved alignment adds to a table.
struct Growth {
  const char* table;
  int perSite;
  int perPath;
};

constexpr std::array<Growth, 7> Growths = {{{"main.AntennaAlignment", 1, 0},
                                            {"main.PathAlignment", 0, 1},
                                            {"main.Orientation", 2, 2},
                                            {"main.Geolocation", 1, 2},
                                            {"main.Height", 1, 1},
                                            {"thresholds.AntennaAlignmentThresholds", 1, 0},
                                            {"thresholds.PathAlignmentThresholds", 0, 1}}};

}  // namespace

Saving::Saving(const PrivatePair& copies) : copies_(copies), store_(copies.Store()), before_(Count()) {}

Saving::Counts Saving::Count() const {
  Counts counts{};
  for (std::size_t at = 0; at < Growths.size(); ++at) {
    counts.at(at) = copies_.Db().Number(QByteArray("SELECT count(*) FROM ") + Growths.at(at).table);
  }
  return counts;
}

void Saving::Save(const Alignment& alignment, const QString& what) {
  const bool saved = ::Save(store_.get(), alignment);
  call_.RequireSuccess(saved, what + QStringLiteral(": could not be saved, so nothing was"));
  ++(alignment.kind == Kind::Site ? sites_ : paths_);
}

void Saving::RequireAllKept() {
  const Counts after = Count();
  for (std::size_t at = 0; at < Growths.size(); ++at) {
    const Growth& growth = Growths.at(at);
    const qint64 wanted = sites_ * growth.perSite + paths_ * growth.perPath;
    const qint64 found = after.at(at) - before_.at(at);
    if (found == wanted) continue;
    throw Failure(QLatin1String(growth.table) + QStringLiteral(" took ") + QString::number(found) +
                  QStringLiteral(" of ") + Console::Counted(wanted, QStringLiteral("row")) +
                  QStringLiteral(", perhaps because of a trigger; nothing was saved"));
  }
}
