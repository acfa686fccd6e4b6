#include "tool/Commands.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <memory>

#include "model/PreferencesModel.h"
#include "tool/AlignmentFiles.h"
#include "tool/AlignmentJson.h"
#include "tool/Console.h"
#include "tool/FileCheck.h"
#include "tool/FileMigration.h"
#include "tool/LibraryLog.h"
#include "tool/PreferencesPrinter.h"
#include "tool/ReportPdf.h"
#include "tool/ReportPrinter.h"

namespace {

void Move(const QString& from, const QString& to) {
  QFile file(from);
  if (!file.rename(to)) throw Failure(QStringLiteral("%1: %2").arg(to, file.errorString()));
}

/// Makes those of both files that are missing. The library removes a file that it cannot complete, also one
/// that was there before, so a pair is made in a folder of its own and what is missing is moved from there.
void CreateMissing(const QString& mainPath, const QString& thresholdsPath) {
  const bool mainMissing = !QFileInfo::exists(mainPath);
  const QString place = QFileInfo(mainMissing ? mainPath : thresholdsPath).absolutePath();
  const QTemporaryDir folder(place + QStringLiteral("/.tarnbeam-db-XXXXXX"));
  if (!folder.isValid()) throw Failure(QStringLiteral("%1: %2").arg(place, folder.errorString()));
  const QString pairMain = folder.filePath(QStringLiteral("main"));
  const QString pairThresholds = folder.filePath(QStringLiteral("thresholds"));
  LibraryLog::Clear();
  const std::unique_ptr<AlignmentDatabaseVersion7> store(
      AlignmentDatabaseVersion7::Create(pairMain, pairThresholds));
  LibraryLog::FailOnFailures(QStringLiteral("the files cannot be created"));
  QString created;
  if (mainMissing) {
    Move(pairMain, mainPath);
    created = QStringLiteral("created %1\n").arg(mainPath);
  }
  if (!QFileInfo::exists(thresholdsPath)) {
    try {
      Move(pairThresholds, thresholdsPath);
    } catch (const Failure&) {
      if (mainMissing) QFile::remove(mainPath);
      throw;
    }
    created += QStringLiteral("created %1\n").arg(thresholdsPath);
  }
  Console::Print(created);
}

int Create(const Arguments& arguments) {
  const QString& mainPath = arguments.operands.at(0);
  const QString& thresholdsPath = arguments.operands.at(1);
  RequireDifferentFiles(mainPath, thresholdsPath);
  if (QFileInfo::exists(mainPath) && QFileInfo::exists(thresholdsPath)) {
    throw Failure(QStringLiteral("%1 and %2 exist already").arg(mainPath, thresholdsPath));
  }
  if (QFileInfo::exists(mainPath)) {
    const unsigned int version = RequireVersion(mainPath);
    if (version != CurrentVersion) {
      throw Failure(QStringLiteral("%1: exists and is of version %2, not %3")
                        .arg(mainPath)
                        .arg(version)
                        .arg(CurrentVersion));
    }
  }
  if (QFileInfo::exists(thresholdsPath)) RequireThresholdsFile(thresholdsPath);
  CreateMissing(mainPath, thresholdsPath);
  return 0;
}

/// Says how far a long import has come, once it has taken a second and ten times a second from then on.
class ImportProgress {
 public:
  explicit ImportProgress(std::size_t total) : total_(total) { timer_.start(); }
  ImportProgress(const ImportProgress&) = delete;
  ImportProgress& operator=(const ImportProgress&) = delete;
  ~ImportProgress() {
    if (shown_) Console::Progress(QString());
  }
  void Saved(std::size_t count) {
    if (!Console::ErrorIsTerminal() || timer_.elapsed() < (shown_ ? next_ : 1000)) return;
    shown_ = true;
    next_ = timer_.elapsed() + 100;
    Console::Progress(QStringLiteral("%1 of %2 alignments").arg(count).arg(total_));
  }

