#pragma once

#include "store/StoreIdentity.h"

class IAlignerModel;

/// The contents of the two input screens: row 1 of SiteScreenContents and of PathScreenContents. Failures are
/// logged and give false.
namespace StoreScreenContents {

// The operations of IAlignmentDatabase.
bool Store(const StoreIdentity& store, IAlignerModel* model);
bool Restore(const StoreIdentity& store, IAlignerModel* model);

// One screen, on an open connection.
bool StoreSite(sqlite3* db, IAlignerModel* model);
bool StorePath(sqlite3* db, IAlignerModel* model);
bool RestoreSite(sqlite3* db, IAlignerModel* model);
bool RestorePath(sqlite3* db, IAlignerModel* model);

}  // namespace StoreScreenContents
