#include "tool/ReportPdf.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QStringList>
#include <QTextOption>
#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <utility>

#include "tool/AlignmentFields.h"
#include "tool/Console.h"
#include "tool/PolarPicture.h"

namespace {

// All measures are in points on A4.
constexpr double PageWidth = 595;
constexpr double PageHeight = 842;
constexpr double Margin = 42;
constexpr double Right = PageWidth - Margin;
constexpr double Bottom = PageHeight - Margin - 18;
constexpr double RowHeight = 14;
constexpr double PictureSize = 165;

const QColor Ink(32, 36, 42);
const QColor Soft(110, 116, 124);
const QColor Rule(205, 209, 214);
const QColor Band(240, 242, 245);
const QColor Passed(26, 127, 72);
const QColor Missed(190, 38, 38);

const std::array<QColor, 6> SectorColors = {QColor(0, 90, 160),   QColor(200, 80, 0),  QColor(0, 130, 110),
                                            QColor(120, 60, 150), QColor(160, 120, 0), QColor(90, 90, 90)};

/// Where the columns of the angles begin; the last one is the verdict.
constexpr std::array<double, 6> ColumnAt = {Margin + 8, 150, 235, 320, 405, 478};

QString Degrees(float value, bool sign = false) {
  const QString text = QString::number(static_cast<double>(value), 'f', 2);
  return (sign && value >= 0 ? QStringLiteral("+") : QString()) + text + QStringLiteral("°");
}

QString OneLine(QString text) { return text.replace(QLatin1Char('\n'), QLatin1Char(' ')); }

/// "pass", "fail", or "no threshold" if no angle of any of the alignments has one.
QString Overall(const std::vector<Alignment>& alignments) {
  QString verdict = QStringLiteral("no threshold");
  for (const Alignment& alignment : alignments) {
    for (const Judgement& angle : Judge(alignment)) {
      if (angle.HasThreshold() && !angle.Passes()) return QStringLiteral("fail");
      if (angle.HasThreshold()) verdict = QStringLiteral("pass");
    }
  }
  return verdict;
}

/// The last measurement of each antenna: what was put right afterwards no longer counts against it.
std::vector<Alignment> LatestOfEach(const std::vector<Alignment>& alignments) {
  std::map<std::pair<QString, QString>, Alignment> latest;
  for (const Alignment& alignment : alignments) {
    const auto [place, isNew] = latest.try_emplace({alignment.sector, alignment.position}, alignment);
    if (!isNew && place->second.time <= alignment.time) place->second = alignment;
  }
  std::vector<Alignment> list;
  list.reserve(latest.size());
  for (const auto& item : latest) list.push_back(item.second);
  return list;
}

QColor VerdictColor(const QString& verdict) {
  if (verdict == QLatin1String("pass")) return Passed;
  return verdict == QLatin1String("fail") ? Missed : Soft;
}

class Page {
 public:
  Page(QPdfWriter* writer, const Reports& reports) : writer_(writer), painter_(writer), reports_(reports) {
    const double scale = writer->resolution() / 72.0;
    painter_.scale(scale, scale);
  }

  bool IsActive() const { return painter_.isActive(); }
  bool End() { return painter_.end(); }

  void Draw() {
    DrawHeading();
    DrawSummary();
    for (const Alignment& alignment : reports_.alignments) DrawAlignment(alignment);
    DrawFooter();
  }

 private:
  void UseFont(double points, bool bold, const QColor& color) {
    QFont font(QStringLiteral("Sans"));
    // Pixels of the scaled painter are points.
    font.setPixelSize(static_cast<int>(points));
    font.setBold(bold);
    painter_.setFont(font);
    painter_.setPen(color);
  }

  /// Text on one line, shortened where it is too long.
  void Text(double x, double y, double width, const QString& text, Qt::Alignment side = Qt::AlignLeft) {
    const QString fitting = painter_.fontMetrics().elidedText(OneLine(text), Qt::ElideRight, int(width));
    painter_.drawText(QRectF(x, y, width, RowHeight * 2), int(side | Qt::AlignTop) | Qt::TextSingleLine,
                      fitting);
  }

