// Engine errors: the table of error numbers and their texts, the latched error_code, the
// normal report (a box the user dismisses, then the program goes on) and the severe report
// (a box, then the process ends).
//
// Boxes go through the platform's message-box handler (nq_Platform_setMessageBoxHandler),
// the end of the process through its fatal-exit handler.
#pragma once

#include <cstdint>

struct engine4;

struct error4data {
    int32_t error_number;
    const char *error_data;
};

// The 64 rows in their fixed order, ended by a row whose number is 0.
extern const error4data err4table[];
constexpr int err4table_rows = 64;

// Box titles and style bits.
constexpr const char *err4title = "TABELLIX ERROR";
constexpr const char *err4title_severe = "TABELLIX SEVERE ERROR";
constexpr unsigned int err4style_stop = 16;            // stop icon, one OK button
constexpr unsigned int err4style_system_modal = 4096;  // added for -920

int err4code(const engine4 *engine);
int err4set(engine4 *engine, int code);  // returns the previous code
const char *err4text(int code);          // null when the number is not in the table
int err4report(engine4 *engine, int code, const char *s1);
int err4describe(engine4 *engine, int code, const char *s1, const char *s2, const char *s3);
[[noreturn]] void err4severe(int code, const char *s1);
[[noreturn]] void err4exit(engine4 *engine);
void err4exit_test(engine4 *engine);
