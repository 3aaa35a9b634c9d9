// Engine errors: the table of numbers and texts, the latch, the normal and the severe report.
#include <cstring>

#include "date4.h"
#include "engine4.h"
#include "error4.h"
#include "plat_ui.h"

// Not in numeric order: the look-up is a scan from the first row and the first equal number
// wins.
const error4data err4table[] = {
    {-20, "Creating File"},
    {-60, "Opening File"},
    {-70, "Reading File"},
    {-100, "Seeking to File Position"},
    {-120, "Writing to File"},
    {-10, "Closing File"},
    {-80, "Removing File"},
    {-50, "Locking File"},
    {-110, "Unlocking File"},
    {-30, "Determining File Length"},
    {-40, "Setting File Length"},
    {-90, "Renaming File"},
    {-200, "File is not a Data File"},
    {-230, "Record Length is too Large"},
    {-210, "Unrecognized Field Name"},
    {-220, "Unrecognized Field Type"},
    {-310, "Not a Correct Index File"},
    {-300, "Tag Entry Missing"},
    {-340, "Unique Key Error"},
    {-330, "Tag Name not Found"},
    {-400, "Comma or Bracket Expected"},
    {-410, "Expression not Complete"},
    {-420, "Data File Name not Located"},
    {-422, "IIF() Needs Parameters of Same Length"},
    {-425, "SUBSTR() and STR() need Constant Parameters"},
    {-430, "Number of Parameters is Wrong"},
    {-440, "Overflow while Evaluating Expression"},
    {-450, "Right Bracket Missing"},
    {-460, "Sub-expression Type is Wrong"},
    {-470, "Unrecognized Function"},
    {-480, "Unrecognized Operator"},
    {-490, "Unrecognized Value"},
    {-500, "Unterminated String"},
    {-610, "Optimization Error"},
    {-620, "Optimization Removal Failure"},
    {-630, "Optimization File Flushing Failure"},
    {-720, "Relation Error"},
    {-710, "Matching Slave Record Not Located"},
    {-810, "Report Error"},
    {-811, "Error Creating Style"},
    {-812, "Error Selecting Style"},
    {-813, "Error Finding Style"},
    {-814, "Error Creating Area"},
    {-815, "Error Creating Group"},
    {-816, "Error Setting Group Reset-Expression"},
    {-817, "Error Creating Total"},
    {-818, "Error Creating Object"},
    {-819, "Error In Windows Output"},
    {-820, "Error In Report Output"},
    {-821, "Error Saving Report"},
    {-822, "Error Retrieving Report"},
    {-823, "Error In Sending Report to Data File"},
    {-920, "Out of Memory"},
    {-910, "Unexpected Information"},
    {-930, "Unexpected Parameter"},
    {-940, "Exceeded Maximum Record Number for Demonstration"},
    {-950, "Unexpected Result"},
    {-1020, "Function unsupported: library compiled with S4OFF_MEMO"},
    {-1040, "Function unsupported: library compiled with S4OFF_WRITE"},
    {-1010, "Function unsupported: library compiled with S4OFF_INDEX"},
    {-1030, "Function unsupported: library compiled with S4NO_RENAME"},
    {-1050, "Function unsupported: library not compiled with S4CLIPPER"},
    {-1060, "Function unsupported: library not compiled with S4LOCK_HOOK"},
    {-1070, "Function unsupported: library not compiled with S4ERROR_HOOK"},
    {0, nullptr},
};

namespace {

constexpr size_t kTextSize = 268;
constexpr size_t kLimit = 257;

// Appends text to buffer (holding length bytes), keeping reserve bytes free at the end.
void append(char *buffer, size_t &length, const char *text, size_t reserve = 1) {
    while (*text && length + reserve < kTextSize) buffer[length++] = *text++;
}

// A string and its line feed; a string too long for the buffer is cut, its line feed kept.
void append_line(char *buffer, size_t &length, const char *text) {
    append(buffer, length, text, 2);
    append(buffer, length, "\n");
}

// The character sets of the box and of the engine's text are the same here.
void oem_to_display(char *) {}

}  // namespace

int err4code(const engine4 *engine) { return engine ? engine->error_code : -1; }

int err4set(engine4 *engine, int code) {
    if (!engine) return -1;
    const int previous = engine->error_code;
    engine->error_code = code;
    return previous;
}

const char *err4text(int code) {
    for (const error4data *row = err4table; row->error_number != 0; ++row) {
        if (row->error_number == code) return row->error_data;
    }
    return nullptr;
}

int err4report(engine4 *engine, int code, const char *s1) {
    return err4describe(engine, code, s1, nullptr, nullptr);
}

int err4describe(engine4 *engine, int code, const char *s1, const char *s2, const char *s3) {
    if (engine) {
        engine->error_code = code;
        if (engine->off_error) return code;
    }
    char text[kTextSize];
    size_t length = 0;
    append(text, length, "Error");
    append(text, length, " #: ");
    c4ltoa(code, text + length, 4);
    length += 4;
    text[length++] = '\n';
    if (const char *row = err4text(code)) append_line(text, length, row);

    // The room test measures s1 for every string, also when s2 or s3 is next: kept so.
    const char *strings[3] = {s1, s2, s3};
    const size_t s1_length = s1 ? std::strlen(s1) : 0;
    for (int i = 0; i < 3 && strings[i]; ++i) {
        if (length + s1_length + 3 >= kLimit) break;
        append_line(text, length, strings[i]);
    }
    text[length] = '\0';
    oem_to_display(text);

    unsigned int style = err4style_stop;
    if (code == -920) style |= err4style_system_modal;
    if (nqplat::message_box(err4title, text, style) == 0) nqplat::fatal_exit("Memory Error");
    return code;
}

void err4severe(int code, const char *s1) {
    char text[kTextSize];
    size_t length = 0;
    append(text, length, "\r\n\r\nSevere Error Number");
    append(text, length, " #: ");
    c4ltoa(code, text + length, 4);
    length += 4;
    text[length++] = '\n';
    if (const char *row = err4text(code)) append_line(text, length, row);
    if (s1 && length + std::strlen(s1) + 4 < kLimit) append_line(text, length, s1);
    text[length] = '\0';
    oem_to_display(text);
    nqplat::message_box(err4title_severe, text, err4style_stop);
    nqplat::fatal_exit(text);
}

void err4exit(engine4 *) { nqplat::fatal_exit("EXITING APPLICATION"); }

void err4exit_test(engine4 *engine) {
    if (engine && engine->error_code < 0) err4exit(engine);
}
