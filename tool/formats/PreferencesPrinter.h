#pragma once

#include <QString>

class IPreferencesModel;

/// A table of all preferences and calibration values, a line each.
QString PreferencesTable(IPreferencesModel* model);