 private:
  const std::size_t total_;
  QElapsedTimer timer_;
  bool shown_ = false;
  qint64 next_ = 0;
};

int Import(const Arguments& arguments) {
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  const QString& source = arguments.operands.at(2);
  const std::vector<Alignment> alignments = AlignmentJson::ReadFile(source);
  ImportProgress progress(alignments.size());
  std::size_t saved = 0;
  qint64 sites = 0;
  for (const Alignment& alignment : alignments) {
    LibraryLog::Clear();
    if (!Save(files.Store(), alignment) || !LibraryLog::Failures().isEmpty()) {
      LibraryLog::Fail(QStringLiteral("%1: entry %2: could not be saved; the entries before it were")
                           .arg(source)
                           .arg(saved + 1));
    }
    sites += alignment.kind == Kind::Site ? 1 : 0;
    progress.Saved(++saved);
  }
  const auto total = static_cast<qint64>(saved);
  Console::Print(QStringLiteral("%1 saved, %2 of sites and %3 of paths\n")
                     .arg(Console::Counted(total, QStringLiteral("alignment")), QString::number(sites),
                          QString::number(total - sites)));
  return 0;
}

int List(const Arguments& arguments) {
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  QString lines = QStringLiteral("kind  reports  identifier\n");
  for (const Kind kind : {Kind::Site, Kind::Path}) {
    const QStringList identifiers = files.Identifiers(kind);
    for (const QString& identifier : identifiers) {
      const std::size_t count = files.ReadKnown(kind, identifier).alignments.size();
      lines += QStringLiteral("%1  %2  %3\n")
                   .arg(KindName(kind))
                   .arg(count, 7)
                   .arg(Console::Printable(identifier));
    }
  }
  Console::Print(lines);
  return 0;
}

struct Subject {
  Kind kind;
  QString identifier;
};

Subject SubjectOf(const Arguments& arguments) {
  const bool site = arguments.options.isSet(QStringLiteral("site"));
  if (site == arguments.options.isSet(QStringLiteral("path"))) {
    throw WrongUsage(QStringLiteral("either --site or --path has to be given"));
  }
  const Kind kind = site ? Kind::Site : Kind::Path;
  return {kind, arguments.options.value(KindName(kind))};
}

int Report(const Arguments& arguments) {
  const Subject subject = SubjectOf(arguments);
  const bool pdf = arguments.options.isSet(QStringLiteral("pdf"));
  const QString format = arguments.options.value(QStringLiteral("format"));
  if (pdf && arguments.options.isSet(QStringLiteral("format"))) {
    throw WrongUsage(QStringLiteral("--format and --pdf exclude each other"));
  }
  if (format != QLatin1String("table") && format != QLatin1String("json") && format != QLatin1String("csv")) {
    throw WrongUsage(QStringLiteral("--format must be table, json or csv"));
  }
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  const Reports reports = files.ReadReports(subject.kind, subject.identifier);
  if (pdf) {
    Console::Print(ReportPdf::Write(reports, arguments.options.value(QStringLiteral("pdf"))) +
                   QLatin1Char('\n'));
  } else if (format == QLatin1String("json")) {
    Console::Print(QString::fromUtf8(AlignmentJson::Write(reports.alignments)));
  } else {
    Console::Print(format == QLatin1String("csv") ? ReportPrinter::Csv(reports)
                                                  : ReportPrinter::Table(reports));
  }
  return 0;
}

int IndexOf(const Arguments& arguments) {
  bool isNumber = false;
  const int index = arguments.options.value(QStringLiteral("index")).toInt(&isNumber);
  if (!isNumber || index < 0) throw WrongUsage(QStringLiteral("--index must be a number from 0"));
  return index;
}

void ConfirmDeletion(const Arguments& arguments, const QString& what) {
  Console::Message(what);
  if (arguments.options.isSet(QStringLiteral("yes"))) return;
  if (!Console::CanAsk()) {
    throw Failure(QStringLiteral("nothing was deleted: without a terminal to ask on, --yes has to be given"));
  }
  if (!Console::Confirm(QStringLiteral("Delete?"))) throw Failure(QStringLiteral("nothing was deleted"));
}

/// The store's answers do not tell whether a deletion was done, so its debug lines and the files are asked.
int DeleteAll(const Arguments& arguments, const AlignmentFiles& files, const Reports& reports) {
  QString identifier = reports.identifier;
  const QString shown = KindName(reports.kind) + QLatin1Char(' ') + Console::Printable(identifier);
  const QString count =
      Console::Counted(static_cast<qint64>(reports.alignments.size()), QStringLiteral("report"));
  const QString sectors = reports.kind == Kind::Site ? QStringLiteral(" in all its sectors") : QString();
  ConfirmDeletion(arguments, QStringLiteral("%1 and %2%3 will be deleted").arg(shown, count, sectors));
  LibraryLog::Clear();
  bool deleted = true;
  if (reports.kind == Kind::Site) {
    QString anySector;
    deleted = files.Store()->DeleteReportsBySiteAndSector(identifier, anySector);
  } else {
    deleted = files.Store()->DeleteReportsByPath(identifier);
  }
  const QString failed = QStringLiteral("%1 could not be deleted whole").arg(shown);
  LibraryLog::FailOnFailures(failed);
  if (!deleted || files.Identifiers(reports.kind).contains(identifier)) LibraryLog::Fail(failed);
  Console::Print(QStringLiteral("deleted %1 and %2\n").arg(shown, count));
  return 0;
}

int DeleteOne(const Arguments& arguments, const AlignmentFiles& files, const Reports& reports, int index) {
  const auto count = static_cast<int>(reports.alignments.size());
  QString identifier = reports.identifier;
  const bool site = reports.kind == Kind::Site;
  const QString shown = KindName(reports.kind) + QLatin1Char(' ') + Console::Printable(identifier);
  if (index >= count) {
    throw Failure(QStringLiteral("%1 has %2, numbered from 0: there is none at %3")
                      .arg(shown, Console::Counted(count, QStringLiteral("report")), QString::number(index)));
  }
  const Alignment& alignment = reports.alignments.at(static_cast<std::size_t>(index));
  QString what = QStringLiteral("1 report of %1 will be deleted: %2, of %3 that there are")
                     .arg(shown, alignment.time.toUTC().toString(Qt::ISODate), QString::number(count));
  if (site) {
    what += QStringLiteral("; its row of thresholds stays in %1").arg(arguments.operands.at(1));
  }
  ConfirmDeletion(arguments, what);
  LibraryLog::Clear();
  const bool deleted = site ? files.Store()->DeleteReportsBySiteAndIndex(identifier, index)
                            : files.Store()->DeleteReportsByPathAndIndex(identifier, index);
  const QString failed = QStringLiteral("the report of %1 could not be deleted").arg(shown);
  // The store reads the reports of a path for this, and leaves both connections open.
  LibraryLog::FailOnFailures(failed, site ? 0 : 2);
  if (!deleted) LibraryLog::Fail(failed);
  Console::Print(QStringLiteral("deleted report %1 of %2\n").arg(QString::number(index), shown));
  return 0;
}

int Delete(const Arguments& arguments) {
  const Subject subject = SubjectOf(arguments);
  const bool one = arguments.options.isSet(QStringLiteral("index"));
  const int index = one ? IndexOf(arguments) : 0;
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  const Reports reports = files.ReadReports(subject.kind, subject.identifier);
  return one ? DeleteOne(arguments, files, reports, index) : DeleteAll(arguments, files, reports);
}

int Version(const Arguments& arguments) {
  Console::Print(QStringLiteral("%1\n").arg(RequireVersion(arguments.operands.at(0))));
  return 0;
}

int Migrate(const Arguments& arguments) {
  MigrateFile(arguments.operands.at(0), arguments.options.value(QStringLiteral("backup")));
  return 0;
}

int Check(const Arguments& arguments) {
  return CheckFiles(arguments.operands.at(0), arguments.operands.value(1)) ? 0 : 1;
}

int Export(const Arguments& arguments) {
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  std::vector<Alignment> all;
  for (const Kind kind : {Kind::Site, Kind::Path}) {
    const QStringList identifiers = files.Identifiers(kind);
    for (const QString& identifier : identifiers) {
      const Reports reports = files.ReadKnown(kind, identifier);
      all.insert(all.end(), reports.alignments.begin(), reports.alignments.end());
    }
  }
  Console::Print(QString::fromUtf8(AlignmentJson::Write(all)));
  return 0;
}

int Preferences(const Arguments& arguments) {
  const AlignmentFiles files(arguments.operands.at(0), arguments.operands.at(1));
  PreferencesModel model;
  LibraryLog::Clear();
  const bool restored = files.Store()->RestorePreferences(&model);
  LibraryLog::FailOnFailures(QStringLiteral("the preferences cannot be read"));
  Console::Print(restored ? PreferencesTable(&model) : QStringLiteral("no preferences are stored\n"));
  return 0;
}

QCommandLineOption Value(const char* name, const char* description, const char* valueName,
                         const char* byDefault = "") {
  return {QString::fromUtf8(name), QString::fromUtf8(description), QString::fromUtf8(valueName),
          QString::fromUtf8(byDefault)};
}

}  // namespace

