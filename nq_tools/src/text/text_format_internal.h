// The formatter's string form with its error result, for the output functions.
#pragma once

#include <cstdarg>
#include <string>

#include "nq_text.h"

namespace nqt::detail {

// Appends the formatted text to out; yields its length in units, or -1 when the format is
// null, a number cannot be formatted or the result would pass INT_MAX units.
int format_append(std::u16string &out, const wchar *fmt, va_list args);

}  // namespace nqt::detail
