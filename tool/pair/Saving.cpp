#include "tool/pair/Saving.h"

#include "tool/Console.h"
#include "tool/pair/Belonging.h"

namespace {

/// Rows that one saved alignment adds to a table.
struct Growth {
  const char* table;
  int perSite;
  int perPath;
};

constexpr std::array<Growth, 7> growths = {{{"main.AntennaAlignment", 1, 0},
                                            {"main.PathAlignment", 0, 1},
                                            {"main.Orientation", 2, 2},
                                            {"main.Geolocation", 1, 2},
                                            {"main.Height", 1, 1},
                                            {"thresholds.AntennaAlignmentThresholds", 1, 0},
                                            {"thresholds.PathAlignmentThresholds", 0, 1}}};

/// What is kept of an alignment besides its keys: numbers, then texts, in the order of ValuesSql.
struct Values {
  std::vector<double> numbers;
  std::vector<QByteArray> texts;
  bool operator==(const Values& other) const { return numbers == other.numbers && texts == other.texts; }
};

// Whole numbers are compared by their 32 bits, whose sign the file does not tell.
Values ValuesOf(const Alignment& a) {
  const auto bits = [](int number) { return static_cast<double>(static_cast<quint32>(number)); };
  Values values;
  // All bits set stand for no time.
  const auto time = static_cast<quint32>(a.time.isValid() ? a.time.toSecsSinceEpoch() : -1);
  values.numbers = {static_cast<double>(time),
                    a.targetAzimuth,
                    a.targetTilt,
                    a.targetRoll,
                    a.measuredAzimuth,
                    a.measuredTilt,
                    a.measuredRoll,
                    a.latitude,
                    a.longitude,
                    a.elevation,
                    a.height,
                    bits(static_cast<int>(a.heightSource)),
                    a.azimuthOffset,
                    a.tiltInversion ? 1.0 : 0.0,
                    a.azimuthThreshold,
                    a.tiltThreshold};
  values.texts = {a.identifier.toUtf8(), a.note.toUtf8()};
  if (a.kind == Kind::Site) {
    values.numbers.insert(values.numbers.end(), {bits(a.rollPrecision), a.rollThreshold});
    values.texts.insert(values.texts.end(), {a.sector.toUtf8(), a.position.toUtf8()});
  } else {
    values.numbers.insert(values.numbers.end(),
                          {a.farLatitude, a.farLongitude, a.farElevation, a.pathLengthThreshold});
  }
  return values;
}

/// The rows of a kind from two keys on, of an alignment and of its thresholds.
QByteArray ValuesSql(Kind kind) {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const bool isSite = kind == Kind::Site;
  const QByteArray owner = tables.ownerKey;
  const QByteArray key = tables.alignmentKey;
  return QByteArray(
             "SELECT a.LinuxTimeUTC & 4294967295, g.AzimuthDegrees, g.TiltDegrees, g.RollDegrees, "
             "m.AzimuthDegrees, m.TiltDegrees, m.RollDegrees, l.LatitudeDegreesNorth, "
             "l.LongitudeDegreesEast, "
             "l.ElevationMeters, h.HeightInMeters, h.HeightType & 4294967295, ") +
         (isSite ? "a.AzimuthOffsetDegrees" : "a.AzimuthOffset") +
         ", a.TiltInversionEnabled, t.AzimuthThreshold, t.TiltThreshold, " +
         (isSite ? "a.RollPrecision & 4294967295, t.RollThreshold"
                 : "f.LatitudeDegreesNorth, f.LongitudeDegreesEast, f.ElevationMeters, "
                   "t.PathLengthThreshold") +
         ", o." + tables.ownerName + ", a.Note" + (isSite ? ", a.SectorName, a.AntennaPosition" : "") +
         " FROM main." + tables.alignments + " a JOIN main." + tables.owners + " o ON o." + owner + " = a." +
         owner +
         " JOIN main.Orientation g ON g.OrientationKey = a.TargetOrientationKey"
         " JOIN main.Orientation m ON m.OrientationKey = a.MeasuredOrientationKey"
         " JOIN main.Geolocation l ON l.GeolocationKey = a.LocationKey"
         " JOIN main.Height h ON h.HeightKey = a.SiteHeightKey" +
         (isSite ? "" : " JOIN main.Geolocation f ON f.GeolocationKey = a.PathLocationKey") +
         " JOIN thresholds." + tables.thresholds + " t ON t." + key + " = a." + key + " AND t." +
         tables.thresholdsOwner + " = a." + owner + " AND t.rowid > ?2 WHERE a." + key + " > ?1 ORDER BY a." +
         key;
}

Values ReadValues(const Sqlite::Rows& rows, const Values& like) {
  Values values;
  int column = 0;
  while (values.numbers.size() < like.numbers.size()) values.numbers.push_back(rows.Real(column++));
  while (values.texts.size() < like.texts.size()) values.texts.push_back(rows.Bytes(column++));
  return values;
}

}  // namespace

