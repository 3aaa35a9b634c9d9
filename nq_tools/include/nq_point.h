/* nq_tls20an: three-dimensional points, the line geometry built on them, and the lists of
 * points, vectors and point travel records.
 *
 * The Point functions write through their first pointer and yield 1 on success, 0 for a
 * null pointer or an undefined result; the output may be one of the inputs. Comparisons
 * against a tolerance are strict; the default tolerance is 1e-05. */
#ifndef NQ_POINT_H
#define NQ_POINT_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

NQ_API int nq_Point_set(Point *out, double x, double y, double z);
NQ_API int nq_Point_setX(Point *p, double value);
NQ_API int nq_Point_setY(Point *p, double value);
NQ_API int nq_Point_setZ(Point *p, double value);
NQ_API int nq_Point_getX(double *out, const Point *p);
NQ_API int nq_Point_getY(double *out, const Point *p);
NQ_API int nq_Point_getZ(double *out, const Point *p);
NQ_API int nq_Point_copy(Point *out, const Point *p);
NQ_API int nq_Point_fromVector(Point *out, const Vector *v);

NQ_API int nq_Point_add(Point *out, const Point *a, const Point *b);
/* b - a: the second operand minus the first. */
NQ_API int nq_Point_subtract(Point *out, const Point *a, const Point *b);
NQ_API int nq_Point_midpoint(Point *out, const Point *a, const Point *b);
NQ_API int nq_Point_distance(double *out, const Point *a, const Point *b);
NQ_API int nq_Point_equal(const Point *a, const Point *b);
NQ_API int nq_Point_equalWithinTol(const Point *a, const Point *b, double tolerance);
/* Each coordinate whose absolute value is below 1e-05 becomes 0.0. */
NQ_API void nq_Point_setToTolerance(Point *p);
/* p plus the unit vector of v times distance. out gets p first, so a zero vector leaves p
 * there and gives 0. */
NQ_API int nq_Point_translateByVector(Point *out, const Point *p, const Vector *v, double distance);
/* In the XY plane, along (cos angle, sin angle, 0), the angle in radians. */
NQ_API int nq_Point_translateByAngle(Point *out, const Point *p, double angle, double distance);
/* "x<d>y[<d>z]" with any character of the delimiter set between the numbers. out becomes
 * the origin first; fewer than two numbers give 0, a missing z stays 0. */
NQ_API int nq_Point_fromDelimitedString(Point *out, const nq_wchar *text, const nq_wchar *delimiter);

/* The three plane determinants (XY, YZ, XZ): areas, not distances. */
NQ_API int nq_Point_colinear(const Point *a, const Point *b, const Point *c);
NQ_API int nq_Point_colinearWithinTol(const Point *a, const Point *b, const Point *c, double tolerance);
/* |d(c, b) - (d(a, b) + d(c, a))| < tolerance: true only when a lies between b and c. */
NQ_API int nq_Point_colinearWithinTol_v2(const Point *a, const Point *b, const Point *c, double tolerance);
/* Strictly between a and b, on the line (or, with onLineOnly 0, by its projection). */
NQ_API int nq_Point_between(const Point *p, const Point *a, const Point *b, int onLineOnly);
/* The foot of p on the infinite line through a and b; p equal to a gives 0. */
NQ_API int nq_Point_projectOntoLine(Point *out, const Point *p, const Point *a, const Point *b);
/* The vector from the foot of c on the line from b to a, to c. */
NQ_API int nq_Point_getOrthoVector(Vector *out, const Point *a, const Point *b, const Point *c);
/* 1 when the foot of p lies strictly between a and b and p is at most radius from the
 * line; the distance goes to outDistance when that is not null. */
NQ_API int nq_Point_inCylinder(double *outDistance, const Point *p, const Point *a, const Point *b,
                               double radius);
/* The meeting point of the infinite lines a1-a2 and b1-b2. */
NQ_API int nq_Point_intersectPoint(Point *out, const Point *a1, const Point *a2, const Point *b1,
                                   const Point *b2);
NQ_API int nq_Point_intersectPointWithinTol(Point *out, const Point *a1, const Point *a2,
                                            const Point *b1, const Point *b2, double tolerance);

