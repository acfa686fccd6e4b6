#include <QJsonDocument>
#include <QJsonObject>

#include "store/AllStores.h"
#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/pair/Snapshot.h"

namespace {

int Run(const Arguments& arguments) {
  const QString format = FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json")});
  const Snapshot file(arguments.operands.at(0), QString(), arguments.Waiting(), Snapshot::Look::Version);
  if (format == QLatin1String("json")) {
    const QJsonObject document{{QStringLiteral("version"), static_cast<int>(file.Version())},
                               {QStringLiteral("current"), file.Version() == currentSchemaVersion}};
    Console::Print(QString::fromUtf8(QJsonDocument(document).toJson()));
  } else {
    Console::Print(QString::number(file.Version()) + QLatin1Char('\n'));
  }
  return Status::Done;
}

}  // namespace

Command VersionCommand() {
  return {"version", "Prints the schema version of a main file.",
          {"MAIN"},  {ValueOption("format", "table (the default) or json.", "FORMAT", "table")},
          false,     Run};
}
