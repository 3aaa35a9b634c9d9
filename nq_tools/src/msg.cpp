// The Msg family, first half: translation, decoration and escapes.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>

#include "diag_trace.h"
#include "msg_internal.h"
#include "nq_env.h"
#include "nq_msg.h"
#include "nq_platform.h"
#include "nq_str.h"
#include "plat_ui.h"
#include "text/nq_text.h"

namespace {

constexpr uint32_t kTraceBit = 1024;
using nq::msg::kTranslateSize;
using nq::msg::kWorkSize;

#define MSG_FRAME(name) NQ_TRACE_FRAME(kTraceBit, nullptr, u"Leaving " name u".")

// The language is settled by the first translation of the process and never again.
bool g_decided = false;
bool g_deciding = false;
bool g_disabled = false;
bool g_debug = false;  // "LANGUAGE_DEBUG" was on: the translator is used even in English

nq_wchar g_translated[kTranslateSize];

const char kBoxTitle[] = "Message Translator Error";
const char kBoxText[] =
    "Unable to create an instance of the Message Translator.\n"
    "Make sure this component (WKApplication2.dll) is installed and registered correctly.";

const nq_wchar *decoration(int format) {
    switch (format) {
        case 2: return u"%s ";
        case 3: return u"\n%s";
        case 4: return u"\n%s ";
        case 5: return u"%s\n";
        case 6: return u"%s \n";
        case 7: return u"\n%s\n";
        case 8: return u"\n%s \n";
        default: return u"%s";
    }
}

// The English text, escapes resolved and decorated, in the translation's buffer.
nq_wchar *english(const nq_wchar *text, int format) {
    nqt::copy_bounded(g_translated, kTranslateSize, nq_Msg_format(text, format));
    return g_translated;
}

void decide_language() {
    // Reading the configuration may allocate, and a failed allocation asks for its own words:
    // such a text is answered in English while this runs.
    g_deciding = true;
    const nq_wchar *debug = nq_Env_getIni(u"GENERAL", u"LANGUAGE_DEBUG");
    g_debug = debug && nqt::cmp(debug, u"0") != 0;
    const nq_wchar *language = nq_Env_getIni(u"GENERAL", u"LANGUAGE");
    const bool english_language = !language || nqt::nicmp(language, u"ENG", 3) == 0;
    if (english_language && !g_debug) {
        g_disabled = true;
    } else if (!nq::msg::translator()) {
        g_disabled = true;
        nqplat::message_box(kBoxTitle, kBoxText, NQ_MB_ICONEXCLAMATION);
    }
    g_decided = true;
    g_deciding = false;
}

bool is_digit(nq_wchar c) { return c >= u'0' && c <= u'9'; }

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Msg_translate(const nq_wchar *text, const nq_wchar *context, int format) {
    MSG_FRAME("nq_Msg_translate");
    if (!text) text = u"";
    if (!context) context = u"";
    if (g_deciding) return english(text, format);
    if (!g_decided) decide_language();
    if (g_disabled) return english(text, format);
    const nq::msg::Translator *translator = nq::msg::translator();
    if (!translator) return english(text, format);

    // The translator is given the flags that made the code: 0 stays 0, others lose 1.
    const auto index = static_cast<int16_t>(format == 0 ? 0 : static_cast<unsigned>(format) - 1u);
    nq_wchar *translated = translator->translate(text, context, index);
    if (!translated) return english(text, format);
    const bool empty = translated[0] == 0;
    // The translator has decorated its text already; it is shown as it came.
    if (!empty) nqt::copy_bounded(g_translated, kTranslateSize, translated);
    translator->release(translated);
    return empty ? english(text, format) : g_translated;
}

NQ_API nq_wchar *nq_Msg(const char *text, const char *context, int format) {
    MSG_FRAME("nq_Msg");
    const std::u16string wide_text = nqt::from_utf8(text ? text : "");
    const std::u16string wide_context = nqt::from_utf8(context ? context : "");
    return nq_Msg_translate(wide_text.c_str(), wide_context.c_str(), format);
}

NQ_API nq_wchar *nq_MsgDBCols(const nq_wchar *text, int format) {
    MSG_FRAME("nq_MsgDBCols");
    return nq_Msg_translate(text, u"DBCols", format);
}

NQ_API nq_wchar *nq_Msg_pad(const nq_wchar *text, const nq_wchar *context, int format, int width) {
    MSG_FRAME("nq_Msg_pad");
    static nq_wchar padded[kWorkSize];
    nqt::copy_bounded(padded, kWorkSize, nq_Msg_translate(text, context, format));
    if (width > 0) nq_Str_pad(padded, std::min(width, static_cast<int>(kWorkSize) - 1));
    return padded;
}

NQ_API nq_wchar *nq_Msg_format(const nq_wchar *text, int format) {
    MSG_FRAME("nq_Msg_format");
    static nq_wchar decorated[kWorkSize];
    nq_wchar work[kWorkSize];
    nqt::copy_bounded(work, kWorkSize, text ? text : u"");
    nq_Msg_scanEsc(work);
    nqt::format(decorated, kWorkSize, decoration(format), work);
    return decorated;
}

NQ_API int nq_Msg_setFormat(int flags) {
    MSG_FRAME("nq_Msg_setFormat");
    return flags >= 1 && flags <= 7 ? flags + 1 : 1;
}

NQ_API nq_wchar *nq_Msg_scanEsc(nq_wchar *text) {
    MSG_FRAME("nq_Msg_scanEsc");
    if (!text) return nullptr;
    nq_wchar work[kWorkSize];
    const std::size_t last = kWorkSize - 1;
    std::size_t out = 0;
    // Carried from one numeric escape to the next within the text.
    uint32_t number = 0;
    std::size_t in = 0;
    while (text[in] != 0 && out < last) {
        const nq_wchar c = text[in++];
        if (c != u'\\') {
            work[out++] = c;
            continue;
        }
        const nq_wchar escaped = text[in];
        if (escaped == 0) break;  // a backslash that ends the text goes with nothing
        ++in;
        switch (escaped) {
            case u'"':
            case u'\'':
            case u'\\': work[out++] = escaped; break;
            case u'a': work[out++] = 7; break;
            // Stored but not counted: the next character, or the end, overwrites it.
            case u'b': work[out] = 8; break;
            case u'f': work[out++] = 12; break;
            case u'n': work[out++] = 10; break;
            case u'r': work[out++] = 13; break;
            case u't': work[out++] = 9; break;
            default:
                if (is_digit(escaped)) {
                    // Rotated, not shifted, and 8 and 9 are taken: only the first such escape
                    // of a text reads as octal.
                    number = std::rotl(number, 3) + static_cast<uint32_t>(escaped - u'0');
                    for (int digits = 1; digits < 3 && is_digit(text[in]); ++digits, ++in) {
                        number = std::rotl(number, 3) + static_cast<uint32_t>(text[in] - u'0');
                    }
                    work[out++] = static_cast<nq_wchar>(number & 0xFFFFu);
                }
                // Any other character is dropped with its backslash.
                break;
        }
    }
    work[out] = 0;
    // The result is never longer than what it was made from, so it fits where the text was.
    nqt::copy(text, work);
    return text;
}

NQ_API int nq_Msg_breakStr(const nq_wchar *text, nq_wchar *first, nq_wchar *second) {
    MSG_FRAME("nq_Msg_breakStr");
    if (!text || !first || !second) return 0;
    first[0] = 0;
    second[0] = 0;
    std::u16string copy = text;
    nq_wchar *state = nullptr;
    nq_wchar *token = nqt::tok_r(copy.data(), u" _", &state);
    if (!token) return 0;
    nqt::copy(first, nq_Str_delBlks(token));
    if (first[0] == 0) return 0;
    token = nqt::tok_r(nullptr, u" _", &state);
    if (token) nqt::copy(second, nq_Str_delBlks(token));
    return second[0] != 0 ? 1 : 0;
}

}  // extern "C"
