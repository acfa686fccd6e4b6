#pragma once

#include "schema/SchemaTexts.h"

/// How a version deletes alignments.
enum class Deletion {
  /// Leaves orientations, locations and heights behind, and steps a delete until it reports done.
  AlignmentsSteppedUntilDone,
  /// Leaves orientations, locations and heights behind.
  Alignments,
  /// Deletes what the alignments refer to as well.
  AlignmentsAndAssociatedRecords,
};

/// All that one store is, besides its number: the texts of its schema version, which of the optional
/// alignment columns it has, how it deletes, and whether there is a thresholds file.
struct StoreDescription {
  SchemaTexts texts;
  bool hasTiltInversion;
  bool hasSiteNote;
  bool hasRollPrecision;
  bool hasPathNote;
  Deletion deletion;
  bool hasThresholdsFile;

  bool DeletesAssociatedRecords() const { return deletion == Deletion::AlignmentsAndAssociatedRecords; }

  /// The description of a schema version; of the current one for a number that is none.
  static const StoreDescription& Of(unsigned int version);
};

// Each stands with the store that it describes.
extern const StoreDescription storeDescriptionVersion1;
extern const StoreDescription storeDescriptionVersion2;
extern const StoreDescription storeDescriptionVersion3;
extern const StoreDescription storeDescriptionVersion4;
extern const StoreDescription storeDescriptionVersion5;
extern const StoreDescription storeDescriptionVersion6;
extern const StoreDescription storeDescriptionVersion7;
