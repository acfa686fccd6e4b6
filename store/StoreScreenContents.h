#pragma once

#include "store/StoreIdentity.h"

class IAlignerModel;

/// The contents of the two input screens: row 1 of SiteScreenContents and of PathScreenContents. Binds and
/// prepares that fail are logged.
namespace StoreScreenContents {

// The operations of IAlignmentDatabase.
bool Store(const StoreIdentity& store, IAlignerModel* model);
bool Restore(const StoreIdentity& store, IAlignerModel* model);

// One screen, on an open connection. Null is refused; apart from that, only StoreSite() can be false.
bool StoreSite(sqlite3* db, IAlignerModel* model);
bool StorePath(sqlite3* db, IAlignerModel* model);
bool RestoreSite(sqlite3* db, IAlignerModel* model);
bool RestorePath(sqlite3* db, IAlignerModel* model);

}  // namespace StoreScreenContents
