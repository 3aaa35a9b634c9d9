// Rotation matrices (3 by 3 matrices) and quaternions, both traced under the Matrix bit: the
// matrices with "Leaving" exits, the quaternions with "Exiting", the word of the families
// that have no exit word of their own.
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>

#include "diag_trace.h"
#include "nq_matrix.h"
#include "nq_point.h"
#include "nq_rotmatrix.h"
#include "nq_vector.h"

namespace {

constexpr double kTolerance = NQ_GEOMETRY_TOLERANCE;

// The half turn is this ten-decimal literal, not pi, and is used as it stands.
constexpr double kHalfTurn = 3.1415926536;
static_assert(std::bit_cast<uint64_t>(kHalfTurn) == 0x400921fb544486e0ull);
// Cosines this close to 1 or -1 are taken as no turn and a half turn.
constexpr double kAlmostOne = 0.99999;

const Vector kUnitX = {1.0, 0.0, 0.0};
const Vector kUnitZ = {0.0, 0.0, 1.0};

struct MatrixRelease {
    void operator()(Matrix *m) const { nq_Matrix_destroy(m); }
};
using MatrixPtr = std::unique_ptr<Matrix, MatrixRelease>;

struct TupleRelease {
    void operator()(Ntuple *t) const { nq_Ntuple_destroy(t); }
};
using TuplePtr = std::unique_ptr<Ntuple, TupleRelease>;

bool in_range(int number) { return number >= 0 && number < 3; }

// A 3 by 1 matrix of the three values, turned by the matrix on the left and read back.
bool rotate_values(double &x, double &y, double &z, const RotMatrix *matrix) {
    MatrixPtr column(nq_Matrix_create(3, 1));
    if (!column) return false;
    if (!nq_Matrix_setElement(column.get(), 0, 0, x) || !nq_Matrix_setElement(column.get(), 1, 0, y) ||
        !nq_Matrix_setElement(column.get(), 2, 0, z))
        return false;
    if (!nq_Matrix_multiply(column.get(), matrix, column.get())) return false;
    double rx, ry, rz;
    if (!nq_Matrix_getElement(&rx, column.get(), 0, 0) || !nq_Matrix_getElement(&ry, column.get(), 1, 0) ||
        !nq_Matrix_getElement(&rz, column.get(), 2, 0))
        return false;
    x = rx;
    y = ry;
    z = rz;
    return true;
}

}  // namespace

extern "C" {

NQ_API RotMatrix *nq_RotMatrix_create(void) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_create.", u"Leaving nq_RotMatrix_create.");
    return nq_Matrix_create(3, 3);
}

NQ_API int nq_RotMatrix_destroy(RotMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_destroy.", u"Leaving nq_RotMatrix_destroy.");
    return nq_Matrix_destroy(matrix);
}

NQ_API int nq_RotMatrix_copy(RotMatrix *dst, const RotMatrix *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_copy.", u"Leaving nq_RotMatrix_copy.");
    return nq_Matrix_copy(dst, src);
}

NQ_API int nq_RotMatrix_multiply(RotMatrix *dst, const RotMatrix *a, const RotMatrix *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_multiply.", u"Leaving nq_RotMatrix_multiply.");
    return nq_Matrix_multiply(dst, a, b);
}

NQ_API int nq_RotMatrix_getInverse(RotMatrix *dst, const RotMatrix *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_getInverse.", u"Leaving nq_RotMatrix_getInverse.");
    // A rotation's inverse is its transpose.
    return nq_Matrix_transpose(dst, src);
}

NQ_API int nq_RotMatrix_getElement(double *out, const RotMatrix *matrix, int row, int column) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_getElement.", u"Leaving nq_RotMatrix_getElement.");
    if (!in_range(row) || !in_range(column)) return 0;
    return nq_Matrix_getElement(out, matrix, row, column);
}

NQ_API int nq_RotMatrix_setElement(RotMatrix *matrix, int row, int column, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setElement.", u"Leaving nq_RotMatrix_setElement.");
    if (!in_range(row) || !in_range(column)) return 0;
    return nq_Matrix_setElement(matrix, row, column, value);
}

