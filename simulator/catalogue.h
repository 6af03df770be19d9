// The service catalogue that a controller writes: a SQLite file with a table for each kind of
// input.

#pragma once

#include <string>

namespace lineup::simulator {

/// The statements that make the catalogue's tables and fill them.
extern const char kCatalogueSql[];

/// Writes the catalogue to `path`, making the folders above it; a catalogue written before by this
/// program is replaced. Any other file there is left alone unless `replaceForeign` says otherwise.
/// Throws std::runtime_error naming the path; the file is then as it was.
void writeCatalogue(const std::string& path, bool replaceForeign);

}  // namespace lineup::simulator
