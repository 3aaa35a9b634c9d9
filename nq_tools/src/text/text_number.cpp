// Numbers read from UTF-16 text.
//
// Only ASCII can be part of a number, so the end functions copy the ASCII run after the
// leading blanks into a narrow buffer and let strtol / strtod read it: the units map one to
// one onto the bytes, and the end pointer is carried back by the same offset.
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>

#include "nq_text.h"

namespace nqt {

namespace {

const wchar *skip_blanks(const wchar *s) {
    while (*s && isspace(*s)) ++s;
    return s;
}

// The units from s up to the first one that cannot belong to a number (a non-ASCII unit,
// an ASCII blank or the terminator), as bytes.
std::string ascii_run(const wchar *s) {
    std::string out;
    for (; *s && *s < 0x80 && !isspace(*s); ++s) out.push_back(static_cast<char>(*s));
    return out;
}

}  // namespace

// The runtime's long is 32 bits wide on the platform whose behaviour the families keep, so
// the value saturates at the 32-bit limits (with ERANGE), and toi is the same number.
long tol(const wchar *s) {
    if (!s) return 0;
    s = skip_blanks(s);
    bool negative = false;
    if (*s == u'+' || *s == u'-') {
        negative = *s == u'-';
        ++s;
    }
    const unsigned long limit = negative ? 2147483648UL : 2147483647UL;
    unsigned long magnitude = 0;
    bool overflow = false;
    for (; *s >= u'0' && *s <= u'9'; ++s) {
        magnitude = magnitude * 10 + static_cast<unsigned long>(*s - u'0');
        if (magnitude > limit) {
            overflow = true;
            magnitude = limit;  // keep reading the digits; the result saturates
        }
    }
    if (overflow) errno = ERANGE;
    return negative ? -static_cast<long>(magnitude) : static_cast<long>(magnitude);
}

int toi(const wchar *s) { return static_cast<int>(tol(s)); }

long tol_end(const wchar *s, const wchar **end, int base) {
    if (end) *end = s;
    if (!s) return 0;
    if (base != 0 && (base < 2 || base > 36)) {
        errno = EINVAL;
        return 0;
    }
    const wchar *start = skip_blanks(s);
    const std::string run = ascii_run(start);
    char *stop = nullptr;
    const long value = std::strtol(run.c_str(), &stop, base);
    if (end && stop != run.c_str()) *end = start + (stop - run.c_str());
    return value;
}

double tod_end(const wchar *s, const wchar **end) {
    if (end) *end = s;
    if (!s) return 0.0;
    const wchar *start = skip_blanks(s);
    const std::string run = ascii_run(start);
    char *stop = nullptr;
    const double value = std::strtod(run.c_str(), &stop);
    if (end && stop != run.c_str()) *end = start + (stop - run.c_str());
    return value;
}

double tof(const wchar *s) { return tod_end(s, nullptr); }

}  // namespace nqt
