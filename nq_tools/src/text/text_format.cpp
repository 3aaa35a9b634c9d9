// The printf-style formatter for UTF-16 text.
//
// One pass over the format writes into a sink: either a caller's buffer, which takes what
// fits and counts the rest, or a growing string. Strings, characters and integers are laid
// out here, unit by unit; floating numbers are laid out by the C library's snprintf into a
// narrow buffer (digits, sign, point and exponent are ASCII) and widened, and the width is
// applied here so that a huge width costs no buffer.
//
// Differences from the narrow C library that callers rely on: %s is a wide string and %hs /
// %S a narrow one whose bytes become units of the same value; %c is a wide unit and %hc / %C
// a narrow character; a null string prints "(null)", cut by the precision like any other
// text; an unknown conversion is copied through with its '%'.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <new>
#include <string>

#include "plat_utf.h"
#include "text_format_internal.h"

namespace nqt {

namespace {

// No result may be longer than an int can count.
constexpr std::size_t kMaxResult = static_cast<std::size_t>(INT_MAX);

class Sink {
public:
    Sink(wchar *dest, std::size_t capacity) : dest_(dest), capacity_(dest ? capacity : 0) {}
    explicit Sink(std::u16string &out) : out_(&out) {}

    void put(wchar c) { fill(c, 1); }

    void fill(wchar c, std::size_t n) {
        if (out_) {
            out_->append(std::min(n, room_in_string()), c);
        } else if (count_ + 1 < capacity_) {
            const std::size_t k = std::min(n, capacity_ - 1 - count_);
            for (std::size_t i = 0; i < k; ++i) dest_[count_ + i] = c;
        }
        count_ += n;
    }

    void write(const wchar *s, std::size_t n) {
        if (out_) {
            out_->append(s, std::min(n, room_in_string()));
        } else if (count_ + 1 < capacity_) {
            const std::size_t k = std::min(n, capacity_ - 1 - count_);
            for (std::size_t i = 0; i < k; ++i) dest_[count_ + i] = s[i];
        }
        count_ += n;
    }

    // Ends the buffer's text after what fitted.
    void terminate() {
        if (capacity_ > 0) dest_[std::min(count_, capacity_ - 1)] = 0;
    }

    std::size_t count() const { return count_; }

private:
    std::size_t room_in_string() const {
        return out_->size() < kMaxResult ? kMaxResult - out_->size() : 0;
    }