NQ_API int nq_RotMatrix_getColumn(Vector *out, const RotMatrix *matrix, int number) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_getColumn.", u"Leaving nq_RotMatrix_getColumn.");
    if (!out || !matrix || !in_range(number)) return 0;
    TuplePtr tuple(nq_Ntuple_create(3));
    if (!tuple || !nq_Matrix_getColumn(tuple.get(), matrix, number)) return 0;
    return nq_Vector_fromNtuple(out, tuple.get());
}

NQ_API int nq_RotMatrix_getRow(Vector *out, const RotMatrix *matrix, int number) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_getRow.", u"Leaving nq_RotMatrix_getRow.");
    if (!out || !matrix || !in_range(number)) return 0;
    TuplePtr tuple(nq_Ntuple_create(3));
    if (!tuple || !nq_Matrix_getRow(tuple.get(), matrix, number)) return 0;
    return nq_Vector_fromNtuple(out, tuple.get());
}

NQ_API int nq_RotMatrix_set(RotMatrix *matrix, double r0c0, double r0c1, double r0c2, double r1c0,
                            double r1c1, double r1c2, double r2c0, double r2c1, double r2c2) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_set.", u"Leaving nq_RotMatrix_set.");
    if (!matrix) return 0;
    const double values[3][3] = {{r0c0, r0c1, r0c2}, {r1c0, r1c1, r1c2}, {r2c0, r2c1, r2c2}};
    // The elements' own results are not looked at: any matrix gives 1.
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) nq_Matrix_setElement(matrix, r, c, values[r][c]);
    return 1;
}

NQ_API int nq_RotMatrix_setIdentity(RotMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setIdentity.", u"Leaving nq_RotMatrix_setIdentity.");
    nq_RotMatrix_set(matrix, 1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0);
    // 0 even when the identity was set.
    return 0;
}

NQ_API int nq_RotMatrix_isIdentity(const RotMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_isIdentity.", u"Leaving nq_RotMatrix_isIdentity.");
    if (!matrix) return 0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double value;
            if (!nq_Matrix_getElement(&value, matrix, r, c)) return 0;
            // One-sided on purpose: no absolute value, so an element far below its
            // expected value passes.
            if (!(value - (r == c ? 1.0 : 0.0) < kTolerance)) return 0;
        }
    }
    return 1;
}

NQ_API int nq_RotMatrix_equal(const RotMatrix *a, const RotMatrix *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_equal.", u"Leaving nq_RotMatrix_equal.");
    if (!a || !b) return 0;
    for (int i = 0; i < 3; ++i) {
        Vector va, vb;
        if (!nq_RotMatrix_getColumn(&va, a, i) || !nq_RotMatrix_getColumn(&vb, b, i) ||
            !nq_Vector_equal(&va, &vb))
            return 0;
    }
    return 1;
}

NQ_API int nq_RotMatrix_normalize(RotMatrix *dst, const RotMatrix *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_normalize.", u"Leaving nq_RotMatrix_normalize.");
    if (!dst || !src) return 0;
    // Column by column; nothing makes the columns orthogonal.
    for (int i = 0; i < 3; ++i) {
        Vector column;
        if (!nq_RotMatrix_getColumn(&column, src, i) || !nq_Vector_normalize(&column) ||
            !nq_RotMatrix_setColumn(dst, i, &column))
            return 0;
    }
    return 1;
}

NQ_API int nq_RotMatrix_setColumn(RotMatrix *matrix, int number, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setColumn.", u"Leaving nq_RotMatrix_setColumn.");
    if (!matrix || !v || !in_range(number)) return 0;
    TuplePtr tuple(nq_Ntuple_fromVector(v));
    if (!tuple) return 0;
    return nq_Matrix_setColumn(matrix, number, tuple.get());
}

NQ_API int nq_RotMatrix_setRow(RotMatrix *matrix, int number, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setRow.", u"Leaving nq_RotMatrix_setRow.");
    if (!matrix || !v || !in_range(number)) return 0;
    TuplePtr tuple(nq_Ntuple_fromVector(v));
    if (!tuple) return 0;
    // Writes a column, as its callers have always had it: rows given to
    // nq_RotMatrix_fromRowVectors end up as columns.
    return nq_Matrix_setColumn(matrix, number, tuple.get());
}

NQ_API int nq_RotMatrix_setRowValues(RotMatrix *matrix, int number, double a, double b, double c) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setRowValues.",
                   u"Leaving nq_RotMatrix_setRowValues.");
    if (!matrix || !in_range(number)) return 0;
    return nq_Matrix_setElement(matrix, number, 0, a) && nq_Matrix_setElement(matrix, number, 1, b) &&
                   nq_Matrix_setElement(matrix, number, 2, c)
               ? 1
               : 0;
}

