// Transform matrices: 4 by 4 matrices with the rotation in the upper left 3 by 3, the
// origin in rows 0 to 2 of column 3 and (0, 0, 0, 1) as row 3. Traced under the Matrix bit
// with "Leaving" exits.
#include <memory>

#include "diag_trace.h"
#include "nq_matrix.h"
#include "nq_point.h"
#include "nq_rotmatrix.h"
#include "nq_vector.h"

namespace {

struct MatrixRelease {
    void operator()(Matrix *m) const { nq_Matrix_destroy(m); }
};
using MatrixPtr = std::unique_ptr<Matrix, MatrixRelease>;

int set_last_row(TMatrix *matrix) {
    return nq_Matrix_setElement(matrix, 3, 0, 0.0) && nq_Matrix_setElement(matrix, 3, 1, 0.0) &&
           nq_Matrix_setElement(matrix, 3, 2, 0.0) && nq_Matrix_setElement(matrix, 3, 3, 1.0);
}

}  // namespace

extern "C" {

NQ_API TMatrix *nq_TMatrix_create(void) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_create.", u"Leaving nq_TMatrix_create.");
    return nq_Matrix_create(4, 4);
}

NQ_API int nq_TMatrix_destroy(TMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_destroy.", u"Leaving nq_TMatrix_destroy.");
    return nq_Matrix_destroy(matrix);
}

NQ_API int nq_TMatrix_set(TMatrix *matrix, double r0c0, double r0c1, double r0c2, double r0c3,
                          double r1c0, double r1c1, double r1c2, double r1c3, double r2c0,
                          double r2c1, double r2c2, double r2c3) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_set.", u"Leaving nq_TMatrix_set.");
    if (!matrix) return 0;
    const double values[3][4] = {{r0c0, r0c1, r0c2, r0c3}, {r1c0, r1c1, r1c2, r1c3}, {r2c0, r2c1, r2c2, r2c3}};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c)
            if (!nq_Matrix_setElement(matrix, r, c, values[r][c])) return 0;
    return set_last_row(matrix);
}

NQ_API int nq_TMatrix_setIdentity(TMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_setIdentity.", u"Leaving nq_TMatrix_setIdentity.");
    if (!matrix) return 0;
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            if (!nq_Matrix_setElement(matrix, r, c, r == c ? 1.0 : 0.0)) return 0;
    return 1;
}

NQ_API int nq_TMatrix_getOrigin(Point *out, const TMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_getOrigin.", u"Leaving nq_TMatrix_getOrigin.");
    if (!out || !matrix) return 0;
    Point origin;
    if (!nq_Matrix_getElement(&origin.x, matrix, 0, 3) || !nq_Matrix_getElement(&origin.y, matrix, 1, 3) ||
        !nq_Matrix_getElement(&origin.z, matrix, 2, 3))
        return 0;
    *out = origin;
    return 1;
}

NQ_API int nq_TMatrix_setOrigin(TMatrix *matrix, const Point *origin) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_setOrigin.", u"Leaving nq_TMatrix_setOrigin.");
    if (!matrix || !origin) return 0;
    return nq_Matrix_setElement(matrix, 0, 3, origin->x) && nq_Matrix_setElement(matrix, 1, 3, origin->y) &&
                   nq_Matrix_setElement(matrix, 2, 3, origin->z)
               ? 1
               : 0;
}

NQ_API int nq_TMatrix_getRMatrix(RotMatrix *out, const TMatrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_getRMatrix.", u"Leaving nq_TMatrix_getRMatrix.");
    if (!out || !matrix) return 0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double value;
            if (!nq_Matrix_getElement(&value, matrix, r, c) || !nq_Matrix_setElement(out, r, c, value))
                return 0;
        }
    }
    return 1;
}

NQ_API int nq_TMatrix_setRMatrix(TMatrix *matrix, const RotMatrix *rotation) {
    // The exit text names the origin setter; trace readers know it under that name.
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_setRMatrix.", u"Leaving nq_TMatrix_setOrigin.");
    if (!matrix || !rotation) return 0;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double value;
            if (!nq_Matrix_getElement(&value, rotation, r, c) || !nq_Matrix_setElement(matrix, r, c, value))
                return 0;
        }
    }
    return set_last_row(matrix);
}

NQ_API int nq_TMatrix_createForTranslation(TMatrix *matrix, const Point *from, const Point *to) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_createForTranslation.",
                   u"Leaving nq_TMatrix_createForTranslation.");
    if (!matrix || !from || !to) return 0;
    Point shift;
    nq_Point_subtract(&shift, from, to);  // to - from
    return nq_TMatrix_setIdentity(matrix) && nq_TMatrix_setOrigin(matrix, &shift) ? 1 : 0;
}