  void Line(double y, const QColor& color = Rule) {
    painter_.setPen(QPen(color, 0.6));
    painter_.drawLine(QPointF(Margin, y), QPointF(Right, y));
  }

  void Badge(double right, double y, const QString& verdict) {
    const QRectF box(right - 86, y, 86, 16);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(VerdictColor(verdict));
    painter_.drawRoundedRect(box, 3, 3);
    UseFont(9, true, Qt::white);
    painter_.drawText(box, Qt::AlignCenter, verdict.toUpper());
  }

  void DrawHeading() {
    UseFont(10, false, Soft);
    Text(Margin, Margin, 300,
         reports_.kind == Kind::Site ? QStringLiteral("Site alignment report")
                                     : QStringLiteral("Path alignment report"));
    UseFont(22, true, Ink);
    Text(Margin, Margin + 14, Right - Margin - 100, reports_.identifier);
    Badge(Right, Margin + 20, Overall(LatestOfEach(reports_.alignments)));
    Line(Margin + 46, Ink);
    y_ = Margin + 56;
  }

  QStringList Sectors() const {
    QStringList sectors;
    for (const Alignment& alignment : reports_.alignments) {
      if (!sectors.contains(alignment.sector)) sectors.append(alignment.sector);
    }
    return sectors;
  }

  QColor ColorOf(const Alignment& alignment) const {
    const auto number = static_cast<std::size_t>(Sectors().indexOf(alignment.sector));
    return SectorColors.at(number % SectorColors.size());
  }

  /// Beside the picture: what it shows, and where.
  void DrawSummary() {
    const double top = y_;
    std::vector<Bearing> bearings;
    for (const Alignment& alignment : reports_.alignments) {
      bearings.push_back({static_cast<double>(alignment.targetAzimuth),
                          static_cast<double>(alignment.measuredAzimuth), ColorOf(alignment)});
    }
    UseFont(7, false, Soft);
    DrawPolarPicture(&painter_, QRectF(Right - PictureSize, top, PictureSize, PictureSize), bearings);
    DrawFacts();
    DrawLegend(top + PictureSize);
    UseFont(7, false, Soft);
    Text(Right - PictureSize, top + PictureSize + 1, PictureSize,
         QStringLiteral("azimuth: dashed target, full measured"), Qt::AlignHCenter);
    y_ = top + PictureSize + 20;
  }

  void Fact(const QString& name, const QString& value) {
    UseFont(9, false, Soft);
    Text(Margin, y_, 80, name);
    UseFont(9, false, Ink);
    Text(Margin + 84, y_, Right - PictureSize - Margin - 90, value);
    y_ += RowHeight;
  }

  void DrawFacts() {
    const auto& alignments = reports_.alignments;
    Fact(QStringLiteral("Measurements"), QString::number(alignments.size()));
    if (alignments.empty()) return;
    const auto [first, last] =
        std::minmax_element(alignments.begin(), alignments.end(),
                            [](const Alignment& a, const Alignment& b) { return a.time < b.time; });
    const QString from = first->time.toUTC().toString(QStringLiteral("yyyy-MM-dd"));
    const QString to = last->time.toUTC().toString(QStringLiteral("yyyy-MM-dd"));
    Fact(QStringLiteral("Measured"), from == to ? from : from + QStringLiteral(" to ") + to);
    const Alignment& latest = *last;
    Fact(QStringLiteral("Position"), PositionText(latest.latitude, latest.longitude, latest.elevation));
    Fact(QStringLiteral("Result"), QStringLiteral("by the last measurement of each antenna"));
    if (reports_.kind == Kind::Path) {
      Fact(QStringLiteral("Far end"),
           PositionText(latest.farLatitude, latest.farLongitude, latest.farElevation));
    }
  }