NQ_API int nq_RotMatrix_setColumnValues(RotMatrix *matrix, int number, double a, double b, double c) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_setColumnValues.",
                   u"Leaving nq_RotMatrix_setColumnValues.");
    if (!matrix || !in_range(number)) return 0;
    // Writes a row, the same as nq_RotMatrix_setRowValues; callers rely on it.
    return nq_Matrix_setElement(matrix, number, 0, a) && nq_Matrix_setElement(matrix, number, 1, b) &&
                   nq_Matrix_setElement(matrix, number, 2, c)
               ? 1
               : 0;
}

NQ_API int nq_RotMatrix_fromColumnVectors(RotMatrix *matrix, const Vector *c0, const Vector *c1,
                                          const Vector *c2) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromColumnVectors.",
                   u"Leaving nq_RotMatrix_fromColumnVectors.");
    nq_RotMatrix_setColumn(matrix, 0, c0);
    nq_RotMatrix_setColumn(matrix, 1, c1);
    nq_RotMatrix_setColumn(matrix, 2, c2);
    // 0 even when every column was set.
    return 0;
}

NQ_API int nq_RotMatrix_fromRowVectors(RotMatrix *matrix, const Vector *r0, const Vector *r1,
                                       const Vector *r2) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromRowVectors.",
                   u"Leaving nq_RotMatrix_fromRowVectors.");
    nq_RotMatrix_setRow(matrix, 0, r0);
    nq_RotMatrix_setRow(matrix, 1, r1);
    nq_RotMatrix_setRow(matrix, 2, r2);
    // 0 even when every row was set.
    return 0;
}

NQ_API int nq_RotMatrix_fromAngle(RotMatrix *matrix, double angle) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromAngle.", u"Leaving nq_RotMatrix_fromAngle.");
    double c = std::cos(angle), s = std::sin(angle);
    return nq_RotMatrix_set(matrix, c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0);
}

NQ_API int nq_RotMatrix_rotate(RotMatrix *dst, const RotMatrix *src, double a, double b, double c) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_rotate.", u"Leaving nq_RotMatrix_rotate.");
    if (!dst || !src) return 0;
    MatrixPtr result(nq_RotMatrix_create());
    MatrixPtr step(nq_RotMatrix_create());
    if (!result || !step || !nq_Matrix_copy(result.get(), src)) return 0;
    // Z by c, then Y by b, then X by a, each multiplied on from the left.
    double cc = std::cos(c), sc = std::sin(c);
    nq_RotMatrix_set(step.get(), cc, -sc, 0.0, sc, cc, 0.0, 0.0, 0.0, 1.0);
    if (!nq_Matrix_multiply(result.get(), step.get(), result.get())) return 0;
    // The Y step has its sines the other way round from the other two axes; that stays.
    double cb = std::cos(b), sb = std::sin(b);
    nq_RotMatrix_set(step.get(), cb, 0.0, -sb, 0.0, 1.0, 0.0, sb, 0.0, cb);
    if (!nq_Matrix_multiply(result.get(), step.get(), result.get())) return 0;
    double ca = std::cos(a), sa = std::sin(a);
    nq_RotMatrix_set(step.get(), 1.0, 0.0, 0.0, 0.0, ca, -sa, 0.0, sa, ca);
    if (!nq_Matrix_multiply(result.get(), step.get(), result.get())) return 0;
    return nq_Matrix_copy(dst, result.get());
}

NQ_API int nq_RotMatrix_rotatePoint(Point *point, const RotMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_rotatePoint.", u"Leaving nq_RotMatrix_rotatePoint.");
    if (!point || !matrix) return 0;
    return rotate_values(point->x, point->y, point->z, matrix) ? 1 : 0;
}

NQ_API int nq_RotMatrix_rotateVector(Vector *vector, const RotMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_rotateVector.",
                   u"Leaving nq_RotMatrix_rotateVector.");
    if (!vector || !matrix) return 0;
    return rotate_values(vector->x, vector->y, vector->z, matrix) ? 1 : 0;
}

