#pragma once

/// Geodetic datum of a position fix. Any number read from a file passes through unchanged, so a value
/// may lie outside the named ones.
enum class GpsDatum : int { Wgs84 = 0, Nad83 = 1, Nad27 = 2 };
