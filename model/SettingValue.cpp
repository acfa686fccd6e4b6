#include "model/SettingValue.h"

SettingValue::SettingValue(unsigned int key, const QString& name) : key_(key), name_(name) {}

unsigned int SettingValue::Key() const { return key_; }

const QString& SettingValue::Name() const { return name_; }
