#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "tests/support/PrintQt.h"

// What the six converters are expected to do, and the texts that they use for it.

struct Converter {
  int source;  // version converted from; the file that it makes has the next
  bool (*convert)(QString& path);
  bool namesOpenFailure;
  bool namesSteps;  // "Aborting conversion, ... failed"
  bool removesScratch;
  bool namesRemoval;  // "Success false, deleting temp database"
  bool cleansUp;
};

const std::vector<Converter>& Converters();
const Converter& ConverterFrom(int source);

// A statement that follows the copy of a table.
struct AddedChange {
  int source;
  const char* table;
  const char* sql;
  const char* label;
  bool counts;
  const char* failureLine;  // null: none
};

struct CopiedTableTexts {
  const char* table;
  const char* createLabel;
  const char* copyLabel;
  const char* createFailure;
  const char* copyFailure;
  int copyFailureSince;  // first source version for which it is logged
  const char* abort;

  QStringList CreateFailure(const Converter& converter) const;
  QStringList CopyFailure(const Converter& converter) const;
};

const std::vector<CopiedTableTexts>& CopiedTables();
const CopiedTableTexts& TextsOf(const char* table);
std::vector<AddedChange> ChangesOf(const Converter& converter, const char* table);

// The clean-up of one table, and the keys in the golden files that nothing refers to.
struct CleanupTexts {
  const char* table;
  const char* key;
  const char* select;
  const char* selectLabel;
  const char* collectFailure;
  const char* count;
  const char* deleting;
  const char* deleteSql;
  const char* deleteLabel;
  const char* bindFailure;
  QStringList unused;

  // Count and deletions as logged; `onlyFirst`: up to the first deletion.
  QStringList Lines(const QStringList& keys, bool onlyFirst = false) const;
};

const std::vector<CleanupTexts>& Cleanups();
extern const char* const selectSiteKeys;
extern const char* const selectPathKeys;

// Lines of the clean-up of a golden file, up to the table that is named; all of them if none is.
QStringList CleanupLines(const char* upTo = nullptr);

// Lines of a SQLite call that failed with SQLITE_IOERR.
QString ExecuteFailed(const char* label);
QString PrepareFailed(const char* label);
QString BindFailed(const char* text);

// The lines, followed by those with which a failed step or a failed check ends a conversion.
QStringList Aborted(const Converter& converter, const QStringList& lines, const char* step);
QStringList CheckFailed(const Converter& converter, const QStringList& lines, const char* check);
