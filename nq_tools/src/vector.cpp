// Vectors: three doubles, every function traced under the Vector bit with "Leaving" exits.
// Each operation computes into locals before writing, so the output may be an input.
#include <cmath>

#include "diag_trace.h"
#include "nq_matrix.h"
#include "nq_point.h"
#include "nq_vector.h"

namespace {

constexpr double kTolerance = NQ_GEOMETRY_TOLERANCE;
constexpr double kPi = 3.141592653589793;

double dot(const Vector &a, const Vector &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

double length(const Vector &v) { return std::sqrt(dot(v, v)); }

Vector cross(const Vector &a, const Vector &b) {
    Vector r;
    r.x = a.y * b.z - a.z * b.y;
    // Written negated on purpose; it still gives the right-handed product.
    r.y = (a.x * b.z - a.z * b.x) * -1.0;
    r.z = a.x * b.y - a.y * b.x;
    return r;
}

const Vector kUnitZ = {0.0, 0.0, 1.0};

}  // namespace

extern "C" {

NQ_API int nq_Vector_set(Vector *out, double x, double y, double z) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_set.", u"Leaving nq_Vector_set.");
    if (!out) return 0;
    out->x = x;
    out->y = y;
    out->z = z;
    return 1;
}

NQ_API int nq_Vector_setX(Vector *v, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_setX.", u"Leaving nq_Vector_setX.");
    if (!v) return 0;
    v->x = value;
    return 1;
}

NQ_API int nq_Vector_setY(Vector *v, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_setY.", u"Leaving nq_Vector_setY.");
    if (!v) return 0;
    v->y = value;
    return 1;
}

NQ_API int nq_Vector_setZ(Vector *v, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_setZ.", u"Leaving nq_Vector_setZ.");
    if (!v) return 0;
    v->z = value;
    return 1;
}

NQ_API int nq_Vector_getX(double *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_getX.", u"Leaving nq_Vector_getX.");
    if (!out || !v) return 0;
    *out = v->x;
    return 1;
}

NQ_API int nq_Vector_getY(double *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_getY.", u"Leaving nq_Vector_getY.");
    if (!out || !v) return 0;
    *out = v->y;
    return 1;
}

NQ_API int nq_Vector_getZ(double *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_getZ.", u"Leaving nq_Vector_getZ.");
    if (!out || !v) return 0;
    *out = v->z;
    return 1;
}

NQ_API int nq_Vector_copy(Vector *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_copy.", u"Leaving nq_Vector_copy.");
    if (!out || !v) return 0;
    *out = *v;
    return 1;
}

NQ_API int nq_Vector_fromPoint(Vector *out, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_fromPoint.", u"Leaving nq_Vector_fromPoint.");
    if (!out || !p) return 0;
    out->x = p->x;
    out->y = p->y;
    out->z = p->z;
    return 1;
}

NQ_API int nq_Vector_fromNtuple(Vector *out, const Ntuple *n) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_fromNtuple.", u"Leaving nq_Vector_fromNtuple.");
    if (!out || !n) return 0;
    double x, y, z;
    if (!nq_Ntuple_getElement(&x, n, 0) || !nq_Ntuple_getElement(&y, n, 1) ||
        !nq_Ntuple_getElement(&z, n, 2))
        return 0;
    out->x = x;
    out->y = y;
    out->z = z;
    return 1;
}

NQ_API int nq_Vector_add(Vector *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_add.", u"Leaving nq_Vector_add.");
    if (!out || !a || !b) return 0;
    Vector r = {a->x + b->x, a->y + b->y, a->z + b->z};
    *out = r;
    return 1;
}

NQ_API int nq_Vector_subtract(Vector *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_subtract.", u"Leaving nq_Vector_subtract.");
    if (!out || !a || !b) return 0;
    // The second operand minus the first.
    Vector r = {b->x - a->x, b->y - a->y, b->z - a->z};
    *out = r;
    return 1;
}

NQ_API int nq_Vector_negate(Vector *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_negate.", u"Leaving nq_Vector_negate.");
    if (!out || !v) return 0;
    Vector r = {-v->x, -v->y, -v->z};
    *out = r;
    return 1;
}

NQ_API int nq_Vector_scale(Vector *out, const Vector *v, double factor) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_scale.", u"Leaving nq_Vector_scale.");
    if (!out || !v) return 0;
    Vector r = {v->x * factor, v->y * factor, v->z * factor};
    *out = r;
    return 1;
}

NQ_API int nq_Vector_dotProduct(double *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_dotProduct.", u"Leaving nq_Vector_dotProduct.");
    if (!out || !a || !b) return 0;
    *out = dot(*a, *b);
    return 1;
}

NQ_API int nq_Vector_crossProduct(Vector *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_crossProduct.",
                   u"Leaving nq_Vector_crossProduct.");
    if (!out || !a || !b) return 0;
    *out = cross(*a, *b);
    return 1;
}

NQ_API int nq_Vector_magnitude(double *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_magnitude.", u"Leaving nq_Vector_magnitude.");
    if (!out || !v) return 0;
    *out = length(*v);
    return 1;
}

NQ_API int nq_Vector_normalize(Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_normalize.", u"Leaving nq_Vector_normalize.");
    if (!v) return 0;
    double m = length(*v);
    if (!(std::fabs(m) > kTolerance)) return 0;
    v->x /= m;
    v->y /= m;
    v->z /= m;
    return 1;
}

