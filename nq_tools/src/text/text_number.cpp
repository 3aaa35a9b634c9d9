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

long tol(const wchar *s) {
    if (!s) return 0;
    s = skip_blanks(s);
    bool negative = false;
    if (*s == u'+' || *s == u'-') {
        negative = *s == u'-';
        ++s;
    }
    // The magnitude is gathered unsigned so that LONG_MIN itself does not overflow.
    const unsigned long limit =
        negative ? static_cast<unsigned long>(LONG_MAX) + 1UL : static_cast<unsigned long>(LONG_MAX);
    unsigned long magnitude = 0;
    bool overflow = false;
    for (; *s >= u'0' && *s <= u'9'; ++s) {
        const unsigned long digit = *s - u'0';
        if (overflow || magnitude > (limit - digit) / 10) {
            overflow = true;  // keep reading the digits; the result saturates
            continue;
        }
        magnitude = magnitude * 10 + digit;
    }
    if (overflow) {
        errno = ERANGE;
        return negative ? LONG_MIN : LONG_MAX;
    }
    if (negative) return magnitude == limit ? LONG_MIN : -static_cast<long>(magnitude);
    return static_cast<long>(magnitude);
}

// The int of the long value: text past the int range wraps modulo 2^32.
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
