// The Fname family: file names as text. The backslash separates, the colon marks a drive;
// the forward slash means nothing here.
#include <cstring>

#include "nq_fname.h"
#include "text/nq_text.h"

extern "C" {

NQ_API nq_wchar *nq_Fname_rmvPath(nq_wchar *name) {
    if (!name) return name;
    const size_t length = nqt::len(name);
    size_t start = 0;
    for (size_t i = 0; i < length; ++i) {
        if (name[i] == u'\\' || name[i] == u':') start = i + 1;
    }
    if (start > 0) std::memmove(name, name + start, (length - start + 1) * sizeof(nq_wchar));
    return name;
}

}  // extern "C"
