#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

/// Which of the two files holds the bytes of an input; the other is as the library made it.
enum class Side { Main, Thresholds };

struct HostileFiles;

/// What the inputs that have been run so far have met. None of it is a finding: a damaged file may make a
/// loop of the library endless, and a hostile one may calculate without end.
struct Met {
  /// Inputs for which a guard ended a loop.
  long long endlessLoops = 0;
  /// Inputs for which a statement was interrupted after its share of instructions.
  long long interrupted = 0;
  /// Connections that the library left open, as it must.
  long long leftOpen = 0;
};

/// What an application does with its files, over files of which one may hold anything.
struct Target {
  const char* name;
  Side side;
  void (*run)(HostileFiles* files);

  static const std::vector<Target>& All();
  /// Null when there is none of that name.
  static const Target* Named(const QString& name);
  static const Met& HasMet();

  /// Puts `input` in place of a file and runs. Returns what is wrong afterwards, empty if nothing is: the
  /// other file has to be whole, and a conversion has to leave the file as it was or convert it.
  QString Run(const QByteArray& input) const;
};
