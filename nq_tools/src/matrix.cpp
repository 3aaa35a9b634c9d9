// Matrices stored column by column, one Ntuple a column, and the 4 by 4 transform matrices
// built on them: the rotation in the upper left 3 by 3, the origin in rows 0 to 2 of column
// 3 and (0, 0, 0, 1) as row 3. Traced under the Matrix bit with "Leaving" exits. Element
// access goes through the columns' own bounds.
#include <memory>

#include "diag_trace.h"
#include "nq_matrix.h"
#include "nq_memory.h"
#include "nq_point.h"
#include "nq_rotmatrix.h"
#include "nq_vector.h"
#include "text/nq_text.h"

namespace {

// The column, or null when the number is out of range.
Ntuple *column_of(const Matrix *matrix, int number) {
    if (!matrix || !matrix->items || number < 0 || number >= matrix->columns) return nullptr;
    return matrix->items[number];
}

struct MatrixRelease {
    void operator()(Matrix *m) const { nq_Matrix_destroy(m); }
};
using MatrixPtr = std::unique_ptr<Matrix, MatrixRelease>;

struct TupleRelease {
    void operator()(Ntuple *t) const { nq_Ntuple_destroy(t); }
};
using TuplePtr = std::unique_ptr<Ntuple, TupleRelease>;

int set_last_row(TMatrix *matrix) {
    return nq_Matrix_setElement(matrix, 3, 0, 0.0) && nq_Matrix_setElement(matrix, 3, 1, 0.0) &&
           nq_Matrix_setElement(matrix, 3, 2, 0.0) && nq_Matrix_setElement(matrix, 3, 3, 1.0);
}

}  // namespace

extern "C" {

NQ_API Matrix *nq_Matrix_create(int rows, int columns) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_create.", u"Leaving nq_Matrix_create.");
    if (rows < 0 || columns < 0) return nullptr;
    Matrix *matrix = static_cast<Matrix *>(nq_Malloc(sizeof(Matrix)));
    if (!matrix) return nullptr;
    matrix->columns = 0;
    matrix->items = nullptr;
    if (columns > 0) {
        matrix->items = static_cast<Ntuple **>(nq_Malloc(sizeof(Ntuple *) * static_cast<size_t>(columns)));
        if (!matrix->items) {
            nq_Free(matrix);
            return nullptr;
        }
    }
    for (int i = 0; i < columns; ++i) {
        Ntuple *column = nq_Ntuple_create(rows);
        // A column that cannot be made ends the matrix there; what was built is returned,
        // counting only the columns that exist.
        if (!column) break;
        matrix->items[i] = column;
        matrix->columns = i + 1;
        // Beyond the last row this fails, and that is ignored: a wide matrix is the
        // identity only as far as it has rows.
        nq_Ntuple_setElement(column, i, 1.0);
    }
    return matrix;
}

NQ_API int nq_Matrix_destroy(Matrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_destroy.", u"Leaving nq_Matrix_destroy.");
    if (!matrix) return 0;
    for (int i = 0; matrix->items && i < matrix->columns; ++i) nq_Ntuple_destroy(matrix->items[i]);
    nq_Free(matrix->items);
    nq_Free(matrix);
    return 1;
}

NQ_API int nq_Matrix_numberRows(int *out, const Matrix *matrix) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_numberRows.", u"Leaving nq_Matrix_numberRows.");
    const Ntuple *first = column_of(matrix, 0);
    if (!out || !first) return 0;
    *out = first->count;
    return 1;
}

NQ_API int nq_Matrix_numberColumns(int *out, const Matrix *matrix) {
    // Its trace carries the family's older short name.
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_numberCols.", u"Leaving nq_Matrix_numberCols.");
    if (!out || !matrix) return 0;
    *out = matrix->columns;
    return 1;
}

NQ_API int nq_Matrix_getElement(double *out, const Matrix *matrix, int row, int column) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_getElement.", u"Leaving nq_Matrix_getElement.");
    const Ntuple *tuple = column_of(matrix, column);
    if (!out || !tuple) return 0;
    return nq_Ntuple_getElement(out, tuple, row);
}

NQ_API int nq_Matrix_setElement(Matrix *matrix, int row, int column, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_setElement.", u"Leaving nq_Matrix_setElement.");
    Ntuple *tuple = column_of(matrix, column);
    if (!tuple) return 0;
    return nq_Ntuple_setElement(tuple, row, value);
}

NQ_API int nq_Matrix_getColumn(Ntuple *tuple, const Matrix *matrix, int number) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_getColumn.", u"Leaving nq_Matrix_getColumn.");
    const Ntuple *column = column_of(matrix, number);
    if (!tuple || !column) return 0;
    return nq_Ntuple_copy(tuple, column);
}

NQ_API int nq_Matrix_setColumn(Matrix *matrix, int number, const Ntuple *tuple) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_setColumn.", u"Leaving nq_Matrix_setColumn.");
    Ntuple *column = column_of(matrix, number);
    if (!tuple || !column) return 0;
    return nq_Ntuple_copy(column, tuple);
}

NQ_API int nq_Matrix_getRow(Ntuple *tuple, const Matrix *matrix, int number) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_getRow.", u"Leaving nq_Matrix_getRow.");
    if (!tuple || !matrix || tuple->count != matrix->columns) return 0;
    for (int j = 0; j < matrix->columns; ++j) {
        double value;
        if (!nq_Matrix_getElement(&value, matrix, number, j) || !nq_Ntuple_setElement(tuple, j, value))
            return 0;
    }
    return 1;
}

