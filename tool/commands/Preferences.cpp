#include <QJsonDocument>

#include "model/PreferencesModel.h"
#include "tool/Console.h"
#include "tool/commands/Options.h"
#include "tool/formats/PreferencesFormats.h"
#include "tool/formats/PreferencesPrinter.h"
#include "tool/pair/Snapshot.h"
#include "tool/pair/Sqlite.h"

namespace {

/// What the one row of a table holds; nothing if there is none.
void AddRow(const Sqlite& db, const char* schema, const char* table, PreferencesRow* row) {
  Sqlite::Rows columns =
      db.Select(QByteArray("SELECT name FROM pragma_table_info('") + table + "', '" + schema + "')");
  while (columns.Next()) {
    const QByteArray name = Quoted(columns.Bytes(0));
    // All digits: SQLite's own text of a number does not have them.
    Sqlite::Rows value = db.Select("SELECT " + name + ", typeof(" + name + "), printf('%!.17g', " + name +
                                   ") FROM " + schema + '.' + table + " WHERE rowid = 1");
    if (!value.Next()) return;
    const QByteArray type = value.Bytes(1);
    QVariant stored = value.Text(0);
    if (type == "integer") stored = value.Int(0);
    if (type == "real") stored = value.Bytes(2).toDouble();
    row->append({columns.Text(0), stored});
  }
}

QString Json(const Snapshot& files) {
  PreferencesRow row;
  AddRow(files.Files().Db(), "main", "Preferences", &row);
  if (files.Files().HasThresholds()) AddRow(files.Files().Db(), "thresholds", "PreferencesPathLength", &row);
  return QString::fromUtf8(QJsonDocument(PreferencesObject(row)).toJson());
}

int Run(const Arguments& arguments) {
  const QString format = FormatOf(arguments, {QStringLiteral("table"), QStringLiteral("json")});
  const Snapshot files(arguments.operands.at(0), arguments.operands.value(1), arguments.Waiting());
  files.RequirePreferences();
  if (format == QLatin1String("json")) {
    Console::Print(Json(files));
    return Status::Done;
  }
  PreferencesModel model;
  Console::Print(files.RestorePreferences(&model) ? PreferencesTable(&model)
                                                  : QStringLiteral("no preferences are stored\n"));
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
