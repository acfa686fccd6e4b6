#pragma once

/// What the program needs of SQLite before anything else uses it.
namespace QuietVfs {

/// From now on names are never taken for URIs, and private copies are not synced: they need not outlive a
/// power cut, and syncs are most of what a save costs.
void Install();

}  // namespace QuietVfs
