// What the sources of the File and Dir families share.
#pragma once

#include <cstdio>
#include <string>

#include "nq_types.h"

namespace nq::file {

// The next UTF-16 unit of a text stream holding UTF-8. A byte that does not start a valid
// sequence is the unit of the same value (Latin-1 reads as it should), a carriage return
// before a line feed is dropped, and a character beyond the first plane comes as two units.
// -1 at the end of the stream.
int read_unit(std::FILE *stream);
// Forgets units decoded ahead for the stream (before narrow reads resume on it).
void forget_ahead(std::FILE *stream);
// The stream is at its end and nothing decoded ahead is left.
bool at_end(std::FILE *stream);

// Up to capacity - 1 units, through the first line feed (kept); false when the stream gave
// nothing. As fgetws does.
bool read_piece(std::FILE *stream, std::u16string &piece, std::size_t capacity);

// A copy of a library name in lower case.
std::u16string lower(const nq_wchar *name);

}  // namespace nq::file
