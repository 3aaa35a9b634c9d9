// The Ini family: configuration files of groups and "name=value" lines.
#include "nq_ini.h"
#include "nq_str.h"
#include "text/nq_text.h"

extern "C" {

// Spaces and then "=" signs are passed over between name and value, so a value can never
// begin with "=": "  name = = value" is the name "name" and the value "value".
NQ_API void nq_Ini_parse(const nq_wchar *line, nq_wchar *name, nq_wchar *value) {
    if (name) name[0] = 0;
    if (value) value[0] = 0;
    if (!line) return;
    const nq_wchar *p = line;
    while (*p == u' ') ++p;
    const nq_wchar *nameStart = p;
    while (*p && *p != u'=') ++p;
    if (name) {
        std::size_t n = 0;
        for (const nq_wchar *q = nameStart; q < p; ++q) name[n++] = *q;
        name[n] = 0;
        nq_Str_delBlks(name);
    }
    if (!*p) return;  // no "=": a name with an empty value
    while (*p == u' ' || *p == u'=') ++p;
    if (value) {
        nqt::copy(value, p);
        nq_Str_delBlks(value);
    }
}

}  // extern "C"
