#pragma once

#include "store/IAlignmentDatabase.h"

/// What the owner of a store asks of it besides.
class IAlignmentDatabaseInternal : public IAlignmentDatabase {
 public:
  /// Ends the use of the store. Nothing is open between calls, so nothing happens, and the store stays
  /// usable.
  virtual void Close() = 0;
};
