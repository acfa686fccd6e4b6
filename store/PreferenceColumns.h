#pragma once

class IPreferencesModel;
class Statement;

/// One column of a preferences row: how its value is bound and how it is handed back.
struct PreferenceColumn {
  const char* name;
  /// The first schema version that has the column. Columns are only ever added at the end.
  unsigned int firstVersion;
  const char* bindFailure;
  void (*save)(Statement* row, IPreferencesModel* model, const char* bindFailure);
  /// Null for a column that is saved and never restored.
  void (*restore)(const Statement& row, int column, IPreferencesModel* model);
};

/// A range of columns, in the order of their positions.
struct PreferenceColumns {
  const PreferenceColumn* first;
  int count;

  /// The columns of the Preferences row that a schema version has. Language is not among them: no store reads
  /// or writes it, so it falls back to its default on every save.
  static PreferenceColumns OfMainRow(unsigned int version);
  /// The columns of the PreferencesPathLength row in the thresholds file.
  static PreferenceColumns OfPathLengthRow();

  /// Binds the columns in order, stopping at the first failure, which is logged. Whether all were bound.
  bool Save(Statement* row, IPreferencesModel* model) const;
  /// Hands the row's values to the model in order.
  void Restore(const Statement& row, IPreferencesModel* model) const;
};
