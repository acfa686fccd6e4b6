#pragma once

#include <QString>

#include "TarnbeamDatabaseExport.h"

/// What every value of an enumerated setting has: the key it is stored by and the name it is shown
/// under. Each kind of setting derives its own class, so that values of two kinds cannot be mixed up.
class TARNBEAMDATABASE_EXPORT SettingValue {
 public:
  /// `key` is what database files hold, `name` what the user sees.
  SettingValue(unsigned int key, const QString& name);

  /// What database files hold.
  unsigned int Key() const;
  /// What the user sees.
  const QString& Name() const;

 protected:
  ~SettingValue() = default;

 private:
  const unsigned int key_;
  const QString name_;
};
