#include "tool/formats/ReportPdf.h"

#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QStringList>
#include <QTextLayout>
#include <QTextOption>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "tool/Console.h"
#include "tool/FileName.h"
#include "tool/formats/AlignmentFields.h"
#include "tool/formats/MapLine.h"
#include "tool/formats/PolarPicture.h"

namespace {

// All measures are in points on A4.
constexpr double pageWidth = 595;
constexpr double pageHeight = 842;
constexpr double margin = 42;
constexpr double rightEdge = pageWidth - margin;
constexpr double bottom = pageHeight - margin - 18;
constexpr double rowHeight = 14;
constexpr double pictureSize = 165;

const QColor ink(32, 36, 42);
const QColor soft(110, 116, 124);
const QColor rule(205, 209, 214);
const QColor band(240, 242, 245);
const QColor passed(26, 127, 72);
const QColor missed(190, 38, 38);

const std::array<QColor, 6> sectorColors = {QColor(0, 90, 160),   QColor(200, 80, 0),  QColor(0, 130, 110),
                                            QColor(120, 60, 150), QColor(160, 120, 0), QColor(90, 90, 90)};

/// Where the columns of the angles begin; the last one is the verdict.
constexpr std::array<double, 6> columnAt = {margin + 8, 150, 235, 320, 405, 478};

QString Degrees(float value, bool sign = false) {
  const QString text = QString::number(static_cast<double>(value), 'f', 2);
  return (sign && value >= 0 ? QStringLiteral("+") : QString()) + text + QStringLiteral("°");
}

/// What was put right afterwards no longer counts against it.
Verdict Overall(const std::vector<Alignment>& alignments) {
  Verdict verdict = Verdict::None;
  for (const Alignment& alignment : LatestOfEach(alignments)) {
    verdict = Together(verdict, VerdictOf(alignment));
  }
  return verdict;
}

QColor VerdictColor(Verdict verdict) {
  if (verdict == Verdict::Pass) return passed;
  return verdict == Verdict::Fail ? missed : soft;
}

class Page {
 public:
  Page(QPdfWriter* writer, const Reports& reports, const ReportPdf::Head& head)
      : writer_(writer), painter_(writer), reports_(reports), head_(head) {
    for (const Alignment& alignment : reports.alignments) {
      if (!numbers_.contains(alignment.sector)) {
        numbers_.insert(alignment.sector, static_cast<int>(sectors_.size()));
        sectors_.append(alignment.sector);
      }
    }
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
    const QString fitting =
        painter_.fontMetrics().elidedText(Console::Printable(text), Qt::ElideRight, int(width));
    painter_.drawText(QRectF(x, y, width, rowHeight * 2), int(side | Qt::AlignTop) | Qt::TextSingleLine,
                      fitting);
  }

  bool Fits(const QString& text, double width) const {
    const QString shown = Console::Printable(text);
    return painter_.fontMetrics().elidedText(shown, Qt::ElideRight, int(width)) == shown;
  }

  /// Text on as many lines and pages as it takes.
  void Paragraph(double x, double width, const QString& text) {
    const QPen pen = painter_.pen();
    const QString shown = Console::Printable(text);
    QTextLayout layout(shown, painter_.font(), writer_);
    QTextOption wrapped(shown.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft);
    wrapped.setTextDirection(Qt::LayoutDirectionAuto);
    wrapped.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(wrapped);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
      line.setLineWidth(width);
    }
    layout.endLayout();
    for (int number = 0; number < layout.lineCount(); ++number) {
      const QTextLine line = layout.lineAt(number);
      if (y_ + line.height() > bottom) StartPage();
      // The foot of a page has a colour of its own.
      painter_.setPen(pen);
      line.draw(&painter_, QPointF(x, y_ - line.y()));
      y_ += line.height();
    }
  }

  void Line(double y, const QColor& color = rule) {
    painter_.setPen(QPen(color, 0.6));
    painter_.drawLine(QPointF(margin, y), QPointF(rightEdge, y));
  }

  void Badge(double right, double y, Verdict verdict) {
    const QRectF box(right - 86, y, 86, 16);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(VerdictColor(verdict));
    painter_.drawRoundedRect(box, 3, 3);
    UseFont(9, true, Qt::white);
    painter_.drawText(box, Qt::AlignCenter, VerdictWords(verdict).toUpper());
  }

  void DrawHeading() {
    if (!head_.title.isEmpty()) {
      UseFont(11, true, ink);
      const double end = y_ + rowHeight + 6;
      Paragraph(margin, rightEdge - margin, head_.title);
      y_ = std::max(end, y_ + 4);
    }
    UseFont(10, false, soft);
    Text(margin, y_, 300, KindOfReport() + QStringLiteral(" report"));
    y_ += rowHeight + 2;
    Badge(rightEdge, y_ + 6, Overall(reports_.alignments));
    const double width = rightEdge - margin - 100;
    UseFont(22, true, ink);
    if (!Fits(reports_.identifier, width)) UseFont(13, true, ink);
    const double end = y_ + 34;
    Paragraph(margin, width, reports_.identifier);
    y_ = std::max(end, y_ + 2);
    Line(y_, ink);
    y_ += 8;
  }