Saving::Saving(const PrivatePair& copies)
    : copies_(copies),
      store_(copies.Store()),
      before_(Count()),
      sitesBefore_(EndsOf(Kind::Site)),
      pathsBefore_(EndsOf(Kind::Path)) {}

Saving::Counts Saving::Count() const {
  Counts counts{};
  for (std::size_t at = 0; at < growths.size(); ++at) {
    counts.at(at) = copies_.Db().Number(QByteArray("SELECT count(*) FROM ") + growths.at(at).table);
  }
  return counts;
}

Saving::Ends Saving::EndsOf(Kind kind) const {
  const Belonging::Tables& tables = Belonging::Of(kind);
  const auto end = [&](const QByteArray& table) {
    return copies_.Db().Number("SELECT max(rowid) FROM " + table);
  };
  return {end(QByteArray("main.") + tables.alignments), end(QByteArray("thresholds.") + tables.thresholds)};
}

void Saving::Save(const Alignment& alignment, const QString& what) {
  const bool saved = ::Save(store_.get(), alignment);
  call_.RequireSuccess(saved, what + QStringLiteral(": could not be saved, so nothing was"));
  (alignment.kind == Kind::Site ? sites_ : paths_).push_back(alignment);
}

void Saving::RequireAllKept() {
  RequireRows();
  RequireValues(Kind::Site, sitesBefore_, sites_);
  RequireValues(Kind::Path, pathsBefore_, paths_);
}

void Saving::RequireRows() const {
  const Counts after = Count();
  for (std::size_t at = 0; at < growths.size(); ++at) {
    const Growth& growth = growths.at(at);
    const qint64 wanted = static_cast<qint64>(sites_.size()) * growth.perSite +
                          static_cast<qint64>(paths_.size()) * growth.perPath;
    const qint64 found = after.at(at) - before_.at(at);
    if (found == wanted) continue;
    throw Failure(QLatin1String(growth.table) + QStringLiteral(" took ") + QString::number(found) +
                  QStringLiteral(" of ") + Console::Counted(wanted, QStringLiteral("row")) +
                  QStringLiteral(", perhaps because of a trigger; nothing was saved"));
  }
}

void Saving::RequireValues(Kind kind, const Ends& before, const std::vector<Alignment>& saved) const {
  Sqlite::Rows rows = copies_.Db().Select(ValuesSql(kind));
  rows.Bind(1, before.alignments).Bind(2, before.thresholds);
  for (const Alignment& alignment : saved) {
    const Values wanted = ValuesOf(alignment);
    if (rows.Next() && ReadValues(rows, wanted) == wanted) continue;
    throw Failure(ShownSubject(kind, alignment.identifier) +
                  QStringLiteral(": an alignment is not kept as it was given, perhaps because of a trigger; "
                                 "nothing was saved"));
  }
}
