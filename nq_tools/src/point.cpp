// Points and the line geometry on them, traced under the Point bit with "Leaving" exits.
// Each operation computes into locals before writing, so the output may be an input.
#include <cmath>
#include <string>

#include "diag_trace.h"
#include "nq_point.h"
#include "nq_vector.h"
#include "text/nq_text.h"

namespace {

constexpr double kTolerance = NQ_GEOMETRY_TOLERANCE;

double dist(const Point &a, const Point &b) {
    double dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double vlength(const Vector &v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

bool tracing_point() {
    return nq_Diag_getLevel() >= 3 && (nq_Diag_getCondition() & NQ_DIAG_POINT) != 0;
}

// The test that nq_Point_between and nq_Point_inCylinder make of a point t on the segment
// a-b: a to t and a to b both non-zero, pointing the same way, and t strictly nearer to a
// than b is. So neither end point passes.
bool strictly_inside_segment(const Point &t, const Point &a, const Point &b) {
    Vector toT, toB;
    if (!nq_Vector_computeVector(&toT, &a, &t) || !nq_Vector_computeVector(&toB, &a, &b)) return false;
    Vector unitT, unitB;
    if (!nq_Vector_copyNormalize(&unitT, &toT) || !nq_Vector_copyNormalize(&unitB, &toB)) return false;
    if (!nq_Vector_equal(&unitT, &unitB)) return false;
    return vlength(toB) > vlength(toT);
}

}  // namespace

extern "C" {

NQ_API int nq_Point_set(Point *out, double x, double y, double z) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_set.", u"Leaving nq_Point_set.");
    if (!out) return 0;
    out->x = x;
    out->y = y;
    out->z = z;
    return 1;
}

NQ_API int nq_Point_setX(Point *p, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_setX.", u"Leaving nq_Point_setX.");
    if (!p) return 0;
    p->x = value;
    return 1;
}

NQ_API int nq_Point_setY(Point *p, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_setY.", u"Leaving nq_Point_setY.");
    if (!p) return 0;
    p->y = value;
    return 1;
}

NQ_API int nq_Point_setZ(Point *p, double value) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_setZ.", u"Leaving nq_Point_setZ.");
    if (!p) return 0;
    p->z = value;
    return 1;
}

NQ_API int nq_Point_getX(double *out, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_getX.", u"Leaving nq_Point_getX.");
    if (!out || !p) return 0;
    *out = p->x;
    return 1;
}

NQ_API int nq_Point_getY(double *out, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_getY.", u"Leaving nq_Point_getY.");
    if (!out || !p) return 0;
    *out = p->y;
    return 1;
}

NQ_API int nq_Point_getZ(double *out, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_getZ.", u"Leaving nq_Point_getZ.");
    if (!out || !p) return 0;
    *out = p->z;
    return 1;
}

NQ_API int nq_Point_copy(Point *out, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_copy.", u"Leaving nq_Point_copy.");
    if (!out || !p) return 0;
    *out = *p;
    return 1;
}

NQ_API int nq_Point_fromVector(Point *out, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_fromVector.", u"Leaving nq_Point_fromVector.");
    if (!out || !v) return 0;
    out->x = v->x;
    out->y = v->y;
    out->z = v->z;
    return 1;
}

NQ_API int nq_Point_add(Point *out, const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_add.", u"Leaving nq_Point_add.");
    if (!out || !a || !b) return 0;
    Point r = {a->x + b->x, a->y + b->y, a->z + b->z};
    *out = r;
    return 1;
}

NQ_API int nq_Point_subtract(Point *out, const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_subtract.", u"Leaving nq_Point_subtract.");
    if (!out || !a || !b) return 0;
    // The second operand minus the first.
    Point r = {b->x - a->x, b->y - a->y, b->z - a->z};
    *out = r;
    return 1;
}

NQ_API int nq_Point_midpoint(Point *out, const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_midpoint.", u"Leaving nq_Point_midpoint.");
    if (!out || !a || !b) return 0;
    Point r = {(a->x + b->x) / 2.0, (a->y + b->y) / 2.0, (a->z + b->z) / 2.0};
    *out = r;
    return 1;
}

NQ_API int nq_Point_distance(double *out, const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_distance.", u"Leaving nq_Point_distance.");
    if (!out || !a || !b) return 0;
    *out = dist(*a, *b);
    return 1;
}

NQ_API int nq_Point_equal(const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_equal.", u"Leaving nq_Point_equal.");
    return nq_Point_equalWithinTol(a, b, kTolerance);
}

NQ_API int nq_Point_equalWithinTol(const Point *a, const Point *b, double tolerance) {
    // Its trace names the default-tolerance function; that text is the one readers expect.
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_equal.", u"Leaving nq_Point_equal.");
    if (!a || !b) return 0;
    return std::fabs(a->x - b->x) < tolerance && std::fabs(a->y - b->y) < tolerance &&
                   std::fabs(a->z - b->z) < tolerance
               ? 1
               : 0;
}

NQ_API void nq_Point_setToTolerance(Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_setToTolerance.",
                   u"Leaving nq_Point_setToTolerance.");
    if (!p) return;
    if (std::fabs(p->x) < kTolerance) p->x = 0.0;
    if (std::fabs(p->y) < kTolerance) p->y = 0.0;
    if (std::fabs(p->z) < kTolerance) p->z = 0.0;
}