  QString KindOfReport() const {
    return reports_.kind == Kind::Site ? QStringLiteral("Site alignment") : QStringLiteral("Path alignment");
  }

  QColor ColorOf(const QString& sector) const {
    return sectorColors.at(static_cast<std::size_t>(numbers_.value(sector)) % sectorColors.size());
  }

  QString DateText(const QDateTime& time) const {
    return time.toTimeZone(head_.timeZone).toString(QStringLiteral("yyyy-MM-dd"));
  }

  QString TimeInZone(const QDateTime& time) const {
    const QDateTime there = time.toTimeZone(head_.timeZone);
    // Z, or the offset from UTC.
    QString offset = there.toOffsetFromUtc(there.offsetFromUtc()).toString(Qt::ISODate).mid(19);
    if (offset == QLatin1String("Z")) offset.clear();
    return there.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'")) + offset;
  }

  /// Beside the picture: what it shows, and where.
  void DrawSummary() {
    const double top = y_;
    std::vector<Bearing> bearings;
    for (const Alignment& alignment : reports_.alignments) {
      bearings.push_back({static_cast<double>(alignment.targetAzimuth),
                          static_cast<double>(alignment.measuredAzimuth), ColorOf(alignment.sector)});
    }
    UseFont(7, false, soft);
    DrawPolarPicture(&painter_, QRectF(rightEdge - pictureSize, top, pictureSize, pictureSize), bearings);
    DrawFacts();
    DrawLegend(top + pictureSize);
    UseFont(7, false, soft);
    Text(rightEdge - pictureSize, top + pictureSize + 1, pictureSize,
         QStringLiteral("azimuth: dashed target, full measured"), Qt::AlignHCenter);
    y_ = top + pictureSize + 20;
  }

  void Fact(const QString& name, const QString& value) {
    UseFont(9, false, soft);
    Text(margin, y_, 80, name);
    UseFont(9, false, ink);
    Text(margin + 84, y_, rightEdge - pictureSize - margin - 90, value);
    y_ += rowHeight;
  }

  void DrawFacts() {
    const auto& alignments = reports_.alignments;
    Fact(QStringLiteral("Measurements"), QString::number(alignments.size()));
    if (!alignments.empty()) DrawFactsOfAlignments();
    FactIfKnown(QStringLiteral("Instrument"), head_.serialNumber);
    FactIfKnown(QStringLiteral("Calibrated"), head_.calibrationDate);
    FactIfKnown(QStringLiteral("Technician"), head_.technician);
  }

  void DrawFactsOfAlignments() {
    const auto& alignments = reports_.alignments;
    const auto [first, last] =
        std::minmax_element(alignments.begin(), alignments.end(),
                            [](const Alignment& a, const Alignment& b) { return a.time < b.time; });
    const QString from = DateText(first->time);
    const QString to = DateText(last->time);
    Fact(QStringLiteral("Measured"), from == to ? from : from + QStringLiteral(" to ") + to);
    Fact(QStringLiteral("Result"), QStringLiteral("by the last measurement of each antenna"));
    const Alignment& latest = *last;
    Fact(QStringLiteral("Position"), PositionText(latest.latitude, latest.longitude, latest.elevation));
    if (reports_.kind != Kind::Path) return;
    Fact(QStringLiteral("Far end"),
         PositionText(latest.farLatitude, latest.farLongitude, latest.farElevation));
    const Geodesics::Course course =
        Geodesics::Between({latest.longitude, latest.latitude}, {latest.farLongitude, latest.farLatitude});
    Fact(QStringLiteral("Course"), QStringLiteral("bearing %1°, distance %2 km")
                                       .arg(course.bearingDegrees, 0, 'f', 2)
                                       .arg(course.distanceMeters / 1000, 0, 'f', 3));
  }

  void FactIfKnown(const QString& name, const QString& value) {
    if (!value.isEmpty()) Fact(name, value);
  }

  static QString PositionText(double latitude, double longitude, double elevation) {
    return QStringLiteral("%1° %2, %3° %4, %5 m")
        .arg(std::abs(latitude), 0, 'f', 6)
        .arg(latitude < 0 ? QLatin1Char('S') : QLatin1Char('N'))
        .arg(std::abs(longitude), 0, 'f', 6)
        .arg(longitude < 0 ? QLatin1Char('W') : QLatin1Char('E'))
        .arg(elevation, 0, 'f', 1);
  }