/* Point lists: linked lists whose data are heap copies of points, owned by the list. Walk
 * them with the nq_LnkList functions; release them with nq_PointList_destroy. */
/* The points, closed by a null: nq_PointList_create(&a, &b, NULL). */
NQ_API PointList *nq_PointList_create(const Point *first, ...);
NQ_API PointList *nq_PointList_copy(PointList *list);
NQ_API int nq_PointList_destroy(PointList *list);
NQ_API int nq_PointList_insStart(PointList *list, const Point *p);
NQ_API int nq_PointList_insEnd(PointList *list, const Point *p);
NQ_API int nq_PointList_insBefore(PointList *list, const Point *p);
NQ_API int nq_PointList_insAfter(PointList *list, const Point *p);
NQ_API int nq_PointList_insNth(PointList *list, int index, const Point *p);
NQ_API int nq_PointList_modCurr(PointList *list, const Point *p);
NQ_API int nq_PointList_modNth(PointList *list, int index, const Point *p);
/* A new copy of the current point (the caller releases it with nq_Free), or null. */
NQ_API Point *nq_PointList_getCurrCopy(PointList *list);
/* Index of the first of the closest points, its copy in out; -1 for null or empty. */
NQ_API int nq_PointList_getClosestPoint(Point *out, const Point *p, PointList *list);
/* Index of the last point equal to p within tolerance, or -1; the cursor ends off the list. */
NQ_API int nq_PointList_search(PointList *list, const Point *p, double tolerance);

/* Vector lists: the same with vectors. */
NQ_API VectorList *nq_VectorList_create(const Vector *first, ...);
NQ_API VectorList *nq_VectorList_copy(VectorList *list);
NQ_API int nq_VectorList_destroy(VectorList *list);
NQ_API int nq_VectorList_insStart(VectorList *list, const Vector *v);
NQ_API int nq_VectorList_insEnd(VectorList *list, const Vector *v);
NQ_API int nq_VectorList_insBefore(VectorList *list, const Vector *v);
NQ_API int nq_VectorList_insAfter(VectorList *list, const Vector *v);
NQ_API int nq_VectorList_insNth(VectorList *list, int index, const Vector *v);
NQ_API int nq_VectorList_modCurr(VectorList *list, const Vector *v);
NQ_API int nq_VectorList_modNth(VectorList *list, int index, const Vector *v);
NQ_API Vector *nq_VectorList_getCurrCopy(VectorList *list);
NQ_API int nq_VectorList_getClosestVector(Vector *out, const Vector *v, VectorList *list);
NQ_API int nq_VectorList_search(VectorList *list, const Vector *v, double tolerance);

/* Point travel records: a point, a label and the caller's value. */
#define NQ_POINT_TRAVEL_LABEL_SIZE 514
struct PointTravelNode {
    Point point;
    nq_wchar label[NQ_POINT_TRAVEL_LABEL_SIZE];
    intptr_t value;
};

/* The label is printed from format and the arguments that follow it (cut to the label's
 * size); a null point gives null. The value comes before the format because nothing can
 * follow the variable arguments. */
NQ_API PointTravelNode *nq_PointTravelNode_create(const Point *point, intptr_t value,
                                                  const nq_wchar *format, ...);
NQ_API PointTravelList *nq_PointTravelList_create(void);
NQ_API int nq_PointTravelList_insEnd(PointTravelList *list, PointTravelNode *node);
NQ_API int nq_PointTravelList_destroy(PointTravelList *list);
/* The linked list's own walks under this family's names. */
NQ_API int nq_PointTravelList_start(PointTravelList *list);
NQ_API int nq_PointTravelList_next(PointTravelList *list);
NQ_API int nq_PointTravelList_prev(PointTravelList *list);
NQ_API PointTravelNode *nq_PointTravelList_getCurr(PointTravelList *list);
NQ_API int nq_PointTravelList_eol(PointTravelList *list);

/* A process-wide ring of 50 slots: add stores the value under the next serial number and
 * yields that number; get yields the value stored under a serial number, or 0. */
NQ_API int nq_PointTravelList_add(intptr_t value);
NQ_API intptr_t nq_PointTravelList_get(int serial);

NQ_EXTERN_C_END

#endif
