// The date type: Julian days, pictures, day and month names.
#include <cctype>
#include <cstring>
#include <ctime>

#include "date4.h"

const int32_t date4month_days[14] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

const char date4day_names[8][12] = {"",         "Sunday",   "Monday", "Tuesday",
                                    "Wednesday", "Thursday", "Friday", "Saturday"};

const char date4month_names[13][10] = {"",       "January",   "February", "March",    "April",
                                       "May",    "June",      "July",     "August",   "September",
                                       "October", "November", "December"};

namespace {

constexpr double kMeanYear = 365.2425;

bool is_leap(int32_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int32_t year_length(int32_t year) { return is_leap(year) ? 366 : 365; }

// A date's eight characters, read no further than a NUL that ends the text early: a short
// text then reads as NUL bytes, which no part of a valid date is.
struct DateText {
    char text[9];
    explicit DateText(const char *date) {
        std::memset(text, 0, sizeof(text));
        if (date) {
            for (int i = 0; i < 8 && date[i]; ++i) text[i] = date[i];
        }
    }
};

}  // namespace

int32_t date4year_days(int32_t year) {
    // Reckoned wide: a year far out of range wraps as a 32-bit result instead of overflowing.
    const int64_t a = static_cast<int64_t>(year) - 1;
    const int64_t days = a * 365 + a / 4 - a / 100 + a / 400;
    return static_cast<int32_t>(static_cast<uint32_t>(days));
}

int32_t date4day_of_year(int32_t year, int32_t month, int32_t day) {
    if (year < 0 || month < 1 || month > 12) return -1;
    int32_t length = date4month_days[month + 1] - date4month_days[month];
    if (month == 2 && is_leap(year)) ++length;
    if (day < 1 || day > length) return -1;
    return date4month_days[month] + day + ((month >= 3 && is_leap(year)) ? 1 : 0);
}

int date4month_day(int32_t year, int32_t day_of_year, int32_t *month, int32_t *day) {
    int32_t correction = is_leap(year) ? 1 : 0;
    if (day_of_year < 60) correction = 0;
    int m = 2;
    for (; m <= 13; ++m) {
        if (day_of_year <= date4month_days[m] + correction) break;
    }
    if (m > 13) {
        if (month) *month = 0;
        if (day) *day = 0;
        return -1;
    }
    const int32_t found = m - 1;
    if (found < 3) correction = 0;
    if (month) *month = found;
    if (day) *day = day_of_year - date4month_days[found] - correction;
    return 0;
}

int32_t date4julian(const char *date_text) {
    if (!date_text) return -1;
    const DateText loaded(date_text);
    const char *date = loaded.text;
    const int32_t year = c4atoi(date, 4);
    if (year == 0 && std::memcmp(date, "        ", 8) == 0) return 0;
    const int32_t month = c4atoi(date + 4, 2);
    const int32_t day = c4atoi(date + 6, 2);
    const int32_t day_of_year = date4day_of_year(year, month, day);
    if (day_of_year < 1) return -1;
    return static_cast<int32_t>(static_cast<int64_t>(day_of_year) + date4julian_base +
                                date4year_days(year));
}

void date4assign(char *date, int32_t julian) {
    if (!date) return;
    if (julian < 1) {
        std::memset(date, ' ', 8);
        return;
    }
    const int64_t t = static_cast<int64_t>(julian) - date4julian_base;
    const int32_t g = static_cast<int32_t>(static_cast<double>(t) / kMeanYear);
    int32_t year = g + 1;
    int64_t rest = t - date4year_days(year);
    if (rest < 1) {
        year = g;
        rest = t - date4year_days(year);
    }
    if (rest > year_length(year)) {
        rest -= year_length(year);
        ++year;
    }
    int32_t month = 0, day = 0;
    date4month_day(year, static_cast<int32_t>(rest), &month, &day);
    c4ltoa(year, date, -4);
    c4ltoa(month, date + 4, -2);
    c4ltoa(day, date + 6, -2);
}

void date4init(char *date, const char *text, char *picture) {
    if (!date) return;
    std::memset(date, ' ', 8);
    if (!text || !picture) return;
    c4upper(picture);
    int next[4] = {0, 2, 4, 6};  // next free place of each group
    const int end[4] = {2, 4, 6, 8};
    for (int i = 0; picture[i] && text[i]; ++i) {
        int group;
        switch (picture[i]) {
            case 'C': group = 0; break;
            case 'Y': group = 1; break;
            case 'M': group = 2; break;
            case 'D': group = 3; break;
            default: continue;
        }
        if (next[group] < end[group]) date[next[group]++] = text[i];
    }
    if (std::memcmp(date, "        ", 8) == 0) return;
    const char *defaults[4] = {"19", "01", "01", "01"};
    for (int group = 0; group < 4; ++group) {
        if (next[group] == end[group] - 2) std::memcpy(date + end[group] - 2, defaults[group], 2);
    }
    // A month given by name.
    if (const char *first_m = std::strchr(picture, 'M')) {
        int run = 0;
        for (const char *p = picture; *p; ++p) {
            if (*p == 'M') ++run;
        }
        if (run > 2) {
            const size_t at = static_cast<size_t>(first_m - picture);
            char name[4] = {0, 0, 0, 0};
            int n = 0;
            if (std::strlen(text) > at) {
                for (; n < 3 && text[at + n]; ++n) name[n] = text[at + n];
            }
            while (n > 0 && name[n - 1] == ' ') name[--n] = '\0';
            date[4] = ' ';
            date[5] = ' ';
            if (n >= 1) {
                c4lower(name);
                name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
                for (int month = 1; month <= 12; ++month) {
                    if (std::strncmp(date4month_names[month], name, static_cast<size_t>(n)) == 0) {
                        c4ltoa(month, date + 4, 2);
                        break;
                    }
                }
            }
        }
    }
    for (int i = 0; i < 8; ++i) {
        if (date[i] == ' ') date[i] = '0';
    }
}

void date4format(const char *date_text, char *out, char *picture) {
    if (!date_text || !out || !picture) return;
    const DateText loaded(date_text);
    const char *date = loaded.text;
    const size_t length = std::strlen(picture);
    std::memset(out, ' ', length);
    out[length] = '\0';
    c4upper(picture);
    c4picture_map(out, date, picture, "CCYYMMDD");

    const char *first_m = std::strchr(picture, 'M');
    if (!first_m) return;
    size_t run = 0;
    while (first_m[run] == 'M') ++run;
    if (run < 3) return;
    char *place = out + (first_m - picture);
    if (date[4] == ' ' && date[5] == ' ') {
        std::memset(place, ' ', run);
        return;
    }
    int32_t month = c4atoi(date + 4, 2);
    if (month < 1) month = 1;
    if (month > 12) month = 12;
    const char *name = date4month_names[month];
    const size_t copied = run < 9 ? run : 9;
    std::memcpy(place, name, copied);  // the slot's NUL bytes come along
    if (run > 9) std::memset(place + 9, ' ', run - 9);
    const size_t name_length = std::strlen(name);
    if (name_length < run) place[name_length] = ' ';
    // The conversion from the OEM to the display character set is the identity here.
}

int date4dow(const char *date) {
    const int32_t julian = date4julian(date);
    if (julian < 0) return 0;
    return (julian + 1) % 7 + 1;
}

const char *date4cdow(const char *date) { return date4day_names[date4dow(date)]; }

const char *date4cmonth(const char *date) {
    if (!date) return date4month_names[0];
    const int32_t month = c4atoi(DateText(date).text + 4, 2);
    if (month < 1 || month > 12) return date4month_names[0];
    return date4month_names[month];
}

int32_t date4day(const char *date) { return date ? c4atol(DateText(date).text + 6, 2) : 0; }
int32_t date4month(const char *date) { return date ? c4atol(DateText(date).text + 4, 2) : 0; }
int32_t date4year(const char *date) { return date ? c4atol(DateText(date).text, 4) : 0; }

namespace {

bool local_now(std::tm *out) {
    const std::time_t now = static_cast<std::time_t>(u4clock());
    return localtime_r(&now, out) != nullptr;
}

}  // namespace

void date4today(char *date) {
    if (!date) return;
    std::tm now;
    if (!local_now(&now)) {
        std::memset(date, ' ', 8);
        return;
    }
    c4ltoa(now.tm_year + 1900, date, -4);
    c4ltoa(now.tm_mon + 1, date + 4, -2);
    c4ltoa(now.tm_mday, date + 6, -2);
}

void date4time_now(char *out) {
    if (!out) return;
    std::tm now;
    if (!local_now(&now)) {
        std::memset(out, ' ', 8);
        return;
    }
    c4ltoa(now.tm_hour, out, -2);
    out[2] = ':';
    c4ltoa(now.tm_min, out + 3, -2);
    out[5] = ':';
    c4ltoa(now.tm_sec, out + 6, -2);
}

void u4yymmdd(unsigned char *out) {
    if (!out) return;
    std::tm now;
    if (!local_now(&now)) {
        out[0] = out[1] = out[2] = 0;
        return;
    }
    out[0] = static_cast<unsigned char>(now.tm_year & 0xFF);
    out[1] = static_cast<unsigned char>(now.tm_mon + 1);
    out[2] = static_cast<unsigned char>(now.tm_mday);
}

double date4double(const char *date) {
    const int32_t julian = date4julian(date);
    // A blank date sorts above every other.
    if (julian == 0) return 1.0E100;
    return static_cast<double>(julian);
}

void date4double_to(const char *date, double *out) {
    if (out) *out = date4double(date);
}
