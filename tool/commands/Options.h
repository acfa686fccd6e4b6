#pragma once

#include <initializer_list>
#include <vector>

#include "tool/Alignment.h"
#include "tool/commands/Commands.h"
#include "tool/formats/AlignmentFilter.h"
#include "tool/formats/AlignmentWriter.h"
#include "tool/formats/Csv.h"

/// An option with a value.
QCommandLineOption ValueOption(const char* name, const char* description, const char* valueName,
                               const char* byDefault = "");
QCommandLineOption SiteOption();
QCommandLineOption PathOption();

/// The one site or path that --site or --path name.
struct Subject {
  Kind kind;
  QString identifier;
};
Subject SubjectOf(const Arguments& arguments);

/// The value of --format, which has to be one of these: "table, json or csv".
QString FormatOf(const Arguments& arguments, const QStringList& allowed);

/// Options that say which alignments are asked for, and what they say.
std::vector<QCommandLineOption> FilterOptions();
AlignmentFilter FilterOf(const Arguments& arguments);
/// Whether any of them is given.
bool HasFilter(const Arguments& arguments);

/// Options about CSV, and what they say; they go with no other format.
std::vector<QCommandLineOption> CsvOptions();
CsvForm CsvFormOf(const Arguments& arguments, bool guardsFormulas);

/// Options of a command, in order.
std::vector<QCommandLineOption> Together(std::initializer_list<std::vector<QCommandLineOption>> options);

/// Says what is to be done and asks, unless --yes is given. Without a yes a Failure says what was not done.
void Confirm(const Arguments& arguments, const QString& what, const QString& question,
             const QString& nothingDone);

/// Prints what a writer hands on.
TextSink StandardOutput();
