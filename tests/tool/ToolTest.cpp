#include "tests/tool/ToolTest.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>

#include "tests/support/DatabaseDump.h"

namespace {

QString Text(const char* utf8) { return QString::fromUtf8(utf8); }

QJsonObject Angles(double azimuth, double tilt, double roll) {
  return {{"azimuth", azimuth}, {"tilt", tilt}, {"roll", roll}};
}

QJsonObject Position(double latitude, double longitude, double elevation) {
  return {{"latitude", latitude}, {"longitude", longitude}, {"elevation", elevation}};
}

// What both kinds have.
QJsonObject Entry(const char* kind, const QString& identifier, const QJsonObject& thresholds) {
  return {{"kind", kind},
          {"identifier", identifier},
          {"time", "2024-05-14T09:12:33+02:00"},
          {"target", Angles(0.5, -2.25, 0.125)},
          {"measured", Angles(359.75, -2.5, 0.375)},
          {"location", Position(59.318742, 10.477905, 38.5)},
          {"height", QJsonObject{{"value", 31.5}, {"source", "gps"}}},
          {"options", QJsonObject{{"azimuthOffset", 90},
                                  {"tiltInversion", true},
                                  {"note", Text("Grüße, \"Ole\"\nline 2")},
                                  {"thresholds", thresholds}}}};
}

}  // namespace

// Under the sanitizers what the library leaves open on purpose is left out, by name; only whole stacks show
// the name.
ToolTest::ToolTest() {
  qputenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" TARNBEAM_LEAKS);
  qputenv("ASAN_OPTIONS", "fast_unwind_on_malloc=0");
}

Holder::Holder(const QString& path, const char* sql) {
  EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &db_), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db_, sql, nullptr, nullptr, nullptr), SQLITE_OK);
}

Holder::~Holder() { sqlite3_close(db_); }

QString InUse(const QString& file) {
  return file + ": is in use by another program; try again, or wait longer with --wait SECONDS";
}

void ToolTest::Prepare(QProcess* process) const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("LC_ALL", "C");
  process->setProcessEnvironment(environment);
  process->setWorkingDirectory(folder_.Folder());
  process->setStandardInputFile(QProcess::nullDevice());
}

Outcome ToolTest::Finish(QProcess* process) {
  EXPECT_TRUE(process->waitForFinished(patience)) << process->errorString().toStdString();
  EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
  return {process->exitCode(), QString::fromUtf8(process->readAllStandardOutput()),
          QString::fromUtf8(process->readAllStandardError())};
}

