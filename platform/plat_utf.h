// UTF-8 <-> UTF-16 conversion, the one place where text changes its encoding.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace nqplat {

// UTF-16 to UTF-8. Unpaired surrogates are written as their three-byte form (WTF-8), so that
// no code unit is lost on the way to a file name or the console.
std::string utf16_to_utf8(const char16_t *text, std::size_t length);
std::string utf16_to_utf8(const char16_t *text);  // null gives ""

// UTF-8 to UTF-16. A byte that does not begin a valid UTF-8 sequence becomes the code unit
// of the same value, so Latin-1 text reads sensibly.
std::u16string utf8_to_utf16(std::string_view bytes);

// Case folding for names compared without regard to case (file names, INI and registry
// keys): towupper of the current C locale on each code unit.
char16_t fold_case(char16_t unit);
bool equal_ignoring_case(std::u16string_view a, std::u16string_view b);

}  // namespace nqplat
