// Quaternions: x, y, z and the scalar w in the caller's memory. Traced under the Matrix bit,
// with "Exiting" exits: the "Leaving" word belongs to the rotation matrix functions.
#include <cmath>

#include "diag_trace.h"
#include "nq_rotmatrix.h"
#include "nq_vector.h"

namespace {

constexpr double kTolerance = NQ_GEOMETRY_TOLERANCE;
constexpr double kHalfTurn = 3.1415926536;  // the ten-decimal literal, as the matrices use it
// Cosines this close to 1 or -1 are taken as no turn and a half turn.
constexpr double kAlmostOne = 0.99999;

const Vector kUnitX = {1.0, 0.0, 0.0};
const Vector kUnitZ = {0.0, 0.0, 1.0};

}  // namespace

extern "C" {

NQ_API int nq_Quaternion_set(Quaternion *q, double x, double y, double z, double w) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_set.", u"Exiting nq_Quaternion_set.");
    if (!q) return 0;
    q->x = x;
    q->y = y;
    q->z = z;
    q->w = w;
    return 1;
}

NQ_API int nq_Quaternion_setX(Quaternion *q, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_setX.", u"Exiting nq_Quaternion_setX.");
    if (!q) return 0;
    q->x = value;
    return 1;
}

NQ_API int nq_Quaternion_setY(Quaternion *q, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_setY.", u"Exiting nq_Quaternion_setY.");
    if (!q) return 0;
    q->y = value;
    return 1;
}

NQ_API int nq_Quaternion_setZ(Quaternion *q, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_setZ.", u"Exiting nq_Quaternion_setZ.");
    if (!q) return 0;
    q->z = value;
    return 1;
}

NQ_API int nq_Quaternion_setScalar(Quaternion *q, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_setScalar.", u"Exiting nq_Quaternion_setScalar.");
    if (!q) return 0;
    q->w = value;
    return 1;
}

NQ_API int nq_Quaternion_setVector(Quaternion *q, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_setVector.", u"Exiting nq_Quaternion_setVector.");
    if (!q || !v) return 0;
    q->x = v->x;
    q->y = v->y;
    q->z = v->z;
    return 1;
}

NQ_API int nq_Quaternion_getX(double *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getX.", u"Exiting nq_Quaternion_getX.");
    if (!out || !q) return 0;
    *out = q->x;
    return 1;
}

NQ_API int nq_Quaternion_getY(double *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getY.", u"Exiting nq_Quaternion_getY.");
    if (!out || !q) return 0;
    *out = q->y;
    return 1;
}

NQ_API int nq_Quaternion_getZ(double *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getZ.", u"Exiting nq_Quaternion_getZ.");
    if (!out || !q) return 0;
    *out = q->z;
    return 1;
}

NQ_API int nq_Quaternion_getScalar(double *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getScalar.", u"Exiting nq_Quaternion_getScalar.");
    if (!out || !q) return 0;
    *out = q->w;
    return 1;
}

NQ_API int nq_Quaternion_getVector(Vector *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getVector.", u"Exiting nq_Quaternion_getVector.");
    if (!out || !q) return 0;
    out->x = q->x;
    out->y = q->y;
    out->z = q->z;
    return 1;
}

NQ_API int nq_Quaternion_getConjugate(Quaternion *dst, const Quaternion *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getConjugate.",
                   u"Exiting nq_Quaternion_getConjugate.");
    if (!dst || !src) return 0;
    Quaternion r = {-src->x, -src->y, -src->z, src->w};
    *dst = r;
    return 1;
}

NQ_API int nq_Quaternion_getInverse(Quaternion *dst, const Quaternion *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_getInverse.", u"Exiting nq_Quaternion_getInverse.");
    // No division by the squared length: right for unit quaternions only.
    return nq_Quaternion_getConjugate(dst, src);
}

NQ_API int nq_Quaternion_fromRotAxisAndAngle(Quaternion *q, const Vector *axis, double angle) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_fromRotAxisAndAngle.",
                   u"Exiting nq_Quaternion_fromRotAxisAndAngle.");
    if (!q || !axis) return 0;
    double half = angle / 2.0;
    double s = std::sin(half);
    Quaternion r = {axis->x * s, axis->y * s, axis->z * s, std::cos(half)};
    *q = r;
    return nq_Quaternion_normalize(q, q);
}

NQ_API int nq_Quaternion_fromVectors(Quaternion *q, const Vector *a, const Vector *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_fromVectors.", u"Exiting nq_Quaternion_fromVectors.");
    if (!q || !a || !b) return 0;
    Vector u, v, n;
    if (!nq_Vector_copyNormalize(&u, a) || !nq_Vector_copyNormalize(&v, b) || !nq_Vector_crossProduct(&n, &u, &v))
        return 0;
    double length;
    nq_Vector_magnitude(&length, &n);
    if (length < kTolerance) {
        // Same or opposite: any axis across a will do; Z unless a stands along Z.
        const Vector *helper = nq_Vector_parallel(a, &kUnitZ) ? &kUnitX : &kUnitZ;
        if (!nq_Vector_getOrthoVector(&n, a, helper)) return 0;
    }
    if (!nq_Vector_normalize(&n)) return 0;
    double d;
    nq_Vector_dotProduct(&d, &u, &v);
    double angle;
    if (d > kAlmostOne)
        angle = 0.0;
    else if (d < -kAlmostOne)
        angle = kHalfTurn;
    else
        angle = std::acos(d);
    return nq_Quaternion_fromRotAxisAndAngle(q, &n, angle);
}

NQ_API int nq_Quaternion_magnitude(double *out, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_magnitude.", u"Exiting nq_Quaternion_magnitude.");
    if (!out || !q) return 0;
    *out = std::sqrt(q->x * q->x + q->y * q->y + q->z * q->z + q->w * q->w);
    return 1;
}

NQ_API int nq_Quaternion_normalize(Quaternion *dst, const Quaternion *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_normalize.", u"Exiting nq_Quaternion_normalize.");
    if (!dst || !src) return 0;
    double m;
    nq_Quaternion_magnitude(&m, src);
    if (!(std::fabs(m) > kTolerance)) return 0;
    Quaternion r = {src->x / m, src->y / m, src->z / m, src->w / m};
    *dst = r;
    return 1;
}

NQ_API int nq_Quaternion_multiply(Quaternion *dst, const Quaternion *a, const Quaternion *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Quaternion_multiply.", u"Exiting nq_Quaternion_multiply.");
    if (!dst || !a || !b) return 0;
    const double s = a->w, t = b->w;
    const Vector p = {a->x, a->y, a->z}, r = {b->x, b->y, b->z};
    // Scalar s t - p . r; vector s r + t p + p x r. Written only at the end: dst may be a or b.
    double pr;
    Vector sr, tp, pxr, sum;
    if (!nq_Vector_dotProduct(&pr, &p, &r) || !nq_Vector_scale(&sr, &r, s) || !nq_Vector_scale(&tp, &p, t) ||
        !nq_Vector_crossProduct(&pxr, &p, &r) || !nq_Vector_add(&sum, &sr, &tp) || !nq_Vector_add(&sum, &sum, &pxr))
        return 0;
    Quaternion result = {sum.x, sum.y, sum.z, s * t - pr};
    *dst = result;
    return 1;
}

}  // extern "C"
