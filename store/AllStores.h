#pragma once

#include "core/TypeList.h"
#include "store/AlignmentDatabaseVersion7.h"
#include "store/legacy/AlignmentDatabaseVersion1.h"
#include "store/legacy/AlignmentDatabaseVersion2.h"
#include "store/legacy/AlignmentDatabaseVersion3.h"
#include "store/legacy/AlignmentDatabaseVersion4.h"
#include "store/legacy/AlignmentDatabaseVersion5.h"
#include "store/legacy/AlignmentDatabaseVersion6.h"

/// The store of every schema version: that of version N is the Nth.
using AllStores = TypeList<AlignmentDatabaseVersion1, AlignmentDatabaseVersion2, AlignmentDatabaseVersion3,
                           AlignmentDatabaseVersion4, AlignmentDatabaseVersion5, AlignmentDatabaseVersion6,
                           AlignmentDatabaseVersion7>;

/// The store of the current version.
using CurrentStore = AllStores::Last;

/// The current version: that of new files, and the one up to which files can be converted.
constexpr unsigned int currentSchemaVersion = AllStores::count;
