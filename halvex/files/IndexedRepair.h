#pragma once

namespace halvex {

/// Cuts off what a writer that died has left incomplete at the end of an indexed file set: the last record of the
/// time-info file, and in the index file a torn entry and the entries that lead past the last whole record (an entry is
/// written before its record). Whole records stay. They are walked from the last index entry that leads to a record of
/// its own time, so that damage further up costs nothing behind it; without such an entry from the start. Each cut is
/// logged as a notice under `source`. Files of another version are left alone, missing ones are created empty.
///
/// The caller sees to it that nobody writes the set meanwhile.
void cutIncompleteRecord(const char* timeInfoFile, const char* indexFile, const char* source);

}  // namespace halvex