  static QString PositionText(double latitude, double longitude, double elevation) {
    return QStringLiteral("%1° %2, %3° %4, %5 m")
        .arg(std::abs(latitude), 0, 'f', 6)
        .arg(latitude < 0 ? QLatin1Char('S') : QLatin1Char('N'))
        .arg(std::abs(longitude), 0, 'f', 6)
        .arg(longitude < 0 ? QLatin1Char('W') : QLatin1Char('E'))
        .arg(elevation, 0, 'f', 1);
  }

  void DrawLegend(double end) {
    if (reports_.kind == Kind::Path) return;
    y_ += RowHeight / 2;
    const QStringList sectors = Sectors();
    for (int number = 0; number < sectors.size() && y_ + RowHeight <= end; ++number) {
      painter_.fillRect(QRectF(Margin, y_ + 2, 10, 8),
                        SectorColors.at(static_cast<std::size_t>(number) % SectorColors.size()));
      UseFont(9, false, Ink);
      Text(Margin + 16, y_, 200, QStringLiteral("Sector ") + sectors.at(number));
      y_ += RowHeight;
    }
  }

  /// The note is wrapped; a note longer than a page is cut at its end.
  double NoteHeight(const Alignment& alignment) {
    if (alignment.note.isEmpty()) return 0;
    UseFont(9, false, Ink);
    const QRectF space(0, 0, Right - Margin - 60, Bottom - Margin - RowHeight * 8);
    return std::min(
               painter_.boundingRect(space, int(Qt::TextWrapAnywhere) | int(Qt::TextWordWrap), alignment.note)
                   .height(),
               space.height()) +
           4;
  }

  void DrawAlignment(const Alignment& alignment) {
    const std::vector<Judgement> angles = Judge(alignment);
    const double noteHeight = NoteHeight(alignment);
    const double height = RowHeight * (2 + static_cast<double>(angles.size())) + noteHeight + 28;
    if (y_ + height > Bottom) StartPage();
    DrawAlignmentHeading(alignment);
    DrawAngles(angles);
    DrawCircumstances(alignment);
    if (noteHeight > 0) {
      UseFont(9, false, Soft);
      Text(ColumnAt.front(), y_, 50, QStringLiteral("Note"));
      UseFont(9, false, Ink);
      QTextOption wrapped;
      wrapped.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
      painter_.drawText(QRectF(Margin + 60, y_, Right - Margin - 60, noteHeight), alignment.note, wrapped);
      y_ += noteHeight;
    }
    y_ += 9;
  }

