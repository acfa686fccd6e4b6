#pragma once

#include "tool/pair/Sqlite.h"

/// Two databases attached to one connection, one of which is to be made like the other.
namespace RowChanges {

/// Makes the tables, rows, indices, views and triggers of `to` those of `from`, touching only what differs.
/// To be called within a transaction.
void Apply(const Sqlite& db, const QByteArray& from, const QByteArray& to);

/// Whether both have the same tables and rows.
bool AreEqual(const Sqlite& db, const QByteArray& from, const QByteArray& to);

}  // namespace RowChanges
