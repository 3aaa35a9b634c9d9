/* nq_tls20an: 3 by 3 rotation matrices and quaternions.
 *
 * A RotMatrix is a Matrix of 3 by 3; a Quaternion is x, y, z and the scalar w. Operations
 * write through their first pointer and yield 1 on success, 0 for a null pointer or a
 * failed step, unless a line below says otherwise. Angles are in radians. Row and column
 * numbers count from 0. */
#ifndef NQ_ROTMATRIX_H
#define NQ_ROTMATRIX_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Starts as the identity. */
NQ_API RotMatrix *nq_RotMatrix_create(void);
NQ_API int nq_RotMatrix_destroy(RotMatrix *matrix);
NQ_API int nq_RotMatrix_copy(RotMatrix *dst, const RotMatrix *src);
NQ_API int nq_RotMatrix_multiply(RotMatrix *dst, const RotMatrix *a, const RotMatrix *b);
/* The transpose. */
NQ_API int nq_RotMatrix_getInverse(RotMatrix *dst, const RotMatrix *src);
NQ_API int nq_RotMatrix_getElement(double *out, const RotMatrix *matrix, int row, int column);
NQ_API int nq_RotMatrix_setElement(RotMatrix *matrix, int row, int column, double value);
NQ_API int nq_RotMatrix_getColumn(Vector *out, const RotMatrix *matrix, int number);
NQ_API int nq_RotMatrix_getRow(Vector *out, const RotMatrix *matrix, int number);
/* Nine values row by row; 1 for any matrix. */
NQ_API int nq_RotMatrix_set(RotMatrix *matrix, double r0c0, double r0c1, double r0c2, double r1c0,
                            double r1c1, double r1c2, double r2c0, double r2c1, double r2c2);
/* Yields 0 in every case. */
NQ_API int nq_RotMatrix_setIdentity(RotMatrix *matrix);
/* Each element minus its identity value must be below 1e-05; no absolute value is taken. */
NQ_API int nq_RotMatrix_isIdentity(const RotMatrix *matrix);
NQ_API int nq_RotMatrix_equal(const RotMatrix *a, const RotMatrix *b);
/* Each column to unit length; nothing makes them orthogonal. */
NQ_API int nq_RotMatrix_normalize(RotMatrix *dst, const RotMatrix *src);

/* Both setColumn and setRow write column `number`; both setRowValues and setColumnValues
 * write row `number`. */
NQ_API int nq_RotMatrix_setColumn(RotMatrix *matrix, int number, const Vector *v);
NQ_API int nq_RotMatrix_setRow(RotMatrix *matrix, int number, const Vector *v);
NQ_API int nq_RotMatrix_setRowValues(RotMatrix *matrix, int number, double a, double b, double c);
NQ_API int nq_RotMatrix_setColumnValues(RotMatrix *matrix, int number, double a, double b, double c);
/* Both give the matrix with the vectors as columns, and yield 0 in every case. */
NQ_API int nq_RotMatrix_fromColumnVectors(RotMatrix *matrix, const Vector *c0, const Vector *c1,
                                          const Vector *c2);
NQ_API int nq_RotMatrix_fromRowVectors(RotMatrix *matrix, const Vector *r0, const Vector *r1,
                                       const Vector *r2);

/* About Z. */
NQ_API int nq_RotMatrix_fromAngle(RotMatrix *matrix, double angle);
/* X(a) * Y(b) * Z(c) * src. */
NQ_API int nq_RotMatrix_rotate(RotMatrix *dst, const RotMatrix *src, double a, double b, double c);
/* In place: the matrix times the point or vector. */
NQ_API int nq_RotMatrix_rotatePoint(Point *point, const RotMatrix *matrix);
NQ_API int nq_RotMatrix_rotateVector(Vector *vector, const RotMatrix *matrix);
/* Columns: the unit vector p1 to p2, the unit vector from the foot of p3 to p3, and their
 * cross product. */
NQ_API int nq_RotMatrix_from3Points(RotMatrix *matrix, const Point *p1, const Point *p2,
                                    const Point *p3);
NQ_API int nq_RotMatrix_fromVectorsXY(RotMatrix *matrix, const Point *origin, const Vector *x,
                                      const Vector *y);
NQ_API int nq_RotMatrix_fromRotAxisAndAngle(RotMatrix *matrix, const Vector *axis, double angle);
/* The rotation that turns from into to; with an axis, about that axis. */
NQ_API int nq_RotMatrix_fromVectors(RotMatrix *matrix, const Vector *axis, const Vector *from,
                                    const Vector *to);
NQ_API int nq_RotMatrix_fromQuaternion(RotMatrix *matrix, const Quaternion *q);

NQ_API int nq_Quaternion_set(Quaternion *q, double x, double y, double z, double w);
NQ_API int nq_Quaternion_setX(Quaternion *q, double value);
NQ_API int nq_Quaternion_setY(Quaternion *q, double value);
NQ_API int nq_Quaternion_setZ(Quaternion *q, double value);
NQ_API int nq_Quaternion_setScalar(Quaternion *q, double value);
NQ_API int nq_Quaternion_setVector(Quaternion *q, const Vector *v);
NQ_API int nq_Quaternion_getX(double *out, const Quaternion *q);
NQ_API int nq_Quaternion_getY(double *out, const Quaternion *q);
NQ_API int nq_Quaternion_getZ(double *out, const Quaternion *q);
NQ_API int nq_Quaternion_getScalar(double *out, const Quaternion *q);
NQ_API int nq_Quaternion_getVector(Vector *out, const Quaternion *q);
NQ_API int nq_Quaternion_getConjugate(Quaternion *dst, const Quaternion *src);
/* The conjugate, with no division by the squared length: for unit quaternions. */
NQ_API int nq_Quaternion_getInverse(Quaternion *dst, const Quaternion *src);
NQ_API int nq_Quaternion_fromRotAxisAndAngle(Quaternion *q, const Vector *axis, double angle);
NQ_API int nq_Quaternion_fromVectors(Quaternion *q, const Vector *a, const Vector *b);
NQ_API int nq_Quaternion_magnitude(double *out, const Quaternion *q);
NQ_API int nq_Quaternion_normalize(Quaternion *dst, const Quaternion *src);
/* dst may be a or b. */
NQ_API int nq_Quaternion_multiply(Quaternion *dst, const Quaternion *a, const Quaternion *b);

NQ_EXTERN_C_END

#endif
