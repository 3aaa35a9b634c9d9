// N-tuples: counted arrays of doubles, traced under the Ntuple bit with "Leaving" exits.
// Operations on two or three tuples need equal counts and stop at the first failed element.
#include <cstring>

#include "diag_trace.h"
#include "nq_matrix.h"
#include "nq_memory.h"
#include "text/nq_text.h"

namespace {

bool same_count(const Ntuple *a, const Ntuple *b) { return a && b && a->count == b->count; }

}  // namespace

extern "C" {

NQ_API Ntuple *nq_Ntuple_create(int count) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_create.", u"Leaving nq_Ntuple_create.");
    if (count < 0) return nullptr;
    Ntuple *tuple = static_cast<Ntuple *>(nq_Malloc(sizeof(Ntuple)));
    if (!tuple) return nullptr;
    tuple->count = count;
    tuple->values = nullptr;
    if (count > 0) {
        tuple->values = static_cast<double *>(nq_Malloc(sizeof(double) * static_cast<size_t>(count)));
        if (!tuple->values) {
            nq_Free(tuple);
            return nullptr;
        }
        for (int i = 0; i < count; ++i) tuple->values[i] = 0.0;
    }
    return tuple;
}

NQ_API int nq_Ntuple_destroy(Ntuple *tuple) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_destroy.", u"Leaving nq_Ntuple_destroy.");
    if (!tuple) return 0;
    nq_Free(tuple->values);
    nq_Free(tuple);
    return 1;
}

NQ_API int nq_Ntuple_getElement(double *out, const Ntuple *tuple, int index) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_getElement.", u"Leaving nq_Ntuple_getElement.");
    if (!out || !tuple || !tuple->values || index < 0 || index >= tuple->count) return 0;
    *out = tuple->values[index];
    return 1;
}

NQ_API int nq_Ntuple_setElement(Ntuple *tuple, int index, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_setElement.", u"Leaving nq_Ntuple_setElement.");
    if (!tuple || !tuple->values || index < 0 || index >= tuple->count) return 0;
    tuple->values[index] = value;
    return 1;
}

NQ_API int nq_Ntuple_copy(Ntuple *dst, const Ntuple *src) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_copy.", u"Leaving nq_Ntuple_copy.");
    if (!dst || !same_count(dst, src)) return 0;
    for (int i = 0; i < src->count; ++i) {
        double value;
        if (!nq_Ntuple_getElement(&value, src, i) || !nq_Ntuple_setElement(dst, i, value)) return 0;
    }
    return 1;
}

NQ_API int nq_Ntuple_add(Ntuple *dst, const Ntuple *a, const Ntuple *b) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_add.", u"Leaving nq_Ntuple_add.");
    if (!same_count(dst, a) || !same_count(a, b)) return 0;
    for (int i = 0; i < a->count; ++i) {
        double x, y;
        if (!nq_Ntuple_getElement(&x, a, i) || !nq_Ntuple_getElement(&y, b, i) ||
            !nq_Ntuple_setElement(dst, i, x + y))
            return 0;
    }
    return 1;
}

NQ_API int nq_Ntuple_subtract(Ntuple *dst, const Ntuple *a, const Ntuple *b) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_subtract.", u"Leaving nq_Ntuple_subtract.");
    if (!same_count(dst, a) || !same_count(a, b)) return 0;
    for (int i = 0; i < a->count; ++i) {
        double x, y;
        if (!nq_Ntuple_getElement(&x, a, i) || !nq_Ntuple_getElement(&y, b, i) ||
            !nq_Ntuple_setElement(dst, i, x - y))
            return 0;
    }
    return 1;
}

NQ_API int nq_Ntuple_scale(Ntuple *dst, const Ntuple *src, double factor) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_scale.", u"Leaving nq_Ntuple_scale.");
    if (!same_count(dst, src)) return 0;
    for (int i = 0; i < src->count; ++i) {
        double x;
        if (!nq_Ntuple_getElement(&x, src, i) || !nq_Ntuple_setElement(dst, i, x * factor)) return 0;
    }
    return 1;
}

NQ_API int nq_Ntuple_dotProduct(double *out, const Ntuple *a, const Ntuple *b) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_dotProduct.", u"Leaving nq_Ntuple_dotProduct.");
    if (!out || !same_count(a, b)) return 0;
    double sum = 0.0;
    for (int i = 0; i < a->count; ++i) {
        double x, y;
        if (!nq_Ntuple_getElement(&x, a, i) || !nq_Ntuple_getElement(&y, b, i)) return 0;
        sum += x * y;
    }
    *out = sum;
    return 1;
}

NQ_API Ntuple *nq_Ntuple_fromVector(const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_fromVector.", u"Leaving nq_Ntuple_fromVector.");
    if (!v) return nullptr;
    Ntuple *tuple = nq_Ntuple_create(3);
    if (!tuple) return nullptr;
    tuple->values[0] = v->x;
    tuple->values[1] = v->y;
    tuple->values[2] = v->z;
    return tuple;
}

NQ_API int nq_Ntuple_print(const Ntuple *tuple, FILE *stream) {
    NQ_TRACE_FRAME(NQ_DIAG_NTUPLE, u"Entering nq_Ntuple_print.", u"Leaving nq_Ntuple_print.");
    if (!tuple) return 0;
    for (int i = 0; i < tuple->count; ++i) {
        double value;
        if (!nq_Ntuple_getElement(&value, tuple, i)) return 0;
        // A separator after every value but the last.
        const nq_wchar *format = i + 1 < tuple->count ? u"%-lf, " : u"%-lf";
        if (stream)
            nqt::fprint(stream, format, value);
        else
            nqt::print(format, value);
    }
    return 1;
}

}  // extern "C"
