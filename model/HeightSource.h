#pragma once

/// How a height was obtained. The number is what database files hold; any number read from a file
/// passes through unchanged, so a value may lie outside the named ones.
enum class HeightSource : int { Unknown = 0, Manual = 1, Barometric = 2, Gps = 3 };
