#include <QJsonDocument>

#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/formats/PreferencesFormats.h"
#include "tool/pair/Snapshot.h"

namespace {

int Run(const Arguments& arguments) {
  const QString format = FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json")});
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  files.RequirePreferences();
  const PreferencesRow row = files.Preferences();
  if (format == QLatin1String("json")) {
    Console::Print(QString::fromUtf8(QJsonDocument(PreferencesObject(row)).toJson()));
  } else {
    Console::Print(row.isEmpty() ? QStringLiteral("no preferences are stored\n") : PreferencesTable(row));
  }
  return Status::Done;
}

}  // namespace

Command PreferencesCommand() {
  return {"preferences",
          "Prints the preferences and calibration values.",
          {"MAIN", "[THRESHOLDS]"},
          {ValueOption("format", "table (the default) or json.", "FORMAT", "table")},
          false,
          Run};
}