    wchar *dest_ = nullptr;
    std::size_t capacity_ = 0;
    std::u16string *out_ = nullptr;
    std::size_t count_ = 0;
};

enum class Size { none, hh, h, l, ll, L, z, j, t, i32, i64, w };

struct Conversion {
    bool left = false;   // '-'
    bool plus = false;   // '+'
    bool blank = false;  // ' '
    bool zero = false;   // '0'
    bool alt = false;    // '#'
    std::size_t width = 0;
    int precision = -1;  // -1: none given
    Size size = Size::none;
    wchar conversion = 0;
};

// Decimal digits of a width or precision, stopping at INT_MAX.
int read_count(const wchar *&p) {
    long long n = 0;
    for (; *p >= u'0' && *p <= u'9'; ++p) {
        n = n * 10 + (*p - u'0');
        if (n > INT_MAX) n = INT_MAX;
    }
    return static_cast<int>(n);
}

void pad_left(Sink &sink, const Conversion &conv, std::size_t length) {
    if (!conv.left && conv.width > length) sink.fill(u' ', conv.width - length);
}

void pad_right(Sink &sink, const Conversion &conv, std::size_t length) {
    if (conv.left && conv.width > length) sink.fill(u' ', conv.width - length);
}

void emit_wide(Sink &sink, const Conversion &conv, const wchar *s) {
    static const wchar kNull[] = u"(null)";
    if (!s) s = kNull;
    // With a precision the text need not be terminated within it.
    std::size_t n = 0;
    const std::size_t limit = conv.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(conv.precision);
    while (n < limit && s[n]) ++n;
    pad_left(sink, conv, n);
    sink.write(s, n);
    pad_right(sink, conv, n);
}

void emit_narrow(Sink &sink, const Conversion &conv, const char *s) {
    if (!s) {
        emit_wide(sink, conv, nullptr);
        return;
    }
    std::size_t n = 0;
    const std::size_t limit = conv.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(conv.precision);
    while (n < limit && s[n]) ++n;
    pad_left(sink, conv, n);
    for (std::size_t i = 0; i < n; ++i) sink.put(static_cast<unsigned char>(s[i]));
    pad_right(sink, conv, n);
}

void emit_char(Sink &sink, const Conversion &conv, wchar c) {
    pad_left(sink, conv, 1);
    sink.put(c);
    pad_right(sink, conv, 1);
}

// An integer as sign, prefix, precision zeros and digits, padded to the width.
void emit_integer(Sink &sink, const Conversion &conv, bool negative, std::uintmax_t magnitude,
                  unsigned base, bool upper, bool is_signed, bool pointer) {
    const char *digit_set = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    char digits[72];
    std::size_t ndigits = 0;
    if (!(conv.precision == 0 && magnitude == 0)) {
        std::uintmax_t m = magnitude;
        do {
            digits[ndigits++] = digit_set[m % base];
            m /= base;
        } while (m != 0);
    }
    std::size_t zeros = conv.precision > 0 && static_cast<std::size_t>(conv.precision) > ndigits
                            ? static_cast<std::size_t>(conv.precision) - ndigits
                            : 0;
    // '#' with octal: the first digit must be a zero.
    if (conv.alt && base == 8 && zeros == 0 && (ndigits == 0 || magnitude != 0)) zeros = 1;

    wchar sign = 0;
    if (is_signed || pointer) {
        if (negative) sign = u'-';
        else if (conv.plus) sign = u'+';
        else if (conv.blank) sign = u' ';
    }
    const char *prefix = "";
    if (pointer || (conv.alt && base == 16 && magnitude != 0)) prefix = upper ? "0X" : "0x";
    const std::size_t prefix_length = prefix[0] ? 2 : 0;

    const std::size_t body = (sign ? 1 : 0) + prefix_length + zeros + ndigits;
    const bool zero_pad = conv.zero && !conv.left && conv.precision < 0;
    if (!zero_pad) pad_left(sink, conv, body);
    if (sign) sink.put(sign);
    for (std::size_t i = 0; i < prefix_length; ++i) sink.put(static_cast<wchar>(prefix[i]));
    if (zero_pad && conv.width > body) sink.fill(u'0', conv.width - body);
    sink.fill(u'0', zeros);
    while (ndigits > 0) sink.put(static_cast<wchar>(digits[--ndigits]));
    pad_right(sink, conv, body);
}

// Past this many digits after the point (or significant digits for %g) every digit of a
// double or long double is zero: the smallest long double has 16445 decimals. A larger
// precision is laid out with this one and the missing zeros are added here, so that no
// precision makes a buffer of its size.
constexpr int kExactPrecision = 20000;

// The narrow conversion conv for snprintf, without the width.
std::string float_spec(const Conversion &conv, int precision) {
    std::string s = "%";
    if (conv.left) s += '-';
    if (conv.plus) s += '+';
    if (conv.blank) s += ' ';
    if (conv.alt) s += '#';
    if (precision >= 0) s += "." + std::to_string(precision);
    if (conv.size == Size::L) s += 'L';
    s += static_cast<char>(conv.conversion);
    return s;
}

template <typename Float>
bool emit_float(Sink &sink, const Conversion &conv, Float value) {
    const bool finite = std::isfinite(value);
    const int precision = std::min(conv.precision, kExactPrecision);
    const std::string nspec = float_spec(conv, precision);
    const int n = std::snprintf(nullptr, 0, nspec.c_str(), value);
    if (n < 0) return false;
    std::string narrow(static_cast<std::size_t>(n) + 1, '\0');
    std::snprintf(narrow.data(), narrow.size(), nspec.c_str(), value);
    narrow.resize(static_cast<std::size_t>(n));
    const std::u16string text = nqplat::utf8_to_utf16(narrow);

    // The zeros of a precision beyond the exact one go before the exponent, if any. %g drops
    // trailing zeros unless '#' keeps them.
    std::size_t extra = 0, extra_at = text.size();
    const wchar c = conv.conversion;
    if (finite && conv.precision > precision && ((c != u'g' && c != u'G') || conv.alt)) {
        extra = static_cast<std::size_t>(conv.precision - precision);
        const std::size_t exponent = text.find_last_of(c == u'a' || c == u'A' ? u"pP" : u"eE");
        if (exponent != std::u16string::npos) extra_at = exponent;
    }

    const std::size_t length = text.size() + extra;
    std::size_t head = 0;  // where zero padding goes: after the sign and, for %a, the "0x"
    std::size_t zeros = 0;
    if (conv.width > length && !conv.left && conv.zero && finite) {
        if (head < text.size() && (text[head] == u'-' || text[head] == u'+' || text[head] == u' ')) ++head;
        if (head + 1 < text.size() && text[head] == u'0' && (text[head + 1] == u'x' || text[head + 1] == u'X'))
            head += 2;
        zeros = conv.width - length;
    } else {
        pad_left(sink, conv, length);
    }
    sink.write(text.data(), head);
    sink.fill(u'0', zeros);
    sink.write(text.data() + head, extra_at - head);
    sink.fill(u'0', extra);
    sink.write(text.data() + extra_at, text.size() - extra_at);
    pad_right(sink, conv, length);
    return true;
}

std::intmax_t signed_argument(Size size, va_list *ap) {
    switch (size) {
        case Size::hh: return static_cast<signed char>(va_arg(*ap, int));
        case Size::h: return static_cast<short>(va_arg(*ap, int));
        case Size::l: return va_arg(*ap, long);
        case Size::ll:
        case Size::L:
        case Size::i64: return va_arg(*ap, long long);
        case Size::z:
        case Size::t: return va_arg(*ap, std::ptrdiff_t);
        case Size::j: return va_arg(*ap, std::intmax_t);
        case Size::i32: return va_arg(*ap, std::int32_t);
        case Size::none:
        case Size::w: break;
    }
    return va_arg(*ap, int);
}

std::uintmax_t unsigned_argument(Size size, va_list *ap) {
    switch (size) {
        case Size::hh: return static_cast<unsigned char>(va_arg(*ap, unsigned int));
        case Size::h: return static_cast<unsigned short>(va_arg(*ap, unsigned int));
        case Size::l: return va_arg(*ap, unsigned long);
        case Size::ll:
        case Size::L:
        case Size::i64: return va_arg(*ap, unsigned long long);
        case Size::z:
        case Size::t: return va_arg(*ap, std::size_t);
        case Size::j: return va_arg(*ap, std::uintmax_t);
        case Size::i32: return va_arg(*ap, std::uint32_t);
        case Size::none:
        case Size::w: break;
    }
    return va_arg(*ap, unsigned int);
}

// Flags, width, precision and size of the conversion at p (just past its '%'); p is left
// on the conversion character.
Conversion parse_spec(const wchar *&p, va_list *ap) {
    Conversion conv;
    for (;; ++p) {
        if (*p == u'-') conv.left = true;
        else if (*p == u'+') conv.plus = true;
        else if (*p == u' ') conv.blank = true;
        else if (*p == u'0') conv.zero = true;
        else if (*p == u'#') conv.alt = true;
        else break;
    }
    if (*p == u'*') {
        ++p;
        const long long w = va_arg(*ap, int);
        if (w < 0) conv.left = true;  // a negative width from the arguments means '-'
        conv.width = static_cast<std::size_t>(w < 0 ? -w : w);
    } else {
        conv.width = static_cast<std::size_t>(read_count(p));
    }
    if (*p == u'.') {
        ++p;
        if (*p == u'*') {
            ++p;
            const int pr = va_arg(*ap, int);
            conv.precision = pr < 0 ? -1 : pr;  // a negative one counts as none
        } else {
            conv.precision = read_count(p);
        }
    }
    switch (*p) {
        case u'h':
            if (p[1] == u'h') { conv.size = Size::hh; ++p; }
            else conv.size = Size::h;
            ++p;
            break;
        case u'l':
            if (p[1] == u'l') { conv.size = Size::ll; ++p; }
            else conv.size = Size::l;
            ++p;
            break;
        case u'L': conv.size = Size::L; ++p; break;
        case u'z': conv.size = Size::z; ++p; break;
        case u'j': conv.size = Size::j; ++p; break;
        case u't': conv.size = Size::t; ++p; break;
        case u'w': conv.size = Size::w; ++p; break;
        case u'I':
            if (p[1] == u'6' && p[2] == u'4') { conv.size = Size::i64; p += 3; }
            else if (p[1] == u'3' && p[2] == u'2') { conv.size = Size::i32; p += 3; }
            else { conv.size = Size::z; ++p; }
            break;
        default: break;
    }
    conv.conversion = *p;
    return conv;
}

// Yields false when a number could not be formatted.
bool run(Sink &sink, const wchar *fmt, va_list *ap) {
    const wchar *p = fmt;
    while (*p) {
        if (*p != u'%') {
            sink.put(*p++);
            continue;
        }
        const wchar *start = p++;
        Conversion conv = parse_spec(p, ap);
        if (*p == 0) {  // the format ends inside a conversion: copy what there is
            sink.write(start, static_cast<std::size_t>(p - start));
            break;
        }
        ++p;
        const bool wide_size = conv.size == Size::l || conv.size == Size::w;
        switch (conv.conversion) {
            case u's':
                if (conv.size == Size::h) emit_narrow(sink, conv, va_arg(*ap, const char *));
                else emit_wide(sink, conv, va_arg(*ap, const wchar *));
                break;
            case u'S':
                if (wide_size) emit_wide(sink, conv, va_arg(*ap, const wchar *));
                else emit_narrow(sink, conv, va_arg(*ap, const char *));
                break;
            case u'c':
                if (conv.size == Size::h)
                    emit_char(sink, conv, static_cast<unsigned char>(va_arg(*ap, int)));
                else
                    emit_char(sink, conv, static_cast<wchar>(va_arg(*ap, int)));
                break;
            case u'C':
                if (wide_size) emit_char(sink, conv, static_cast<wchar>(va_arg(*ap, int)));
                else emit_char(sink, conv, static_cast<unsigned char>(va_arg(*ap, int)));
                break;
            case u'd':
            case u'i': {
                const std::intmax_t v = signed_argument(conv.size, ap);
                // The magnitude of INTMAX_MIN fits the unsigned type.
                const std::uintmax_t m = v < 0 ? std::uintmax_t{0} - static_cast<std::uintmax_t>(v)
                                               : static_cast<std::uintmax_t>(v);
                emit_integer(sink, conv, v < 0, m, 10, false, true, false);
                break;
            }
            case u'u':
                emit_integer(sink, conv, false, unsigned_argument(conv.size, ap), 10, false, false, false);
                break;
            case u'o':
                emit_integer(sink, conv, false, unsigned_argument(conv.size, ap), 8, false, false, false);
                break;
            case u'x':
                emit_integer(sink, conv, false, unsigned_argument(conv.size, ap), 16, false, false, false);
                break;
            case u'X':
                emit_integer(sink, conv, false, unsigned_argument(conv.size, ap), 16, true, false, false);
                break;
            case u'p': {
                const void *ptr = va_arg(*ap, void *);
                if (!ptr) {
                    static const wchar kNil[] = u"(nil)";
                    Conversion text_spec = conv;
                    text_spec.precision = -1;
                    emit_wide(sink, text_spec, kNil);
                } else {
                    emit_integer(sink, conv, false, reinterpret_cast<std::uintptr_t>(ptr), 16, false,
                                 false, true);
                }
                break;
            }
            case u'f':
            case u'F':
            case u'e':
            case u'E':
            case u'g':
            case u'G':
            case u'a':
            case u'A': {
                const bool ok = conv.size == Size::L ? emit_float(sink, conv, va_arg(*ap, long double))
                                                     : emit_float(sink, conv, va_arg(*ap, double));
                if (!ok) return false;
                break;
            }
            case u'n':
                (void)va_arg(*ap, void *);  // the count is never stored
                break;
            case u'%':
                sink.put(u'%');
                break;
            default:
                sink.write(start, static_cast<std::size_t>(p - start));
                break;
        }
    }
    return true;
}

int result_of(bool ok, const Sink &sink) {
    if (!ok || sink.count() > kMaxResult) return -1;
    return static_cast<int>(sink.count());
}

}  // namespace

int vformat(wchar *dest, std::size_t capacity, const wchar *fmt, va_list args) {
    Sink sink(dest, capacity);
    bool ok = false;
    if (fmt) {
        va_list ap;
        va_copy(ap, args);
        ok = run(sink, fmt, &ap);
        va_end(ap);
    }
    sink.terminate();
    return result_of(ok, sink);
}

int format(wchar *dest, std::size_t capacity, const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = vformat(dest, capacity, fmt, args);
    va_end(args);
    return n;
}

namespace detail {

int format_append(std::u16string &out, const wchar *fmt, va_list args) {
    if (!fmt) return -1;
    Sink sink(out);
    va_list ap;
    va_copy(ap, args);
    bool ok = false;
    try {
        ok = run(sink, fmt, &ap);
    } catch (const std::bad_alloc &) {
        ok = false;  // a width of millions that memory cannot hold fails like any format error
    }
    va_end(ap);
    return result_of(ok, sink);
}

}  // namespace detail

std::u16string vformat_string(const wchar *fmt, va_list args) {
    std::u16string out;
    detail::format_append(out, fmt, args);
    return out;
}

std::u16string format_string(const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::u16string out = vformat_string(fmt, args);
    va_end(args);
    return out;
}

}  // namespace nqt
