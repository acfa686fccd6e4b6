#pragma once

#include "schema/SchemaTexts.h"

/// How a version deletes alignments.
enum class Deletion {
  /// Leaves orientations, locations and heights behind, and steps a delete until it reports done.
  AlignmentsAloneUntilDone,
  /// Leaves orientations, locations and heights behind.
  AlignmentsAlone,
  /// Deletes what the alignments refer to as well.
  WithAssociatedRecords,
};

/// Everything besides its number in which the store of one version differs from the others.
struct StoreDescription {
  SchemaTexts texts;
  Deletion deletion;

  /// The description of a schema version; that of the current one for a number without a version.
  static const StoreDescription& Of(unsigned int version);
};