NQ_API int nq_RotMatrix_from3Points(RotMatrix *matrix, const Point *p1, const Point *p2, const Point *p3) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_from3Points.", u"Leaving nq_RotMatrix_from3Points.");
    if (!matrix || !p1 || !p2 || !p3) return 0;
    Vector x, y, z;
    Point foot;
    if (!nq_Vector_computeNormal(&x, p1, p2)) return 0;
    if (!nq_Point_projectOntoLine(&foot, p3, p1, p2)) return 0;
    if (!nq_Vector_computeNormal(&y, &foot, p3)) return 0;
    double length;
    if (!nq_Vector_crossProduct(&z, &x, &y) || !nq_Vector_magnitude(&length, &z) || !(length > kTolerance))
        return 0;
    return nq_RotMatrix_setColumn(matrix, 0, &x) && nq_RotMatrix_setColumn(matrix, 1, &y) &&
                   nq_RotMatrix_setColumn(matrix, 2, &z)
               ? 1
               : 0;
}

NQ_API int nq_RotMatrix_fromVectorsXY(RotMatrix *matrix, const Point *origin, const Vector *x,
                                      const Vector *y) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromVectorsXY.",
                   u"Leaving nq_RotMatrix_fromVectorsXY.");
    if (!matrix || !origin || !x || !y) return 0;
    Point onX, onY;
    if (!nq_Point_translateByVector(&onX, origin, x, 1.0) || !nq_Point_translateByVector(&onY, origin, y, 1.0))
        return 0;
    return nq_RotMatrix_from3Points(matrix, origin, &onX, &onY);
}

NQ_API int nq_RotMatrix_fromRotAxisAndAngle(RotMatrix *matrix, const Vector *axis, double angle) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromRotAxisAndAngle.",
                   u"Leaving nq_RotMatrix_fromRotAxisAndAngle.");
    if (!matrix || !axis) return 0;
    Vector unit;
    Quaternion q;
    if (!nq_Vector_copyNormalize(&unit, axis) || !nq_Quaternion_fromRotAxisAndAngle(&q, &unit, angle))
        return 0;
    return nq_RotMatrix_fromQuaternion(matrix, &q);
}

NQ_API int nq_RotMatrix_fromVectors(RotMatrix *matrix, const Vector *axis, const Vector *from,
                                    const Vector *to) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromVectors.", u"Leaving nq_RotMatrix_fromVectors.");
    if (!matrix || !from || !to) return 0;
    Quaternion q;
    double axisLength = 0.0;
    if (axis) nq_Vector_magnitude(&axisLength, axis);
    if (!axis || !(axisLength > kTolerance)) {
        if (!nq_Quaternion_fromVectors(&q, from, to)) return 0;
    } else {
        // Both vectors seen across the axis: their parts orthogonal to it.
        Vector a, b;
        if (!nq_Vector_getOrthoVector(&a, axis, from) || !nq_Vector_normalize(&a) ||
            !nq_Vector_getOrthoVector(&b, axis, to) || !nq_Vector_normalize(&b))
            return 0;
        if (!nq_Vector_equal(&a, &b) && nq_Vector_parallel(&a, &b)) {
            // Opposite: a half turn about the axis itself.
            Vector unit;
            if (!nq_Vector_copyNormalize(&unit, axis) || !nq_Quaternion_fromRotAxisAndAngle(&q, &unit, kHalfTurn))
                return 0;
        } else if (!nq_Quaternion_fromVectors(&q, &a, &b)) {
            return 0;
        }
    }
    return nq_RotMatrix_fromQuaternion(matrix, &q);
}

NQ_API int nq_RotMatrix_fromQuaternion(RotMatrix *matrix, const Quaternion *q) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_RotMatrix_fromQuaternion.",
                   u"Leaving nq_RotMatrix_fromQuaternion.");
    if (!matrix || !q) return 0;
    const double x = q->x, y = q->y, z = q->z, w = q->w;
    const double values[3][3] = {
        {1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - z * w), 2.0 * (x * z + y * w)},
        {2.0 * (x * y + z * w), 1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - x * w)},
        {2.0 * (x * z - y * w), 2.0 * (y * z + x * w), 1.0 - 2.0 * (x * x + y * y)},
    };
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            if (!nq_RotMatrix_setElement(matrix, r, c, values[r][c])) return 0;
    return 1;
}

// Quaternions: x, y, z and the scalar w in the caller's memory.

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