namespace {

// What is typed on it, the program reads from its standard input; what the program writes on it can be read.
class Terminal {
 public:
  Terminal() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_TRUE(grantpt(master_) == 0 && unlockpt(master_) == 0);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() { close(master_); }
  QString Name() const { return QString::fromLatin1(ptsname(master_)); }
  void Type(const QString& text) const {
    const QByteArray typed = text.toUtf8();
    EXPECT_EQ(write(master_, typed.constData(), static_cast<size_t>(typed.size())), typed.size());
  }
  // What the program, which has ended, wrote on it: all that comes before what is written now.
  QByteArray Shown() const {
    constexpr char end = '\4';
    QFile slave(Name());
    EXPECT_TRUE(slave.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    EXPECT_TRUE(slave.putChar(end));
    QByteArray shown;
    char next = end;
    while (read(master_, &next, 1) == 1 && next != end) shown += next;
    return shown;
  }

 private:
  int master_;
};

}  // namespace

Outcome ToolTest::Run(const QStringList& words, const QString& terminalInput) {
  QProcess process;
  Prepare(&process);
  const Terminal terminal;
  if (!terminalInput.isEmpty()) {
    process.setStandardInputFile(terminal.Name());
    terminal.Type(terminalInput);
  }
  process.start(TARNBEAM_TOOL, words);
  return Finish(&process);
}

namespace {

void SetVariables(QProcess* process, const QMap<QString, QString>& variables) {
  QProcessEnvironment environment = process->processEnvironment();
  for (auto one = variables.cbegin(); one != variables.cend(); ++one)
    environment.insert(one.key(), one.value());
  process->setProcessEnvironment(environment);
}

// Something is loaded before the sanitizers' own library.
const QString sanitizerOptions = QStringLiteral("verify_asan_link_order=0:detect_leaks=0");

}  // namespace

Outcome ToolTest::RunProgram(const QString& program, const QStringList& words,
                             const QMap<QString, QString>& variables) {
  QProcess process;
  Prepare(&process);
  SetVariables(&process, variables);
  process.start(program, words);
  return Finish(&process);
}

Outcome ToolTest::RunOnTerminal(const QStringList& words, int clockStep) {
  QProcess process;
  Prepare(&process);
  SetVariables(&process, {{"LD_PRELOAD", TARNBEAM_CLOCK},
                          {"ASAN_OPTIONS", sanitizerOptions},
                          {"CLOCK_STEP", QString::number(clockStep)}});
  const Terminal terminal;
  process.setStandardErrorFile(terminal.Name());
  process.start(TARNBEAM_TOOL, words);
  Outcome outcome = Finish(&process);
  outcome.err = QString::fromUtf8(terminal.Shown());
  return outcome;
}

// Root without the right to override permissions is like any other user.
Outcome ToolTest::RunUnprivileged(const QStringList& words) {
  if (geteuid() != 0) return RunProgram(TARNBEAM_TOOL, words);
  return RunProgram("setpriv",
                    QStringList{"--bounding-set", "-dac_override,-dac_read_search", TARNBEAM_TOOL} + words);
}

Outcome ToolTest::RunInShell(const QString& line, const QStringList& words) {
  return RunProgram("sh", QStringList{"-c", line, TARNBEAM_TOOL} + words);
}

Outcome ToolTest::RunWithFileLimit(int blocks, const QStringList& words) {
  return RunInShell(QString("trap '' XFSZ; ulimit -f %1; exec \"$0\" \"$@\"").arg(blocks), words);
}

Outcome ToolTest::RunFailing(const QStringList& words, const char* kind, const QString& folder, int number,
                             const QMap<QString, QString>& variables) {
  QFile::remove(Path("mark"));
  QMap<QString, QString> all{{"LD_PRELOAD", TARNBEAM_FAILING_CALLS},
                             {"ASAN_OPTIONS", sanitizerOptions},
                             {"FAILING_KIND", kind},
                             {"FAILING_FOLDER", folder + '/'},
                             {"FAILING_NUMBER", QString::number(number)},
                             {"FAILING_MARK", Path("mark")}};
  for (auto one = variables.cbegin(); one != variables.cend(); ++one) all[one.key()] = one.value();
  return RunProgram(TARNBEAM_TOOL, words, all);
}

bool ToolTest::HasFailed() const { return QFile::exists(Path("mark")); }

Outcome ToolTest::RunWhileAsked(const QStringList& words, const std::function<void()>& meanwhile) {
  QProcess process;
  Prepare(&process);
  const Terminal terminal;
  process.setStandardInputFile(terminal.Name());
  process.setReadChannel(QProcess::StandardError);
  process.start(TARNBEAM_TOOL, words);
  QByteArray said;
  while (!said.endsWith("[y/N] ") && process.waitForReadyRead(patience))
    said += process.readAllStandardError();
  EXPECT_TRUE(said.endsWith("[y/N] ")) << said.constData();
  meanwhile();
  terminal.Type("y\n");
  Outcome outcome = Finish(&process);
  outcome.err.prepend(QString::fromUtf8(said));
  return outcome;
}

void ToolTest::ExpectToWait(const QStringList& words, const std::function<void()>& release) {
  QProcess process;
  Prepare(&process);
  process.start(TARNBEAM_TOOL, words);
  // One that does not wait has ended by then.
  constexpr int milliseconds = 500;
  EXPECT_FALSE(process.waitForFinished(milliseconds));
  release();
  const Outcome outcome = Finish(&process);
  EXPECT_EQ(outcome.status, 0) << outcome.err.toStdString();
}

QString ToolTest::RunWell(const QStringList& words) {
  const Outcome outcome = Run(words);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, QString());
  return outcome.out;
}

