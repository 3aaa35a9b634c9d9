// Dates, number text and small string helpers.
//
// A date is eight ASCII characters CCYYMMDD with no NUL, as it stands in a date field;
// eight blanks are the blank date. Its numeric form is a Julian day: 0 for the blank date,
// -1 for an invalid one, 1721426 for 1 January of year 1 (proleptic Gregorian calendar).
// Nothing here reports an error: a bad value gives blanks, asterisks or -1.
#pragma once

#include <cstddef>
#include <cstdint>

constexpr int32_t date4julian_base = 1721425;  // Julian day of 31 December of year 0

// Days before each month, cumulated; month m uses entries m and m + 1.
extern const int32_t date4month_days[14];
// Slot 0 empty, then Sunday .. Saturday.
extern const char date4day_names[8][12];
// Slot 0 empty, then January .. December.
extern const char date4month_names[13][10];

int32_t date4julian(const char *date);
void date4assign(char *date, int32_t julian);
// Reads a date out of text by picture; picture is upper-cased in place.
void date4init(char *date, const char *text, char *picture);
// Writes the date by picture into out (picture length + 1 bytes: the text and a NUL);
// picture is upper-cased in place. A month-name run may leave NUL bytes inside the text.
void date4format(const char *date, char *out, char *picture);
int32_t date4year_days(int32_t year);
int32_t date4day_of_year(int32_t year, int32_t month, int32_t day);
int date4month_day(int32_t year, int32_t day_of_year, int32_t *month, int32_t *day);
int date4dow(const char *date);
const char *date4cdow(const char *date);
const char *date4cmonth(const char *date);
int32_t date4day(const char *date);
int32_t date4month(const char *date);
int32_t date4year(const char *date);
void date4today(char *date);     // 8 characters, no NUL
void date4time_now(char *out);   // "HH:MM:SS", 8 characters, no NUL
double date4double(const char *date);
void date4double_to(const char *date, double *out);

// Number text.
double c4atod(const char *text, int length);
void c4atod_to(const char *text, int length, double *out);
int32_t c4atoi(const char *text, int length);
int32_t c4atol(const char *text, int length);
void c4dtoa(double value, char *out, int width, int decimals);  // width bytes, no NUL
void c4ltoa(int32_t value, char *out, int width);              // |width| bytes, no NUL

// Strings.
int c4trim_len(char *text, int size);
void c4upper(char *text);
void c4lower(char *text);
int c4strcpy(char *destination, const char *source, int size);
void c4picture_map(char *to, const char *from, const char *to_picture, const char *from_picture);

// Names. Separators are the backslash and the drive colon; the results are upper case and
// cut to the size given (size counts the NUL).
int u4name_char(int c);
unsigned u4log2(unsigned long value);
int u4name_ext(char *name, int size, const char *extension, int force);
int u4name_piece(char *out, int size, const char *name, int keep_path, int keep_extension);
int u4name_path(char *out, int size, const char *name);
int u4name_ret_ext(char *out, int size, const char *name);
int u4name_make(char *out, int size, const char *drive, const char *path, const char *file);

// The date stamp of a data file's header: years since 1900 (low byte), month, day.
void u4yymmdd(unsigned char *out);

// The engine's clock and its waits. Every wait of the engine (u4delay_sec, u4wait, the
// rounds of a lock attempt, the names of temporary files) reads the clock through
// u4clock() and pauses through the pause function between two readings. Both can be
// replaced, so that a test can run a wait of any length at once: the default clock is the
// system's time in seconds, the default pause sleeps up to the next second. Each setter
// returns the previous function; null restores the default.
typedef int64_t (*u4clock_fn)();
typedef void (*u4pause_fn)();
u4clock_fn u4set_clock(u4clock_fn clock);
u4pause_fn u4set_pause(u4pause_fn pause);
int64_t u4clock();
void u4delay_sec();  // until the second of the clock changes
