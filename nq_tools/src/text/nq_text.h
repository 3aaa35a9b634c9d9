// The UTF-16 string kit that every family uses. The C library has no char16_t functions,
// so these are written once here. Semantics follow the C runtime's wide functions named in
// each comment; case mapping is towupper/towlower of the current C locale on each code unit.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include "nq_types.h"

namespace nqt {

using wchar = nq_wchar;

std::size_t len(const wchar *s);                                  // wcslen; null gives 0
wchar *copy(wchar *dest, const wchar *src);                       // wcscpy
wchar *ncopy(wchar *dest, const wchar *src, std::size_t n);       // wcsncpy (pads with zeros, may leave unterminated)
std::size_t copy_bounded(wchar *dest, std::size_t capacity, const wchar *src);  // copies at most capacity-1 units, always terminates; yields units copied
wchar *cat(wchar *dest, const wchar *src);                        // wcscat
int cmp(const wchar *a, const wchar *b);                          // wcscmp, by code unit; <0, 0, >0
int ncmp(const wchar *a, const wchar *b, std::size_t n);          // wcsncmp
int icmp(const wchar *a, const wchar *b);                         // _wcsicmp: compares towlower of each unit
int nicmp(const wchar *a, const wchar *b, std::size_t n);         // _wcsnicmp
const wchar *chr(const wchar *s, wchar c);                        // wcschr (finds the terminator for c == 0)
wchar *chr(wchar *s, wchar c);
const wchar *rchr(const wchar *s, wchar c);                       // wcsrchr
wchar *rchr(wchar *s, wchar c);
const wchar *str(const wchar *haystack, const wchar *needle);     // wcsstr
wchar *str(wchar *haystack, const wchar *needle);
std::size_t spn(const wchar *s, const wchar *accept);             // wcsspn
std::size_t cspn(const wchar *s, const wchar *reject);            // wcscspn
wchar *tok(wchar *s, const wchar *delims);                        // wcstok with hidden state (one per thread)
wchar *tok_r(wchar *s, const wchar *delims, wchar **state);       // wcstok with the caller's state
wchar *rev(wchar *s);                                             // _wcsrev
wchar *upr(wchar *s);                                             // _wcsupr
wchar *lwr(wchar *s);                                             // _wcslwr
wchar toupper(wchar c);                                           // towupper of the current locale
wchar tolower(wchar c);                                           // towlower of the current locale
bool isspace(wchar c);                                            // iswspace
bool isdigit(wchar c);                                            // iswdigit
bool isalpha(wchar c);                                            // iswalpha
bool isalnum(wchar c);                                            // iswalnum

int toi(const wchar *s);      // _wtoi: leading blanks, sign, digits; saturates at the 32-bit limits
long tol(const wchar *s);     // _wtol: the same, a 32-bit long that saturates (ERANGE)
double tof(const wchar *s);   // _wtof: as strtod on the text (decimal, exponent, inf/nan)
long tol_end(const wchar *s, const wchar **end, int base);     // wcstol
double tod_end(const wchar *s, const wchar **end);              // wcstod

// printf-style formatting into UTF-16. Conversions: %s (wide string; null prints "(null)"),
// %ls (wide), %hs and %S (narrow string, bytes widened one to one), %c (wide character from
// an int), %hc (narrow), %d %i %u %x %X %o with h, hh, l, ll, z, I64 sizes, %f %F %e %E %g %G
// %a with l and L, %p, %n (ignored), %%; flags - + blank 0 #; width and precision, each also
// as *. Widths count characters. Writes at most capacity-1 units and a terminator (nothing
// for capacity 0); yields the length the whole result has (as snprintf).
int vformat(wchar *dest, std::size_t capacity, const wchar *fmt, va_list args);
int format(wchar *dest, std::size_t capacity, const wchar *fmt, ...);
// The whole result as a string.
std::u16string vformat_string(const wchar *fmt, va_list args);
std::u16string format_string(const wchar *fmt, ...);

// Conversions (the platform's rules: invalid UTF-8 bytes become code units of their value).
std::string to_utf8(const wchar *s);
std::string to_utf8(std::u16string_view s);
std::u16string from_utf8(std::string_view bytes);
// Bytes to code units of the same value, and back (the engine bridge's rule); a unit above
// 0xFF becomes '?'.
std::u16string from_bytes(std::string_view bytes);
std::string to_bytes(const wchar *s);

// Console and stream output as UTF-8 (wprintf / fwprintf / fputws). They yield the number
// of characters written, or -1.
int print(const wchar *fmt, ...);
int vprint(const wchar *fmt, va_list args);
int fprint(std::FILE *stream, const wchar *fmt, ...);
int vfprint(std::FILE *stream, const wchar *fmt, va_list args);
int put(const wchar *s, std::FILE *stream);

}  // namespace nqt
