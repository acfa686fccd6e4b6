#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QStringList>
#include <vector>

#include "tool/pair/Deadline.h"

/// What a command is given: its operands in order and its options.
struct Arguments {
  QStringList operands;
  const QCommandLineParser& options;
  /// How long to wait for files that another program has in use; counts from the start.
  Deadline Waiting() const;
};

struct Command {
  const char* name;
  const char* summary;
  /// Names of the operands; one in brackets may be left out.
  std::vector<const char*> operands;
  std::vector<QCommandLineOption> options;
  /// Whether it makes or changes files.
  bool changes;
  /// Returns the exit status; failures and wrong usage are thrown.
  int (*run)(const Arguments& arguments);
};

/// Stands last if a command takes any number of the operands before it.
constexpr const char* AndSoOn = "...";

/// The option of every command that says how long to wait.
QCommandLineOption WaitOption();

const std::vector<Command>& AllCommands();

// Each is defined in a file of its own.
Command BackupCommand();
Command CheckCommand();
Command CreateCommand();
Command DeleteCommand();
Command DiffCommand();
Command ExportCommand();
Command ImportCommand();
Command ListCommand();
Command MapCommand();
Command MergeCommand();
Command MigrateCommand();
Command PreferencesCommand();
Command RepairCommand();
Command ReportCommand();
Command RestoreCommand();
Command SalvageCommand();
Command VersionCommand();