const std::vector<Command>& AllCommands() {
  static const QCommandLineOption site = Value("site", "The site with this identifier.", "ID");
  static const QCommandLineOption path = Value("path", "The path with this identifier.", "ID");
  static const std::vector<Command> commands = {
      {"create",
       "Makes the two files, or the one of them that is missing.",
       {"MAIN", "THRESHOLDS"},
       {},
       Create},
      {"import",
       "Saves alignments from a JSON file, all of them or, if anything in it is wrong, none.",
       {"MAIN", "THRESHOLDS", "FILE.json"},
       {},
       Import},
      {"list", "Lists sites and paths with their number of reports.", {"MAIN", "THRESHOLDS"}, {}, List},
      {"report",
       "Prints all reports of a site or path, or draws them on a page.",
       {"MAIN", "THRESHOLDS"},
       {site, path, Value("format", "table (the default), json or csv.", "FORMAT", "table"),
        Value("pdf", "Write a PDF page into this folder and print its name.", "DIR")},
       Report},
      {"delete",
       "Deletes a site or path with all its reports, or one report.",
       {"MAIN", "THRESHOLDS"},
       {site, path, Value("index", "Only the report with this number in the table of 'report'.", "N"),
        QCommandLineOption(QStringLiteral("yes"), QStringLiteral("Do not ask."))},
       Delete},
      {"version", "Prints the schema version of a main file.", {"MAIN"}, {}, Version},
      {"migrate",
       "Brings a main file of an earlier version to the current one.",
       {"MAIN"},
       {Value("backup", "Copy the file here first.", "FILE")},
       Migrate},
      {"check",
       "Looks both files over, changing neither. Files before version 7 have no thresholds file.",
       {"MAIN", "[THRESHOLDS]"},
       {},
       Check},
      {"export",
       "Prints all alignments as the JSON that 'import' reads.",
       {"MAIN", "THRESHOLDS"},
       {},
       Export},
      {"preferences",
       "Prints the preferences and calibration values.",
       {"MAIN", "THRESHOLDS"},
       {},
       Preferences},
  };
  return commands;
}
