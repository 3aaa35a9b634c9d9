// Number text in the fixed-width forms of data file fields, and small string helpers.
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "date4.h"

namespace {

// Copies at most limit characters of text (stopping at a NUL) into buffer and ends it.
void bounded_copy(char *buffer, int limit, const char *text, int length) {
    int n = length < 0 ? 0 : (length > limit ? limit : length);
    int i = 0;
    if (text) {
        for (; i < n && text[i]; ++i) buffer[i] = text[i];
    }
    buffer[i] = '\0';
}

int32_t to_int32(const char *buffer) {
    errno = 0;
    const long long value = std::strtoll(buffer, nullptr, 10);
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(value);
}

}  // namespace

double c4atod(const char *text, int length) {
    char buffer[50];
    bounded_copy(buffer, 49, text, length);
    return std::atof(buffer);
}

void c4atod_to(const char *text, int length, double *out) {
    if (out) *out = c4atod(text, length);
}

int32_t c4atoi(const char *text, int length) {
    char buffer[128];
    bounded_copy(buffer, 127, text, length);
    return to_int32(buffer);
}

int32_t c4atol(const char *text, int length) {
    char buffer[128];
    bounded_copy(buffer, 127, text, length);
    return to_int32(buffer);
}

void c4ltoa(int32_t value, char *out, int width) {
    if (!out || width == 0) return;
    const bool zero_fill = width < 0;
    const int w = zero_fill ? -width : width;
    long long magnitude = value;
    const bool negative = magnitude < 0;
    if (negative) magnitude = -magnitude;

    std::memset(out, '0', static_cast<size_t>(w));
    int pos = w - 1;
    do {
        if (pos < 0) {  // digits left over
            std::memset(out, '*', static_cast<size_t>(w));
            return;
        }
        out[pos--] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    // pos is now the column left of the first digit.
    if (!zero_fill) {
        for (int i = 0; i <= pos; ++i) out[i] = ' ';
    }
    if (negative) {
        // The sign needs a blank: the rightmost blank takes it.
        if (out[0] != ' ') {
            std::memset(out, '*', static_cast<size_t>(w));
            return;
        }
        out[pos] = '-';
    }
}

void c4dtoa(double value, char *out, int width, int decimals) {
    if (!out || width < 1) return;
    std::memset(out, '0', static_cast<size_t>(width));
    int integer_room = width;
    if (decimals < 1) {
        decimals = 0;
    } else {
        if (decimals > 15) decimals = 15;
        if (decimals > width - 1) decimals = width - 1;
        integer_room = width - decimals - 1;  // the point's place
        out[integer_room] = '.';
    }
    if (!std::isfinite(value)) {
        std::memset(out, '*', static_cast<size_t>(width));
        return;
    }
    // The digits, the place of the decimal point and the sign, as a fixed-point conversion
    // gives them: the significant digits up to the given decimals, p digits of them before the
    // point (p below 1 when the value is below one).
    const bool negative = std::signbit(value) && value != 0.0;
    char fixed[400];
    std::snprintf(fixed, sizeof(fixed), "%.*f", decimals, std::fabs(value));
    char digits[400];
    int count = 0;
    int p = 0;
    const char *point = std::strchr(fixed, '.');
    const char *integer_end = point ? point : fixed + std::strlen(fixed);
    const char *scan = fixed;
    while (scan < integer_end && *scan == '0') ++scan;
    p = static_cast<int>(integer_end - scan);
    for (; scan < integer_end; ++scan) digits[count++] = *scan;
    if (point) {
        const char *fraction = point + 1;
        if (p == 0) {
            while (*fraction == '0') {
                --p;
                ++fraction;
            }
            if (!*fraction) p = 0;  // the value rounds to zero: no digits at all
        }
        for (; *fraction; ++fraction) digits[count++] = *fraction;
    }

    if (p > integer_room || integer_room < 0) {
        std::memset(out, '*', static_cast<size_t>(width));
        return;
    }
    int sign_place;
    if (p >= 1) {
        sign_place = integer_room - p - 1;
    } else if (integer_room == 1) {
        sign_place = 0;
    } else {
        sign_place = integer_room - 2;
    }
    if (negative && sign_place < 0) {
        std::memset(out, '*', static_cast<size_t>(width));
        return;
    }
    int next_digit = 0;
    if (p >= 1) {
        for (int i = 0; i < integer_room - p; ++i) out[i] = ' ';
        for (int i = integer_room - p; i < integer_room; ++i) out[i] = digits[next_digit++];
    } else {
        for (int i = 0; i < integer_room - 1; ++i) out[i] = ' ';
    }
    if (negative) out[sign_place] = '-';
    if (decimals > 0) {
        int place = integer_room + 1;
        int left = decimals;
        if (p < 0) {
            place += -p;
            left -= -p;
        }
        for (; left > 0 && next_digit < count && place < width; --left) {
            out[place++] = digits[next_digit++];
        }
    }
}

int c4trim_len(char *text, int size) {
    if (!text || size < 1) return 0;
    int n = 0;
    while (n < size && text[n]) ++n;
    if (n == size) {
        n = size - 1;
        text[n] = '\0';
    }
    while (n > 1 && (text[n - 1] == ' ' || text[n - 1] == '\0')) text[--n] = '\0';
    return n;
}

void c4upper(char *text) {
    if (!text) return;
    for (; *text; ++text) *text = static_cast<char>(std::toupper(static_cast<unsigned char>(*text)));
}

void c4lower(char *text) {
    if (!text) return;
    for (; *text; ++text) *text = static_cast<char>(std::tolower(static_cast<unsigned char>(*text)));
}

int c4strcpy(char *destination, const char *source, int size) {
    if (!destination || size < 1) return 0;
    if (!source) {
        destination[0] = '\0';
        return 0;
    }
    int i = 0;
    for (; i < size - 1; ++i) {
        destination[i] = source[i];
        if (!source[i]) return i;
    }
    destination[i] = '\0';
    return i;
}

void c4picture_map(char *to, const char *from, const char *to_picture, const char *from_picture) {
    if (!to || !from || !to_picture || !from_picture) return;
    std::strcpy(to, to_picture);
    int i = 0;
    while (from_picture[i]) {
        const char c = from_picture[i];
        const char *found = std::strchr(to_picture, c);
        if (!found) {
            ++i;
            continue;
        }
        int place = static_cast<int>(found - to_picture);
        to[place] = from[i];
        ++i;
        // The rest of the run goes to the following places while they still hold c: only the
        // first run of c in to_picture is filled.
        bool placing = true;
        while (from_picture[i] == c) {
            if (placing) {
                ++place;
                if (to_picture[place] == c) {
                    to[place] = from[i];
                } else {
                    placing = false;
                }
            }
            ++i;
        }
    }
}

int u4name_char(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

unsigned u4log2(unsigned long value) {
    unsigned n = 0;
    while (value > 1) {
        value /= 2;
        ++n;
    }
    return n;
}
