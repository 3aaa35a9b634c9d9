/* nq_tls20an: three-dimensional vectors.
 *
 * Every function writes through its first pointer and yields 1 on success, 0 when a pointer
 * is null or the operation is undefined (nothing is written then, unless a function says
 * otherwise). The output may be one of the inputs. Comparisons against a tolerance are
 * strict; the default tolerance is NQ_GEOMETRY_TOLERANCE. */
#ifndef NQ_VECTOR_H
#define NQ_VECTOR_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

#define NQ_GEOMETRY_TOLERANCE 1e-05

NQ_API int nq_Vector_set(Vector *out, double x, double y, double z);
NQ_API int nq_Vector_setX(Vector *v, double value);
NQ_API int nq_Vector_setY(Vector *v, double value);
NQ_API int nq_Vector_setZ(Vector *v, double value);
NQ_API int nq_Vector_getX(double *out, const Vector *v);
NQ_API int nq_Vector_getY(double *out, const Vector *v);
NQ_API int nq_Vector_getZ(double *out, const Vector *v);
NQ_API int nq_Vector_copy(Vector *out, const Vector *v);
NQ_API int nq_Vector_fromPoint(Vector *out, const Point *p);
/* Elements 0, 1 and 2; each read must succeed. */
NQ_API int nq_Vector_fromNtuple(Vector *out, const Ntuple *n);

NQ_API int nq_Vector_add(Vector *out, const Vector *a, const Vector *b);
/* b - a: the second operand minus the first. */
NQ_API int nq_Vector_subtract(Vector *out, const Vector *a, const Vector *b);
NQ_API int nq_Vector_negate(Vector *out, const Vector *v);
NQ_API int nq_Vector_scale(Vector *out, const Vector *v, double factor);
NQ_API int nq_Vector_dotProduct(double *out, const Vector *a, const Vector *b);
/* The right-handed product a x b. */
NQ_API int nq_Vector_crossProduct(Vector *out, const Vector *a, const Vector *b);
NQ_API int nq_Vector_magnitude(double *out, const Vector *v);
/* In place; a vector of length 1e-05 or less is left as it is and gives 0. */
NQ_API int nq_Vector_normalize(Vector *v);
NQ_API int nq_Vector_copyNormalize(Vector *out, const Vector *v);
/* Radians, 0 to pi, no sign. */
NQ_API int nq_Vector_angle(double *out, const Vector *a, const Vector *b);

/* p2 - p1; two equal points give 0 and leave the zero vector in out. */
NQ_API int nq_Vector_computeVector(Vector *out, const Point *p1, const Point *p2);
NQ_API int nq_Vector_computeNormal(Vector *out, const Point *p1, const Point *p2);
/* (p2 - p1) x (p3 - p1), and that normalized. */
NQ_API int nq_Vector_computeOrthovec(Vector *out, const Point *p1, const Point *p2, const Point *p3);
NQ_API int nq_Vector_computeOrthonorm(Vector *out, const Point *p1, const Point *p2, const Point *p3);
/* The part of the unit vector of b that is orthogonal to a. */
NQ_API int nq_Vector_getOrthoVector(Vector *out, const Vector *a, const Vector *b);

NQ_API int nq_Vector_equal(const Vector *a, const Vector *b);
NQ_API int nq_Vector_equalWithinTol(const Vector *a, const Vector *b, double tolerance);
/* |a . b| and |a x b| against the tolerance, unscaled by the lengths. */
NQ_API int nq_Vector_orthogonal(const Vector *a, const Vector *b);
NQ_API int nq_Vector_orthogonalWithinTolerance(const Vector *a, const Vector *b, double tolerance);
NQ_API int nq_Vector_parallel(const Vector *a, const Vector *b);
NQ_API int nq_Vector_parallelWithinTolerance(const Vector *a, const Vector *b, double tolerance);
NQ_API int nq_Vector_isHorizontal(const Vector *v);
NQ_API int nq_Vector_isVertical(const Vector *v);

NQ_EXTERN_C_END

#endif
