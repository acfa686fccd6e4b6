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

/// All that one store is, besides its number: the texts of its schema version, which of the optional
/// alignment columns it has, how it deletes, and whether there is a thresholds file.
struct StoreDescription {
  SchemaTexts texts;
  Deletion deletion;
  bool hasTiltInversion = false;
  bool hasSiteNote = false;
  bool hasRollPrecision = false;
  bool hasPathNote = false;
  bool hasThresholdsFile = false;

  bool DeletesAssociatedRecords() const { return deletion == Deletion::WithAssociatedRecords; }

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
