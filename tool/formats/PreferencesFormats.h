#pragma once

#include <QJsonObject>
#include <QPair>
#include <QString>
#include <QVariant>
#include <QVector>

/// Columns of the file format with what is stored in them: whole numbers, other numbers, texts.
using PreferencesRow = QVector<QPair<QString, QVariant>>;

/// {value, name} under the name of each column that holds the key of a setting, {value} under the others. The
/// name is null where a key has none.
QJsonObject PreferencesObject(const PreferencesRow& row);

/// For people: a line for each column that is there.
QString PreferencesTable(const PreferencesRow& row);