NQ_API int nq_Matrix_setRow(Matrix *matrix, int number, const Ntuple *tuple) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_setRow.", u"Leaving nq_Matrix_setRow.");
    int rows;
    if (!tuple || !nq_Matrix_numberRows(&rows, matrix) || number < 0 || number >= rows) return 0;
    for (int j = 0; j < matrix->columns; ++j) {
        double value;
        if (!nq_Ntuple_getElement(&value, tuple, j) || !nq_Matrix_setElement(matrix, number, j, value))
            return 0;
    }
    return 1;
}

NQ_API int nq_Matrix_copy(Matrix *dst, const Matrix *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_copy.", u"Leaving nq_Matrix_copy.");
    if (!dst || !src || dst->columns != src->columns) return 0;
    for (int i = 0; i < src->columns; ++i)
        if (!nq_Ntuple_copy(column_of(dst, i), column_of(src, i))) return 0;
    return 1;
}

NQ_API int nq_Matrix_add(Matrix *dst, const Matrix *a, const Matrix *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_add.", u"Leaving nq_Matrix_add.");
    if (!dst || !a || !b || dst->columns != a->columns || a->columns != b->columns) return 0;
    for (int i = 0; i < a->columns; ++i)
        if (!nq_Ntuple_add(column_of(dst, i), column_of(a, i), column_of(b, i))) return 0;
    return 1;
}

NQ_API int nq_Matrix_subtract(Matrix *dst, const Matrix *a, const Matrix *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_subtract.", u"Leaving nq_Matrix_subtract.");
    if (!dst || !a || !b || dst->columns != a->columns || a->columns != b->columns) return 0;
    for (int i = 0; i < a->columns; ++i)
        if (!nq_Ntuple_subtract(column_of(dst, i), column_of(a, i), column_of(b, i))) return 0;
    return 1;
}

NQ_API int nq_Matrix_scale(Matrix *dst, const Matrix *src, double factor) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_scale.", u"Leaving nq_Matrix_scale.");
    if (!nq_Matrix_copy(dst, src)) return 0;
    for (int i = 0; i < dst->columns; ++i) {
        Ntuple *column = column_of(dst, i);
        if (!nq_Ntuple_scale(column, column, factor)) return 0;
    }
    return 1;
}

NQ_API int nq_Matrix_multiply(Matrix *dst, const Matrix *a, const Matrix *b) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_multiply.", u"Leaving nq_Matrix_multiply.");
    int rowsA, colsA, rowsB, colsB;
    if (!dst || !nq_Matrix_numberRows(&rowsA, a) || !nq_Matrix_numberColumns(&colsA, a) ||
        !nq_Matrix_numberRows(&rowsB, b) || !nq_Matrix_numberColumns(&colsB, b) || colsA != rowsB)
        return 0;
    // The product goes to a temporary first, so dst may be a or b.
    MatrixPtr product(nq_Matrix_create(rowsA, colsB));
    if (!product || product->columns != colsB) return 0;
    for (int i = 0; i < rowsA; ++i) {
        for (int j = 0; j < colsB; ++j) {
            TuplePtr row(nq_Ntuple_create(colsA));
            TuplePtr column(nq_Ntuple_create(rowsB));
            double value;
            if (!nq_Matrix_getRow(row.get(), a, i) || !nq_Matrix_getColumn(column.get(), b, j) ||
                !nq_Ntuple_dotProduct(&value, row.get(), column.get()) ||
                !nq_Matrix_setElement(product.get(), i, j, value))
                return 0;
        }
    }
    return nq_Matrix_copy(dst, product.get());
}

NQ_API int nq_Matrix_transpose(Matrix *dst, const Matrix *src) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_transpose.", u"Leaving nq_Matrix_transpose.");
    int rowsDst, colsDst, rowsSrc, colsSrc;
    if (!nq_Matrix_numberRows(&rowsDst, dst) || !nq_Matrix_numberColumns(&colsDst, dst) ||
        !nq_Matrix_numberRows(&rowsSrc, src) || !nq_Matrix_numberColumns(&colsSrc, src) ||
        rowsSrc != colsDst || colsSrc != rowsDst)
        return 0;
    MatrixPtr turned(nq_Matrix_create(rowsDst, colsDst));
    if (!turned) return 0;
    int status = 0;
    for (int i = 0; i < colsSrc; ++i) {
        TuplePtr column(nq_Ntuple_create(rowsSrc));
        if (nq_Matrix_getColumn(column.get(), src, i)) nq_Matrix_setRow(turned.get(), i, column.get());
        // Moved or not, the status is 1: a column that fails leaves its row of the temporary
        // as it was and does not fail the transpose.
        status = 1;
    }
    if (!nq_Matrix_copy(dst, turned.get())) return 0;
    return status;
}

NQ_API int nq_Matrix_print(const Matrix *matrix, FILE *stream) {
    NQ_TRACE_FRAME(NQ_DIAG_MATRIX, u"Entering nq_Matrix_print.", u"Leaving nq_Matrix_print.");
    int rows;
    if (!nq_Matrix_numberRows(&rows, matrix)) return 0;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < matrix->columns; ++c) {
            double value;
            if (!nq_Matrix_getElement(&value, matrix, r, c)) return 0;
            if (stream)
                nqt::fprint(stream, u"%lf ", value);
            else
                nqt::print(u"%lf ", value);
        }
        if (stream)
            nqt::fprint(stream, u"\n");
        else
            nqt::print(u"\n");
    }
    return 1;
}

// Transform matrices.

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
