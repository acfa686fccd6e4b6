#pragma once

#include "store/IAlignmentDatabase.h"

/// What else the owner of a store asks of it.
class IAlignmentDatabaseInternal : public IAlignmentDatabase {
 public:
  /// Ends the use of the store. Nothing is open between calls, so nothing happens, and the store stays
  /// usable.
  virtual void Close() = 0;
};
