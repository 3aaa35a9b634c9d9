// The Str family: wide string operations on caller buffers.
#include <cstring>

#include "nq_memory.h"
#include "nq_str.h"
#include "text/nq_text.h"

extern "C" {

NQ_API nq_wchar *nq_Str_dup(const nq_wchar *string) {
    if (!string) return nullptr;
    const size_t length = nqt::len(string);
    auto *copy = static_cast<nq_wchar *>(nq_Malloc((length + 1) * sizeof(nq_wchar)));
    if (copy) std::memcpy(copy, string, (length + 1) * sizeof(nq_wchar));
    return copy;
}

NQ_API nq_wchar *nq_Str_dupW(const nq_wchar *string) __attribute__((alias("nq_Str_dup")));

}  // extern "C"