  /// In columns beside the picture; what does not fit is counted.
  void DrawLegend(double end) {
    if (reports_.kind == Kind::Path) return;
    constexpr int columnCount = 3;
    constexpr double columnWidth = 110;
    y_ += rowHeight / 2;
    const int rows = static_cast<int>((end - y_) / rowHeight);
    const int places = rows * columnCount;
    const int count = static_cast<int>(sectors_.size());
    const int shown = count <= places ? count : places - 1;
    for (int number = 0; number < std::min(count, shown + 1); ++number) {
      const int column = number / rows;
      const double x = margin + column * columnWidth;
      const double y = y_ + number % rows * rowHeight;
      UseFont(9, false, ink);
      if (number == shown) {
        Text(x, y, columnWidth, QStringLiteral("and %1 more").arg(count - shown));
        break;
      }
      const QString& sector = sectors_.at(number);
      painter_.fillRect(QRectF(x, y + 2, 10, 8), ColorOf(sector));
      Text(x + 16, y, columnWidth - 20, QStringLiteral("Sector ") + sector);
    }
  }

  void DrawAlignment(const Alignment& alignment) {
    const std::vector<Judgement> angles = Judge(alignment);
    const double noteBegins = alignment.note.isEmpty() ? 0 : rowHeight;
    const double height = rowHeight * (2 + static_cast<double>(angles.size())) + noteBegins + 28;
    if (y_ + height > bottom) StartPage();
    DrawAlignmentHeading(alignment);
    DrawAngles(angles);
    DrawCircumstances(alignment);
    if (!alignment.note.isEmpty()) DrawNote(alignment.note);
    y_ += 9;
  }

  void DrawNote(const QString& note) {
    UseFont(9, false, soft);
    Text(columnAt.front(), y_, 50, QStringLiteral("Note"));
    for (const QString& paragraph : note.split(QLatin1Char('\n'))) {
      UseFont(9, false, ink);
      Paragraph(margin + 60, rightEdge - margin - 60, paragraph);
    }
    y_ += 4;
  }

  void DrawAlignmentHeading(const Alignment& alignment) {
    painter_.fillRect(QRectF(margin, y_, rightEdge - margin, 20), band);
    painter_.fillRect(QRectF(margin, y_, 3, 20), ColorOf(alignment.sector));
    const QString name =
        alignment.kind == Kind::Site
            ? QStringLiteral("Sector %1, position %2").arg(alignment.sector, alignment.position)
            : KindOfReport();
    UseFont(10, true, ink);
    const bool fits = Fits(name, 230);
    Text(columnAt.front(), y_ + 4, 230, fits ? name : KindOfReport());
    UseFont(9, false, ink);
    Text(300, y_ + 4, 160, TimeInZone(alignment.time));
    Badge(rightEdge - 2, y_ + 2, VerdictOf(alignment));
    y_ += 24;
    if (fits) return;
    UseFont(10, true, ink);
    Paragraph(columnAt.front(), rightEdge - columnAt.front(), name);
    y_ += 4;
  }

  void Row(const std::array<QString, 5>& cells) {
    for (std::size_t column = 0; column < cells.size(); ++column) {
      Text(columnAt.at(column), y_, 72, cells.at(column), column > 0 ? Qt::AlignRight : Qt::AlignLeft);
    }
    y_ += rowHeight;
  }

  void DrawAngles(const std::vector<Judgement>& angles) {
    UseFont(8, false, soft);
    Row({QString(), QStringLiteral("target"), QStringLiteral("measured"), QStringLiteral("deviation"),
         QStringLiteral("threshold")});
    Line(y_ - 2);
    for (const Judgement& angle : angles) {
      UseFont(9, false, ink);
      const QString threshold =
          angle.verdict == Verdict::None ? QStringLiteral("–") : Degrees(angle.threshold);
      Row({QLatin1String(angle.angle), Degrees(angle.target), Degrees(angle.measured),
           Degrees(angle.deviation, true), threshold});
      UseFont(9, true, VerdictColor(angle.verdict));
      Text(columnAt.back() + 10, y_ - rowHeight, 80, VerdictWords(angle.verdict));
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
    UseFont(9, false, soft);
    const double end = y_ + rowHeight;
    Paragraph(columnAt.front(), rightEdge - columnAt.front(), facts.join(QStringLiteral("  ·  ")));
    y_ = std::max(end, y_);
  }

  static QString SourceText(const Alignment& alignment) {
    const auto& fields = FieldsOf(alignment.kind);
    const auto source = std::find_if(fields.begin(), fields.end(), [](const Field& field) {
      return field.member == Field::Member(&Alignment::heightSource);
    });
    return FieldText(alignment, *source);
  }

  void DrawFooter() {
    Line(pageHeight - margin - 14);
    UseFont(8, false, soft);
    Text(margin, pageHeight - margin - 10, 400, reports_.identifier);
    Text(rightEdge - 100, pageHeight - margin - 10, 100, QStringLiteral("page %1").arg(page_),
         Qt::AlignRight);
  }

  void StartPage() {
    DrawFooter();
    writer_->newPage();
    ++page_;
    y_ = margin;
  }

  QPdfWriter* const writer_;
  QPainter painter_;
  const Reports& reports_;
  const ReportPdf::Head& head_;
  /// In the order in which they first occur, and the place of each in it.
  QStringList sectors_;
  QHash<QString, int> numbers_;
  double y_ = margin;
  int page_ = 1;
};

bool AsksForPdf(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](const char* word) {
    return std::strcmp(word, "--pdf") == 0 || std::strncmp(word, "--pdf=", 6) == 0;
  });
}