NQ_API int nq_Point_translateByVector(Point *out, const Point *p, const Vector *v, double distance) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_translateByVector.",
                   u"Leaving nq_Point_translateByVector.");
    if (!out || !p || !v) return 0;
    Vector unit = *v;  // before out is written: out may be the vector's memory
    Point start = *p;
    *out = start;
    if (!nq_Vector_normalize(&unit)) return 0;
    out->x = start.x + unit.x * distance;
    out->y = start.y + unit.y * distance;
    out->z = start.z + unit.z * distance;
    return 1;
}

NQ_API int nq_Point_translateByAngle(Point *out, const Point *p, double angle, double distance) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_translateByAngle.",
                   u"Leaving nq_Point_translateByAngle.");
    if (!out || !p) return 0;
    Point r = {p->x + std::cos(angle) * distance, p->y + std::sin(angle) * distance, p->z};
    *out = r;
    return 1;
}

NQ_API int nq_Point_fromDelimitedString(Point *out, const nq_wchar *text, const nq_wchar *delimiter) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_fromDelimitedString.",
                   u"Leaving nq_Point_fromDelimitedString.");
    if (out) out->x = out->y = out->z = 0.0;
    if (!out || !text || !delimiter) return 0;
    // Tokens as the string list's split makes them: a private copy cut by the delimiter set,
    // runs of delimiters counting as one, each token trimmed of blanks (possibly to nothing).
    std::u16string copy(text);
    nq_wchar *state = nullptr;
    std::u16string items[3];
    int count = 0;
    for (nq_wchar *token = nqt::tok_r(copy.data(), delimiter, &state); token;
         token = nqt::tok_r(nullptr, delimiter, &state)) {
        if (count < 3) {
            std::u16string item(token);
            size_t first = 0, last = item.size();
            while (first < last && nqt::isspace(item[first])) ++first;
            while (last > first && nqt::isspace(item[last - 1])) --last;
            items[count] = item.substr(first, last - first);
        }
        ++count;
    }
    if (count < 2) return 0;
    out->x = nqt::tof(items[0].c_str());
    out->y = nqt::tof(items[1].c_str());
    if (count > 2) out->z = nqt::tof(items[2].c_str());
    return 1;
}

NQ_API int nq_Point_colinear(const Point *a, const Point *b, const Point *c) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_colinear.", u"Leaving nq_Point_colinear.");
    return nq_Point_colinearWithinTol(a, b, c, kTolerance);
}

NQ_API int nq_Point_colinearWithinTol(const Point *a, const Point *b, const Point *c, double tolerance) {
    // Its trace names the default-tolerance function; that text is the one readers expect.
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_colinear.", u"Leaving nq_Point_colinear.");
    if (!a || !b || !c) return 0;
    // Twice the triangle's area projected on each plane, so the test tightens with distance.
    double xy = (c->x - a->x) * (a->y - b->y) - (c->y - a->y) * (a->x - b->x);
    if (!(std::fabs(xy) < tolerance)) return 0;
    double yz = (c->y - a->y) * (a->z - b->z) - (c->z - a->z) * (a->y - b->y);
    if (!(std::fabs(yz) < tolerance)) return 0;
    double xz = (c->x - a->x) * (a->z - b->z) - (c->z - a->z) * (a->x - b->x);
    if (!(std::fabs(xz) < tolerance)) return 0;
    return 1;
}

NQ_API int nq_Point_colinearWithinTol_v2(const Point *a, const Point *b, const Point *c,
                                         double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_colinearWithinTol_v2.",
                   u"Leaving nq_Point_colinearWithinTol_v2.");
    if (!a || !b || !c) return 0;
    auto d = [](const Point &p, const Point &q) {
        return std::sqrt(std::pow(q.x - p.x, 2) + std::pow(q.y - p.y, 2) + std::pow(q.z - p.z, 2));
    };
    // True only when a lies between b and c, not for any three points on one line.
    return std::fabs(d(*c, *b) - (d(*a, *b) + d(*c, *a))) < tolerance ? 1 : 0;
}

NQ_API int nq_Point_between(const Point *p, const Point *a, const Point *b, int onLineOnly) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_between.", u"Leaving nq_Point_between.");
    if (!p || !a || !b) return 0;
    Point t;
    if (nq_Point_colinear(p, a, b)) {
        t = *p;
    } else if (!onLineOnly) {
        if (!nq_Point_projectOntoLine(&t, p, a, b)) return 0;
    } else {
        return 0;
    }
    return strictly_inside_segment(t, *a, *b) ? 1 : 0;
}

