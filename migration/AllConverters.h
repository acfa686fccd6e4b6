#pragma once

#include "core/TypeList.h"
#include "migration/AlignmentDatabaseConverter1to2.h"
#include "migration/AlignmentDatabaseConverter2to3.h"
#include "migration/AlignmentDatabaseConverter3to4.h"
#include "migration/AlignmentDatabaseConverter4to5.h"
#include "migration/AlignmentDatabaseConverter5to6.h"
#include "migration/AlignmentDatabaseConverter6to7.h"

/// Every converter: the one that starts from version N is the Nth, and the last makes the current version.
using AllConverters =
    TypeList<AlignmentDatabaseConverter1to2, AlignmentDatabaseConverter2to3, AlignmentDatabaseConverter3to4,
             AlignmentDatabaseConverter4to5, AlignmentDatabaseConverter5to6, AlignmentDatabaseConverter6to7>;