  void DrawAlignmentHeading(const Alignment& alignment) {
    painter_.fillRect(QRectF(Margin, y_, Right - Margin, 20), Band);
    painter_.fillRect(QRectF(Margin, y_, 3, 20), ColorOf(alignment));
    UseFont(10, true, Ink);
    const QString name =
        alignment.kind == Kind::Site
            ? QStringLiteral("Sector %1, position %2").arg(alignment.sector, alignment.position)
            : QStringLiteral("Path alignment");
    Text(ColumnAt.front(), y_ + 4, 230, name);
    UseFont(9, false, Ink);
    Text(300, y_ + 4, 150, alignment.time.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'")));
    Badge(Right - 2, y_ + 2, Overall({alignment}));
    y_ += 24;
  }

  void Row(const std::array<QString, 6>& cells) {
    for (std::size_t column = 0; column < cells.size(); ++column) {
      const bool number = column > 0 && column < 5;
      Text(ColumnAt.at(column), y_, 72, cells.at(column), number ? Qt::AlignRight : Qt::AlignLeft);
      if (column == 4) painter_.setPen(Ink);
    }
    y_ += RowHeight;
  }

  void DrawAngles(const std::vector<Judgement>& angles) {
    UseFont(8, false, Soft);
    Row({QString(), QStringLiteral("target"), QStringLiteral("measured"), QStringLiteral("deviation"),
         QStringLiteral("threshold"), QString()});
    Line(y_ - 2);
    for (const Judgement& angle : angles) {
      UseFont(9, false, Ink);
      const QString threshold = angle.HasThreshold() ? Degrees(angle.threshold) : QStringLiteral("–");
      Row({QLatin1String(angle.angle), Degrees(angle.target), Degrees(angle.measured),
           Degrees(angle.deviation, true), threshold, QString()});
      UseFont(9, true, VerdictColor(angle.Verdict()));
      Text(ColumnAt.back() + 10, y_ - RowHeight, 80, angle.Verdict());
    }
    Line(y_);
    y_ += 4;
  }

  void DrawCircumstances(const Alignment& alignment) {
    QStringList facts{
        QStringLiteral("height %1 m (%2)").arg(alignment.height, 0, 'f', 2).arg(SourceText(alignment)),
        QStringLiteral("azimuth offset %1").arg(Degrees(alignment.azimuthOffset))};
    if (alignment.tiltInversion) facts.append(QStringLiteral("tilt inverted"));
    if (alignment.kind == Kind::Path) {
      facts.append(QStringLiteral("roll %1 of %2")
                       .arg(Degrees(alignment.measuredRoll), Degrees(alignment.targetRoll)));
      if (alignment.pathLengthThreshold > 0) {
        facts.append(QStringLiteral("path length threshold %1")
                         .arg(static_cast<double>(alignment.pathLengthThreshold)));
      }
    }
    UseFont(9, false, Soft);
    Text(ColumnAt.front(), y_, Right - ColumnAt.front(), facts.join(QStringLiteral("  ·  ")));
    y_ += RowHeight;
  }

  static QString SourceText(const Alignment& alignment) {
    const auto& fields = FieldsOf(alignment.kind);
    const auto source = std::find_if(fields.begin(), fields.end(), [](const Field& field) {
      return std::strcmp(field.name, "height.source") == 0;
    });
    return FieldText(alignment, *source);
  }

  void DrawFooter() {
    Line(PageHeight - Margin - 14);
    UseFont(8, false, Soft);
    Text(Margin, PageHeight - Margin - 10, 400, reports_.identifier);
    Text(Right - 100, PageHeight - Margin - 10, 100, QStringLiteral("page %1").arg(page_), Qt::AlignRight);
  }

  void StartPage() {
    DrawFooter();
    writer_->newPage();
    ++page_;
    y_ = Margin;
  }

  QPdfWriter* const writer_;
  QPainter painter_;
  const Reports& reports_;
  double y_ = 0;
  int page_ = 1;
};

bool AsksForPdf(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](const char* word) {
    return std::strcmp(word, "--pdf") == 0 || std::strncmp(word, "--pdf=", 6) == 0;
  });
}

}  // namespace

namespace ReportPdf {

std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
  if (argc < 1 || !AsksForPdf(argc, argv)) return std::make_unique<QCoreApplication>(argc, argv);
  // Fonts come with a GUI application; no display is needed.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  return std::make_unique<QGuiApplication>(argc, argv);
}

QString Write(const Reports& reports, const QString& folder) {
  // An identifier may hold what separates folders.
  QString name = reports.pdfName;
  name.replace(QLatin1Char('/'), QLatin1Char('_'));
  QString path = folder + QLatin1Char('/') + name;
  if (!QFileInfo(folder).isDir()) throw Failure(QStringLiteral("%1: no such folder").arg(folder));
  QPdfWriter writer(path);
  writer.setPageSize(QPageSize(QPageSize::A4));
  writer.setPageMargins(QMarginsF(0, 0, 0, 0));
  writer.setTitle(reports.identifier);
  writer.setCreator(QStringLiteral("tarnbeam-db"));
  writer.setResolution(600);
  Page page(&writer, reports);
  if (!page.IsActive()) throw Failure(QStringLiteral("%1: cannot be written").arg(path));
  page.Draw();
  if (!page.End()) throw Failure(QStringLiteral("%1: could not be written whole").arg(path));
  return path;
}

}  // namespace ReportPdf