NQ_API int nq_TMatrix_createFromUCS(TMatrix *matrix, const Point *p1, const Point *p2, const Point *p3,
                                    const Point *p4, const Point *p5, const Point *p6) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_createFromUCS.",
                   u"Leaving nq_TMatrix_createFromUCS.");
    if (!matrix || !p1 || !p2 || !p3 || !p4 || !p5 || !p6) return 0;
    nq_TMatrix_setIdentity(matrix);

    Vector x1 = {0, 0, 0}, xy1 = {0, 0, 0}, x2 = {0, 0, 0}, xy2 = {0, 0, 0};
    nq_Vector_computeNormal(&x1, p1, p2);
    nq_Vector_computeNormal(&xy1, p2, p3);
    nq_Vector_computeNormal(&x2, p4, p5);
    nq_Vector_computeNormal(&xy2, p5, p6);
    if (nq_Vector_equal(&x1, &x2) && nq_Vector_equal(&xy1, &xy2)) {
        // The same axes: only a shift from one origin to the other.
        Point shift;
        nq_Point_subtract(&shift, p1, p4);
        nq_TMatrix_setOrigin(matrix, &shift);
        return 1;
    }

    // A takes a point into the first system's coordinates: the inverse rotation, and -p1
    // carried through it as origin. B takes the second system's coordinates back out. The
    // steps' own results are not looked at: a degenerate system leaves identities behind.
    MatrixPtr a(nq_TMatrix_create());
    MatrixPtr rotation1(nq_RotMatrix_create());
    MatrixPtr inverse1(nq_RotMatrix_create());
    nq_RotMatrix_from3Points(rotation1.get(), p1, p2, p3);
    nq_RotMatrix_getInverse(inverse1.get(), rotation1.get());
    nq_TMatrix_setRMatrix(a.get(), inverse1.get());
    Point minusP1 = {-p1->x, -p1->y, -p1->z};
    Point originA = {0, 0, 0};
    nq_TMatrix_xform(&originA, a.get(), &minusP1);
    nq_TMatrix_setOrigin(a.get(), &originA);

    MatrixPtr b(nq_TMatrix_create());
    MatrixPtr rotation2(nq_RotMatrix_create());
    nq_RotMatrix_from3Points(rotation2.get(), p4, p5, p6);
    nq_TMatrix_setRMatrix(b.get(), rotation2.get());
    nq_TMatrix_setOrigin(b.get(), p4);

    // B times A, taken as the transpose of A's transpose times B's transpose.
    MatrixPtr aT(nq_TMatrix_create());
    MatrixPtr bT(nq_TMatrix_create());
    MatrixPtr product(nq_TMatrix_create());
    nq_Matrix_transpose(aT.get(), a.get());
    nq_Matrix_transpose(bT.get(), b.get());
    nq_Matrix_multiply(product.get(), aT.get(), bT.get());
    nq_Matrix_transpose(matrix, product.get());
    return 1;
}

NQ_API int nq_TMatrix_rotate(TMatrix *dst, const TMatrix *src, double a, double b, double c) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_rotate.", u"Leaving nq_TMatrix_rotate.");
    if (!dst || !src) return 0;
    MatrixPtr rotation(nq_RotMatrix_create());
    if (!rotation || !nq_RotMatrix_rotate(rotation.get(), rotation.get(), a, b, c)) return 0;
    // src's rotation is replaced, not composed with: only its origin survives.
    if (!nq_Matrix_copy(dst, src)) return 0;
    return nq_TMatrix_setRMatrix(dst, rotation.get());
}

NQ_API int nq_TMatrix_xform(Point *out, const TMatrix *matrix, const Point *point) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_TMatrix_xform.", u"Leaving nq_TMatrix_xform.");
    if (!out || !matrix || !point) return 0;
    // Row 3 is not used and nothing is divided by it.
    const double in[4] = {point->x, point->y, point->z, 1.0};
    double result[3];
    for (int r = 0; r < 3; ++r) {
        double sum = 0.0;
        for (int c = 0; c < 4; ++c) {
            double value;
            if (!nq_Matrix_getElement(&value, matrix, r, c)) return 0;
            sum += value * in[c];
        }
        result[r] = sum;
    }
    out->x = result[0];
    out->y = result[1];
    out->z = result[2];
    return 1;
}

}  // extern "C"
