#include "frame_msg.h"

#include "text/nq_text.h"

namespace nq {

const nq_wchar *frame_msg(const char *text, const char *group, int format) {
    (void)group;
    static nq_wchar buffer[512];
    const std::u16string english = nqt::from_bytes(text ? text : "");
    const char16_t *pattern = u"%s";
    switch (format) {
        case 2: pattern = u"%s "; break;
        case 3: pattern = u"\n%s"; break;
        case 4: pattern = u"\n%s "; break;
        case 5: pattern = u"%s\n"; break;
        case 6: pattern = u"%s \n"; break;
        case 7: pattern = u"\n%s\n"; break;
        case 8: pattern = u"\n%s \n"; break;
        default: break;
    }
    nqt::format(buffer, sizeof buffer / sizeof buffer[0], pattern, english.c_str());
    return buffer;
}

}  // namespace nq