void ToolTest::ExpectFailure(const QStringList& words, const QString& message, int status) {
  const Outcome outcome = Run(words);
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, QString());
  EXPECT_EQ(outcome.err, "tarnbeam-db: " + message + "\n");
}

void ToolTest::ExpectDamaged(const QStringList& words, const QString& file, const QString& help) {
  const Outcome outcome = Run(words);
  EXPECT_EQ(outcome.status, 4);
  EXPECT_EQ(outcome.out, QString());
  const QString pattern = "tarnbeam-db: " + QRegularExpression::escape(file) +
                          ": is damaged \\([^\n*][^\n]*\\)" + QRegularExpression::escape(help) + "\n";
  EXPECT_TRUE(QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(outcome.err).hasMatch())
      << outcome.err.toStdString();
}

void ToolTest::CreateFiles() { EXPECT_EQ(RunWell({"create", "m", "t"}), "created m\ncreated t\n"); }

void ToolTest::CreateFilesWith(const QJsonArray& entries) {
  CreateFiles();
  WriteJson("in.json", entries);
  RunWell({"import", "m", "t", "in.json"});
}

void ToolTest::LoadEarlier(const QString& name, int version) {
  LoadSqlFile(Path(name), QString(TARNBEAM_GOLDEN_FOLDER "/version_%1.sql").arg(version));
}

void ToolTest::WriteFile(const QString& name, const QByteArray& content) {
  QFile file(Path(name));
  EXPECT_TRUE(file.open(QIODevice::WriteOnly));
  EXPECT_EQ(file.write(content), content.size());
}

void ToolTest::WriteJson(const QString& name, const QJsonArray& entries) {
  WriteFile(name, QJsonDocument(entries).toJson());
}

QByteArray ToolTest::ReadFile(const QString& name) {
  QFile file(Path(name));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
  return file.readAll();
}

QStringList ToolTest::FilesInFolder() const {
  return QDir(folder_.Folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

int ToolTest::PageOf(const QString& file, const QString& table) const {
  return Rows(Path(file), "SELECT rootpage - 1 FROM sqlite_schema WHERE name = '" + table + "'")
      .value(0)
      .toInt();
}

void ToolTest::Overwrite(const QString& name, qint64 at, const QByteArray& bytes) {
  QFile file(Path(name));
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  ASSERT_TRUE(file.seek(at));
  ASSERT_EQ(file.write(bytes), bytes.size());
}

QJsonObject SiteEntry(const QString& identifier, const QString& sector) {
  QJsonObject entry = Entry("site", identifier, {{"azimuth", 1.5}, {"tilt", 0.125}, {"roll", 0}});
  entry["sector"] = sector;
  entry["position"] = Text("Høyt");
  return With(entry, "options.rollPrecision", 2);
}

QJsonObject PathEntry(const QString& identifier) {
  QJsonObject entry = Entry("path", identifier, {{"azimuth", 1.5}, {"tilt", 0.25}, {"pathLength", 1000.5}});
  entry["farEnd"] = Position(54.152287, 19.408831, 27.75);
  return entry;
}

QJsonObject With(QJsonObject entry, const QString& name, const QJsonValue& value) {
  const auto dot = name.indexOf('.');
  if (dot >= 0) {
    entry[name.left(dot)] = With(entry[name.left(dot)].toObject(), name.mid(dot + 1), value);
  } else if (value.isUndefined()) {
    entry.remove(name);
  } else {
    entry[name] = value;
  }
  return entry;
}
