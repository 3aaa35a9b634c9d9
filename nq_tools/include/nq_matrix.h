/* nq_tls20an: n-tuples, matrices and 4 by 4 transform matrices.
 *
 * An Ntuple is a counted array of floats; a Matrix is a counted array of Ntuple columns,
 * each of as many values as the matrix has rows. A TMatrix is a 4 by 4 Matrix: the upper
 * left 3 by 3 is the rotation, rows 0 to 2 of column 3 the origin, row 3 (0, 0, 0, 1).
 * Operations write through their first pointer and yield 1 on success, 0 on failure. */
#ifndef NQ_MATRIX_H
#define NQ_MATRIX_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* All values 0; null for a negative count or no memory. */
NQ_API Ntuple *nq_Ntuple_create(int count);
NQ_API int nq_Ntuple_destroy(Ntuple *tuple);
NQ_API int nq_Ntuple_getElement(double *out, const Ntuple *tuple, int index);
NQ_API int nq_Ntuple_setElement(Ntuple *tuple, int index, double value);
/* The operations on two or three tuples need equal counts. */
NQ_API int nq_Ntuple_copy(Ntuple *dst, const Ntuple *src);
NQ_API int nq_Ntuple_add(Ntuple *dst, const Ntuple *a, const Ntuple *b);
/* a - b. */
NQ_API int nq_Ntuple_subtract(Ntuple *dst, const Ntuple *a, const Ntuple *b);
NQ_API int nq_Ntuple_scale(Ntuple *dst, const Ntuple *src, double factor);
NQ_API int nq_Ntuple_dotProduct(double *out, const Ntuple *a, const Ntuple *b);
/* A new tuple of 3. */
NQ_API Ntuple *nq_Ntuple_fromVector(const Vector *v);
/* "v0, v1, ..., vn" on the stream, or on standard output for a null stream. */
NQ_API int nq_Ntuple_print(const Ntuple *tuple, FILE *stream);

/* A new matrix with ones at (i, i) as far as there are rows: the identity when square. */
NQ_API Matrix *nq_Matrix_create(int rows, int columns);
NQ_API int nq_Matrix_destroy(Matrix *matrix);
NQ_API int nq_Matrix_numberRows(int *out, const Matrix *matrix);
NQ_API int nq_Matrix_numberColumns(int *out, const Matrix *matrix);
NQ_API int nq_Matrix_getElement(double *out, const Matrix *matrix, int row, int column);
NQ_API int nq_Matrix_setElement(Matrix *matrix, int row, int column, double value);
NQ_API int nq_Matrix_getColumn(Ntuple *tuple, const Matrix *matrix, int number);
NQ_API int nq_Matrix_setColumn(Matrix *matrix, int number, const Ntuple *tuple);
NQ_API int nq_Matrix_getRow(Ntuple *tuple, const Matrix *matrix, int number);
NQ_API int nq_Matrix_setRow(Matrix *matrix, int number, const Ntuple *tuple);
NQ_API int nq_Matrix_copy(Matrix *dst, const Matrix *src);
NQ_API int nq_Matrix_add(Matrix *dst, const Matrix *a, const Matrix *b);
NQ_API int nq_Matrix_subtract(Matrix *dst, const Matrix *a, const Matrix *b);
NQ_API int nq_Matrix_scale(Matrix *dst, const Matrix *src, double factor);
/* a times b; dst may be a or b when it has the product's size. */
NQ_API int nq_Matrix_multiply(Matrix *dst, const Matrix *a, const Matrix *b);
/* dst may be src when square. */
NQ_API int nq_Matrix_transpose(Matrix *dst, const Matrix *src);
/* Row by row, each value as "%lf ", a line feed after each row; a null stream is
 * standard output. */
NQ_API int nq_Matrix_print(const Matrix *matrix, FILE *stream);

NQ_API TMatrix *nq_TMatrix_create(void);
NQ_API int nq_TMatrix_destroy(TMatrix *matrix);
/* Twelve values, row by row; row 3 becomes (0, 0, 0, 1). */
NQ_API int nq_TMatrix_set(TMatrix *matrix, double r0c0, double r0c1, double r0c2, double r0c3,
                          double r1c0, double r1c1, double r1c2, double r1c3, double r2c0,
                          double r2c1, double r2c2, double r2c3);
NQ_API int nq_TMatrix_setIdentity(TMatrix *matrix);
NQ_API int nq_TMatrix_getOrigin(Point *out, const TMatrix *matrix);
NQ_API int nq_TMatrix_setOrigin(TMatrix *matrix, const Point *origin);
NQ_API int nq_TMatrix_getRMatrix(RotMatrix *out, const TMatrix *matrix);
/* Also rewrites row 3. */
NQ_API int nq_TMatrix_setRMatrix(TMatrix *matrix, const RotMatrix *rotation);
/* The identity with origin to - from. */
NQ_API int nq_TMatrix_createForTranslation(TMatrix *matrix, const Point *from, const Point *to);
/* The transform from the system p1, p2, p3 to the system p4, p5, p6 (each an origin, a
 * point on the X axis and a point in the XY plane). */
NQ_API int nq_TMatrix_createFromUCS(TMatrix *matrix, const Point *p1, const Point *p2,
                                    const Point *p3, const Point *p4, const Point *p5,
                                    const Point *p6);
/* src's origin with a new rotation by a, b, c about X, Y, Z; src's rotation is dropped. */
NQ_API int nq_TMatrix_rotate(TMatrix *dst, const TMatrix *src, double a, double b, double c);
/* Rows 0 to 2 times (x, y, z, 1). */
NQ_API int nq_TMatrix_xform(Point *out, const TMatrix *matrix, const Point *point);

NQ_EXTERN_C_END

#endif