NQ_API int nq_Vector_copyNormalize(Vector *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_copyNormalize.",
                   u"Leaving nq_Vector_copyNormalize.");
    if (!out || !v) return 0;
    if (!nq_Vector_copy(out, v)) return 0;
    return nq_Vector_normalize(out);
}

NQ_API int nq_Vector_angle(double *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_angle.", u"Leaving nq_Vector_angle.");
    if (!out || !a || !b) return 0;
    double ma = length(*a), mb = length(*b);
    if (!(ma > kTolerance) || !(mb > kTolerance)) return 0;
    double c = dot(*a, *b) / (ma * mb);
    // Rounding can carry the cosine just past 1 in either direction, where acos has no value.
    if (c > 1.0)
        *out = 0.0;
    else if (c < -1.0)
        *out = kPi;
    else
        *out = std::acos(c);
    return 1;
}

NQ_API int nq_Vector_computeVector(Vector *out, const Point *p1, const Point *p2) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_computeVector.",
                   u"Leaving nq_Vector_computeVector.");
    if (!out || !p1 || !p2) return 0;
    Point d;
    if (!nq_Point_subtract(&d, p1, p2)) return 0;
    out->x = d.x;
    out->y = d.y;
    out->z = d.z;
    // Two equal points leave the zero vector behind and fail.
    return length(*out) > 0.0 ? 1 : 0;
}

NQ_API int nq_Vector_computeNormal(Vector *out, const Point *p1, const Point *p2) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_computeNormal.",
                   u"Leaving nq_Vector_computeNormal.");
    if (!out || !p1 || !p2) return 0;
    if (!nq_Vector_computeVector(out, p1, p2)) return 0;
    return nq_Vector_normalize(out);
}

NQ_API int nq_Vector_computeOrthovec(Vector *out, const Point *p1, const Point *p2, const Point *p3) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_computeOrthovec.",
                   u"Leaving nq_Vector_computeOrthovec.");
    if (!out || !p1 || !p2 || !p3) return 0;
    Vector u, w;
    if (!nq_Vector_computeVector(&u, p1, p2) || !nq_Vector_computeVector(&w, p1, p3)) return 0;
    return nq_Vector_crossProduct(out, &u, &w);
}

NQ_API int nq_Vector_computeOrthonorm(Vector *out, const Point *p1, const Point *p2, const Point *p3) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_computeOrthonorm.",
                   u"Leaving nq_Vector_computeOrthonorm.");
    if (!out || !p1 || !p2 || !p3) return 0;
    Vector n;
    if (!nq_Vector_computeOrthovec(&n, p1, p2, p3) || !nq_Vector_normalize(&n)) return 0;
    *out = n;
    return 1;
}

NQ_API int nq_Vector_getOrthoVector(Vector *out, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_getOrthoVector.",
                   u"Leaving nq_Vector_getOrthoVector.");
    if (!out || !a || !b) return 0;
    const Point origin = {0.0, 0.0, 0.0};
    Point alongA, alongB;
    if (!nq_Point_translateByVector(&alongA, &origin, a, 1.0) ||
        !nq_Point_translateByVector(&alongB, &origin, b, 1.0))
        return 0;
    return nq_Point_getOrthoVector(out, &origin, &alongA, &alongB);
}

NQ_API int nq_Vector_equal(const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_equal.", u"Leaving nq_Vector_equal.");
    return nq_Vector_equalWithinTol(a, b, kTolerance);
}

NQ_API int nq_Vector_equalWithinTol(const Vector *a, const Vector *b, double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_equalWithinTol.",
                   u"Leaving nq_Vector_equalWithinTol.");
    if (!a || !b) return 0;
    return std::fabs(a->x - b->x) < tolerance && std::fabs(a->y - b->y) < tolerance &&
                   std::fabs(a->z - b->z) < tolerance
               ? 1
               : 0;
}

NQ_API int nq_Vector_orthogonal(const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_orthogonal.", u"Leaving nq_Vector_orthogonal.");
    return nq_Vector_orthogonalWithinTolerance(a, b, kTolerance);
}

NQ_API int nq_Vector_orthogonalWithinTolerance(const Vector *a, const Vector *b, double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_orthogonalWithinTolerance.",
                   u"Leaving nq_Vector_orthogonalWithinTolerance.");
    if (!a || !b) return 0;
    // The raw dot product: the tolerance is not scaled by the lengths.
    return std::fabs(dot(*a, *b)) < tolerance ? 1 : 0;
}

NQ_API int nq_Vector_parallel(const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_parallel.", u"Leaving nq_Vector_parallel.");
    return nq_Vector_parallelWithinTolerance(a, b, kTolerance);
}

NQ_API int nq_Vector_parallelWithinTolerance(const Vector *a, const Vector *b, double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_parallelWithinTolerance.",
                   u"Leaving nq_Vector_parallelWithinTolerance.");
    if (!a || !b) return 0;
    // The raw cross product, so antiparallel vectors and the zero vector count as parallel.
    return length(cross(*a, *b)) < tolerance ? 1 : 0;
}

NQ_API int nq_Vector_isHorizontal(const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_isHorizontal.",
                   u"Leaving nq_Vector_isHorizontal.");
    return nq_Vector_orthogonal(v, &kUnitZ);
}

NQ_API int nq_Vector_isVertical(const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_VECTOR, u"Entering nq_Vector_isVertical.", u"Leaving nq_Vector_isVertical.");
    return nq_Vector_parallel(v, &kUnitZ);
}

}  // extern "C"