void Draw(const Reports& reports, const ReportPdf::Head& head, QIODevice* device) {
  QPdfWriter writer(device);
  writer.setPageSize(QPageSize(QPageSize::A4));
  writer.setPageMargins(QMarginsF(0, 0, 0, 0));
  writer.setTitle(reports.identifier);
  writer.setCreator(QStringLiteral("tarnbeam-db"));
  writer.setResolution(600);
  Page page(&writer, reports, head);
  if (page.IsActive()) page.Draw();
  if (page.End()) return;
  throw Failure(
      QStringLiteral("the pages of %1 cannot be drawn").arg(Console::Printable(reports.identifier)));
}

/// After a file has taken its place: makes sure that the folder's entry is on the disk as well.
void SyncFolder(const QString& path) {
  const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
  const int descriptor = open(folder.constData(), O_RDONLY | O_CLOEXEC);
  const bool synced = descriptor >= 0 && fsync(descriptor) == 0;
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  if (!synced) throw Failure(FileName::Shown(path) + QStringLiteral(": ") + FileName::SystemError(error));
}

}  // namespace

namespace ReportPdf {

std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv) {
  if (argc < 1 || !AsksForPdf(argc, argv)) return std::make_unique<QCoreApplication>(argc, argv);
  // Fonts come with a GUI application; no display is needed.
  qputenv("QT_QPA_PLATFORM", "offscreen");
  return std::make_unique<QGuiApplication>(argc, argv);
}

Writer::Writer(const QString& folder, const Head& head) : folder_(folder), head_(head) {
  if (QFile::encodeName(folder) != FileName::ToBytes(folder)) {
    throw Failure(FileName::Shown(folder) + QStringLiteral(": pages can only go where the name is UTF-8"));
  }
  if (!QFileInfo(folder).isDir()) throw Failure(FileName::Shown(folder) + QStringLiteral(": no such folder"));
}

QString Writer::Write(const Reports& reports) {
  QString path = NewPath(reports);
  const QFileInfo there(path);
  // It would be replaced, even a device that a symbolic link leads to.
  if (there.exists() && !there.isFile()) {
    throw Failure(FileName::Shown(path) + QStringLiteral(": is there and is not a file"));
  }
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    throw Failure(FileName::Shown(path) + QStringLiteral(": cannot be written (%1)").arg(file.errorString()));
  }
  Draw(reports, head_, &file);
  // What the file system still holds back may no longer fit.
  const bool whole = file.flush() && fsync(file.handle()) == 0;
  const QString reason = whole ? QString() : FileName::SystemError(errno);
  if (!whole) file.cancelWriting();
  if (!file.commit()) {
    throw Failure(FileName::Shown(path) + QStringLiteral(": could not be written whole (%1)")
                                              .arg(reason.isEmpty() ? file.errorString() : reason));
  }
  SyncFolder(path);
  return path;
}

QString Writer::NewPath(const Reports& reports) {
  // An identifier may hold folder separators, and characters that act on a terminal, and be longer than the
  // 255 bytes that a name may have, of which some are for a number and for the name until the file is whole.
  constexpr int longest = 200;
  static const auto ending = QStringLiteral("-A-Report.pdf").size();
  QString name = Console::Printable(reports.pdfName).replace(QLatin1Char('/'), QLatin1Char('_'));
  const auto end = name.size() > ending ? name.size() - ending : 0;
  auto kept = end < longest ? end : longest;
  if (kept > 0 && name.at(kept - 1).isHighSurrogate()) --kept;
  while (name.left(kept).toUtf8().size() > longest) kept -= name.at(kept - 1).isLowSurrogate() ? 2 : 1;
  name.remove(kept, end - kept);
  QString unique = name;
  for (int number = 2; names_.contains(unique); ++number) {
    unique = QFileInfo(name).completeBaseName() + QStringLiteral("-%1.pdf").arg(number);
  }
  names_.insert(unique);
  return folder_ + QLatin1Char('/') + unique;
}

}  // namespace ReportPdf
