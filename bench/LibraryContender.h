#pragma once

#include <memory>

#include "bench/Contender.h"

/// This library, through its public interface.
std::unique_ptr<Contender> MakeLibraryContender();