NQ_API int nq_Point_projectOntoLine(Point *out, const Point *p, const Point *a, const Point *b) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_projectOntoLine.",
                   u"Leaving nq_Point_projectOntoLine.");
    if (!out || !p || !a || !b) return 0;
    Vector u, w;
    // p equal to a fails here, although its foot would be a itself.
    if (!nq_Vector_computeVector(&u, a, b) || !nq_Vector_computeVector(&w, a, p)) return 0;
    double mu = vlength(u), mw = vlength(w);
    if (!(mu > kTolerance) || !(mw > kTolerance)) return 0;
    double along = (u.x * w.x + u.y * w.y + u.z * w.z) / (mu * mw) * dist(*a, *p);
    Point foot;
    if (!nq_Point_translateByVector(&foot, a, &u, along)) return 0;
    *out = foot;
    if (tracing_point()) {
        nq_wchar *buffer = nq_Diag_getDiagMsgBuf();
        int length = nqt::format(buffer, NQ_DIAG_MSGBUF_SIZE, u"Projection point is %lf, %lf, %lf\n",
                                 foot.x, foot.y, foot.z);
        nq_Diag_putOutput(length, buffer, NQ_TRACE_FILE, __LINE__);
    }
    return 1;
}

NQ_API int nq_Point_getOrthoVector(Vector *out, const Point *a, const Point *b, const Point *c) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_getOrthoVector.",
                   u"Leaving nq_Point_getOrthoVector.");
    if (!out || !a || !b || !c) return 0;
    Point foot;
    // The line is taken from b to a.
    if (!nq_Point_projectOntoLine(&foot, c, b, a)) return 0;
    return nq_Vector_computeVector(out, &foot, c);
}

NQ_API int nq_Point_inCylinder(double *outDistance, const Point *p, const Point *a, const Point *b,
                               double radius) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_inCylinder.", u"Leaving nq_Point_inCylinder.");
    if (!p || !a || !b) return 0;
    Point foot;
    if (!nq_Point_projectOntoLine(&foot, p, a, b)) return 0;
    if (!strictly_inside_segment(foot, *a, *b)) return 0;
    double d = dist(*p, foot);
    // Not strict, unlike every other comparison of this family.
    if (!(radius >= d)) return 0;
    if (outDistance) *outDistance = d;
    return 1;
}

NQ_API int nq_Point_intersectPoint(Point *out, const Point *a1, const Point *a2, const Point *b1,
                                   const Point *b2) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_intersectPoint.",
                   u"Leaving nq_Point_intersectPoint.");
    return nq_Point_intersectPointWithinTol(out, a1, a2, b1, b2, kTolerance);
}

NQ_API int nq_Point_intersectPointWithinTol(Point *out, const Point *a1, const Point *a2,
                                            const Point *b1, const Point *b2, double tolerance) {
    // Its trace names the default-tolerance function; that text is the one readers expect.
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_Point_intersectPoint.",
                   u"Leaving nq_Point_intersectPoint.");
    if (!out || !a1 || !a2 || !b1 || !b2) return 0;
    Point A1 = *a1, A2 = *a2, B1 = *b1;  // out may be any of the points
    Vector u, v;
    int haveU = nq_Vector_computeVector(&u, &A1, &A2);
    int haveV = nq_Vector_computeVector(&v, &B1, b2);
    if (haveU && haveV && nq_Vector_parallelWithinTolerance(&u, &v, tolerance)) return 0;
    if (nq_Point_equalWithinTol(&A1, &B1, tolerance) || nq_Point_equalWithinTol(&A1, b2, tolerance)) {
        *out = A1;
        return 1;
    }
    if (nq_Point_equalWithinTol(&A2, &B1, tolerance) || nq_Point_equalWithinTol(&A2, b2, tolerance)) {
        *out = A2;
        return 1;
    }
    // Two equal points make no first line; anything would pass the final test then.
    if (!nq_Vector_normalize(&u)) return 0;
    Vector toB1 = {B1.x - A1.x, B1.y - A1.y, B1.z - A1.z};
    double t = u.x * toB1.x + u.y * toB1.y + u.z * toB1.z;
    Point foot;  // of b1 on the first line
    nq_Point_translateByVector(&foot, &A1, &u, t);
    Vector d;
    nq_Vector_computeVector(&d, &B1, &foot);
    double e = d.x * v.x + d.y * v.y + d.z * v.z;
    double dl = vlength(d);
    double step = std::fabs(e) < kTolerance ? dl : dl * dl * vlength(v) / e;
    nq_Point_translateByVector(out, &B1, &v, step);
    // Skew lines fail here, with the candidate left in out; the point is not limited to
    // the segments.
    return nq_Point_colinearWithinTol(&A1, &A2, out, tolerance);
}

}  // extern "C"
