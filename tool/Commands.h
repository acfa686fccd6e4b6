#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QStringList>
#include <vector>

/// What a command is given: its operands in order and its options.
struct Arguments {
  QStringList operands;
  const QCommandLineParser& options;
};

struct Command {
  const char* name;
  const char* summary;
  /// Names of the operands; one in brackets may be left out.
  std::vector<const char*> operands;
  std::vector<QCommandLineOption> options;
  /// Answers the exit status; failures and wrong usage are thrown.
  int (*run)(const Arguments& arguments);
};

const std::vector<Command>& AllCommands();
