#pragma once

#include <memory>

#include "bench/Contender.h"

/// The contender with a name that Operations.h lists. Null for an unknown one.
std::unique_ptr<Contender> MakePeer(const char* name);
