// The Vector family: arithmetic, the strict tolerance tests, degenerate input and tracing.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry_support.h"
#include "nq_tls20an.h"

using geotest::near;

namespace {

constexpr double kPi = 3.141592653589793;

Vector V(double x, double y, double z) { return Vector{x, y, z}; }
Point P(double x, double y, double z) { return Point{x, y, z}; }

}  // namespace

TEST(Vector, SetAndComponentSetters) {
    Vector v = V(9, 9, 9);
    EXPECT_EQ(nq_Vector_set(&v, 1, 2, 3), 1);
    EXPECT_TRUE(near(v, 1, 2, 3));
    EXPECT_EQ(nq_Vector_setX(&v, -4), 1);
    EXPECT_EQ(nq_Vector_setY(&v, 5.5), 1);
    EXPECT_EQ(nq_Vector_setZ(&v, 0.25), 1);
    EXPECT_TRUE(near(v, -4, 5.5, 0.25));
}

TEST(Vector, ComponentGetters) {
    Vector v = V(1, -2, 3);
    double x = 0, y = 0, z = 0;
    EXPECT_EQ(nq_Vector_getX(&x, &v), 1);
    EXPECT_EQ(nq_Vector_getY(&y, &v), 1);
    EXPECT_EQ(nq_Vector_getZ(&z, &v), 1);
    EXPECT_EQ(x, 1);
    EXPECT_EQ(y, -2);
    EXPECT_EQ(z, 3);
}

TEST(Vector, CopyAndFromPoint) {
    Vector a = V(1, 2, 3), b = V(0, 0, 0);
    EXPECT_EQ(nq_Vector_copy(&b, &a), 1);
    EXPECT_TRUE(near(b, 1, 2, 3));
    Point p = P(4, 5, 6);
    EXPECT_EQ(nq_Vector_fromPoint(&b, &p), 1);
    EXPECT_TRUE(near(b, 4, 5, 6));
}

TEST(Vector, FromNtupleReadsFirstThreeElements) {
    Ntuple *t = nq_Ntuple_create(4);
    nq_Ntuple_setElement(t, 0, 1);
    nq_Ntuple_setElement(t, 1, 2);
    nq_Ntuple_setElement(t, 2, 3);
    nq_Ntuple_setElement(t, 3, 4);
    Vector v = V(0, 0, 0);
    EXPECT_EQ(nq_Vector_fromNtuple(&v, t), 1);
    EXPECT_TRUE(near(v, 1, 2, 3));
    nq_Ntuple_destroy(t);
}

TEST(Vector, FromNtupleOfTwoFailsAndWritesNothing) {
    Ntuple *t = nq_Ntuple_create(2);
    nq_Ntuple_setElement(t, 0, 1);
    Vector v = V(7, 8, 9);
    EXPECT_EQ(nq_Vector_fromNtuple(&v, t), 0);
    EXPECT_TRUE(near(v, 7, 8, 9));
    nq_Ntuple_destroy(t);
}

TEST(Vector, AddAndAliasing) {
    Vector a = V(1, 2, 3), b = V(10, 20, 30), out;
    EXPECT_EQ(nq_Vector_add(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 11, 22, 33));
    EXPECT_EQ(nq_Vector_add(&a, &a, &a), 1);
    EXPECT_TRUE(near(a, 2, 4, 6));
}

TEST(Vector, SubtractIsSecondMinusFirst) {
    Vector a = V(1, 0, 0), b = V(3, 0, 0), out;
    EXPECT_EQ(nq_Vector_subtract(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 2, 0, 0));
}

TEST(Vector, SubtractIntoEitherOperand) {
    Vector a = V(1, 2, 3), b = V(4, 6, 8);
    EXPECT_EQ(nq_Vector_subtract(&a, &a, &b), 1);
    EXPECT_TRUE(near(a, 3, 4, 5));
    a = V(1, 2, 3);
    EXPECT_EQ(nq_Vector_subtract(&b, &a, &b), 1);
    EXPECT_TRUE(near(b, 3, 4, 5));
}

TEST(Vector, NegateAndScale) {
    Vector v = V(1, -2, 3), out;
    EXPECT_EQ(nq_Vector_negate(&out, &v), 1);
    EXPECT_TRUE(near(out, -1, 2, -3));
    EXPECT_EQ(nq_Vector_scale(&out, &v, 2.5), 1);
    EXPECT_TRUE(near(out, 2.5, -5, 7.5));
    EXPECT_EQ(nq_Vector_scale(&v, &v, -1), 1);
    EXPECT_TRUE(near(v, -1, 2, -3));
}

TEST(Vector, DotProduct) {
    Vector a = V(1, 2, 3), b = V(4, -5, 6);
    double d = 0;
    EXPECT_EQ(nq_Vector_dotProduct(&d, &a, &b), 1);
    EXPECT_DOUBLE_EQ(d, 12.0);
}

TEST(Vector, CrossProductIsRightHanded) {
    Vector x = V(1, 0, 0), y = V(0, 1, 0), z = V(0, 0, 1), out;
    EXPECT_EQ(nq_Vector_crossProduct(&out, &x, &y), 1);
    EXPECT_TRUE(near(out, 0, 0, 1));
    EXPECT_EQ(nq_Vector_crossProduct(&out, &y, &z), 1);
    EXPECT_TRUE(near(out, 1, 0, 0));
    EXPECT_EQ(nq_Vector_crossProduct(&out, &z, &x), 1);
    EXPECT_TRUE(near(out, 0, 1, 0));
    Vector a = V(1, 2, 3), b = V(4, 5, 6);
    EXPECT_EQ(nq_Vector_crossProduct(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, -3, 6, -3));
}

TEST(Vector, CrossProductIntoAnOperand) {
    Vector a = V(1, 2, 3), b = V(4, 5, 6);
    EXPECT_EQ(nq_Vector_crossProduct(&a, &a, &b), 1);
    EXPECT_TRUE(near(a, -3, 6, -3));
    a = V(1, 2, 3);
    EXPECT_EQ(nq_Vector_crossProduct(&b, &a, &b), 1);
    EXPECT_TRUE(near(b, -3, 6, -3));
}

TEST(Vector, Magnitude) {
    Vector v = V(3, 4, 12);
    double m = 0;
    EXPECT_EQ(nq_Vector_magnitude(&m, &v), 1);
    EXPECT_DOUBLE_EQ(m, 13.0);
}

TEST(Vector, NormalizeScalesToUnitLength) {
    Vector v = V(3, 0, 4);
    EXPECT_EQ(nq_Vector_normalize(&v), 1);
    EXPECT_TRUE(near(v, 0.6, 0, 0.8));
}

TEST(Vector, NormalizeOfZeroGivesZeroAndLeavesIt) {
    Vector v = V(0, 0, 0);
    EXPECT_EQ(nq_Vector_normalize(&v), 0);
    EXPECT_TRUE(near(v, 0, 0, 0, 0));
}

TEST(Vector, NormalizeBelowToleranceFails) {
    Vector v = V(0.000001, 0, 0);
    EXPECT_EQ(nq_Vector_normalize(&v), 0);
    EXPECT_EQ(v.x, 0.000001);
    // A length of exactly the tolerance is not above it.
    Vector w = V(1e-05, 0, 0);
    EXPECT_EQ(nq_Vector_normalize(&w), 0);
    EXPECT_EQ(w.x, 1e-05);
    Vector u = V(2e-05, 0, 0);
    EXPECT_EQ(nq_Vector_normalize(&u), 1);
    EXPECT_TRUE(near(u, 1, 0, 0));
}

TEST(Vector, CopyNormalizeLeavesSourceAndKeepsCopyOnFailure) {
    Vector v = V(0, 5, 0), out;
    EXPECT_EQ(nq_Vector_copyNormalize(&out, &v), 1);
    EXPECT_TRUE(near(out, 0, 1, 0));
    EXPECT_TRUE(near(v, 0, 5, 0));
    Vector zero = V(0, 0, 0);
    out = V(9, 9, 9);
    EXPECT_EQ(nq_Vector_copyNormalize(&out, &zero), 0);
    EXPECT_TRUE(near(out, 0, 0, 0, 0));
}

TEST(Vector, AngleRangesFromZeroToPi) {
    Vector x = V(1, 0, 0), y = V(0, 2, 0), mx = V(-1, 0, 0);
    double a = -1;
    EXPECT_EQ(nq_Vector_angle(&a, &x, &y), 1);
    EXPECT_NEAR(a, kPi / 2, 1e-12);
    EXPECT_EQ(nq_Vector_angle(&a, &x, &mx), 1);
    EXPECT_NEAR(a, kPi, 1e-12);
    EXPECT_EQ(nq_Vector_angle(&a, &y, &x), 1);
    EXPECT_NEAR(a, kPi / 2, 1e-12);  // no sign
}

TEST(Vector, AngleOfRoundedCosineIsClamped) {
    // 6 / (sqrt 3 * sqrt 12) rounds to just above 1: acos would have no value.
    Vector a = V(1, 1, 1), b = V(2, 2, 2), c = V(-2, -2, -2);
    double angle = -1;
    EXPECT_EQ(nq_Vector_angle(&angle, &a, &b), 1);
    EXPECT_EQ(angle, 0.0);
    EXPECT_EQ(nq_Vector_angle(&angle, &a, &c), 1);
    EXPECT_EQ(angle, 3.141592653589793);
}

TEST(Vector, AngleWithShortVectorFailsAndWritesNothing) {
    Vector x = V(1, 0, 0), tiny = V(1e-05, 0, 0), zero = V(0, 0, 0);
    double angle = 42;
    EXPECT_EQ(nq_Vector_angle(&angle, &x, &tiny), 0);
    EXPECT_EQ(nq_Vector_angle(&angle, &zero, &x), 0);
    EXPECT_EQ(angle, 42);
}

TEST(Vector, ComputeVectorGoesFromFirstToSecondPoint) {
    Point p1 = P(1, 1, 1), p2 = P(4, 5, 1);
    Vector v;
    EXPECT_EQ(nq_Vector_computeVector(&v, &p1, &p2), 1);
    EXPECT_TRUE(near(v, 3, 4, 0));
}

TEST(Vector, ComputeVectorOfEqualPointsFailsWithZeroVector) {
    Point p = P(1, 2, 3);
    Vector v = V(9, 9, 9);
    EXPECT_EQ(nq_Vector_computeVector(&v, &p, &p), 0);
    EXPECT_TRUE(near(v, 0, 0, 0, 0));
    // Any length above 0.0 passes, however small.
    Point q = P(1, 2, 3.000000001);
    EXPECT_EQ(nq_Vector_computeVector(&v, &p, &q), 1);
}

TEST(Vector, ComputeNormal) {
    Point p1 = P(1, 1, 1), p2 = P(1, 1, 5);
    Vector v;
    EXPECT_EQ(nq_Vector_computeNormal(&v, &p1, &p2), 1);
    EXPECT_TRUE(near(v, 0, 0, 1));
    EXPECT_EQ(nq_Vector_computeNormal(&v, &p1, &p1), 0);
    Point close = P(1, 1, 1.000001);
    EXPECT_EQ(nq_Vector_computeNormal(&v, &p1, &close), 0);
}

TEST(Vector, ComputeOrthovecAndOrthonorm) {
    Point p1 = P(1, 1, 0), p2 = P(3, 1, 0), p3 = P(1, 4, 0);
    Vector v;
    EXPECT_EQ(nq_Vector_computeOrthovec(&v, &p1, &p2, &p3), 1);
    EXPECT_TRUE(near(v, 0, 0, 6));
    EXPECT_EQ(nq_Vector_computeOrthonorm(&v, &p1, &p2, &p3), 1);
    EXPECT_TRUE(near(v, 0, 0, 1));
    // Swapping the points turns the normal over.
    EXPECT_EQ(nq_Vector_computeOrthonorm(&v, &p1, &p3, &p2), 1);
    EXPECT_TRUE(near(v, 0, 0, -1));
}

TEST(Vector, OrthovecOfPointsOnALineIsZeroAndOrthonormFails) {
    Point p1 = P(0, 0, 0), p2 = P(1, 1, 1), p3 = P(2, 2, 2);
    Vector v = V(9, 9, 9);
    EXPECT_EQ(nq_Vector_computeOrthovec(&v, &p1, &p2, &p3), 1);
    EXPECT_TRUE(near(v, 0, 0, 0));
    v = V(9, 9, 9);
    EXPECT_EQ(nq_Vector_computeOrthonorm(&v, &p1, &p2, &p3), 0);
    EXPECT_TRUE(near(v, 9, 9, 9, 0));
    EXPECT_EQ(nq_Vector_computeOrthovec(&v, &p1, &p1, &p3), 0);
}

TEST(Vector, GetOrthoVectorIsTheUnitPartAcrossTheFirst) {
    Vector a = V(2, 0, 0), b = V(3, 3, 0), out;
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 0, std::sqrt(0.5), 0));
    Vector c = V(-1, 0, 1);
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &a, &c), 1);
    EXPECT_TRUE(near(out, 0, 0, std::sqrt(0.5)));
    double dot;
    nq_Vector_dotProduct(&dot, &out, &a);
    EXPECT_NEAR(dot, 0, 1e-12);
}

TEST(Vector, GetOrthoVectorOfParallelOrZeroVectorsFails) {
    Vector a = V(1, 0, 0), same = V(5, 0, 0), back = V(-2, 0, 0), zero = V(0, 0, 0), out;
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &a, &same), 0);
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &a, &back), 0);
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &zero, &a), 0);
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &a, &zero), 0);
}

TEST(Vector, EqualIsStrictAtTheTolerance) {
    Vector a = V(0, 0, 0), b = V(1e-05, 0, 0), c = V(0, 0, 0.9e-05);
    EXPECT_EQ(nq_Vector_equal(&a, &b), 0);
    EXPECT_EQ(nq_Vector_equal(&a, &c), 1);
    EXPECT_EQ(nq_Vector_equal(&a, &a), 1);
    Vector d = V(0, -1e-05, 0);
    EXPECT_EQ(nq_Vector_equal(&a, &d), 0);
}

TEST(Vector, EqualWithinTolUsesTheGivenTolerance) {
    Vector a = V(1, 2, 3), b = V(1.4, 2, 3);
    EXPECT_EQ(nq_Vector_equalWithinTol(&a, &b, 0.5), 1);
    EXPECT_EQ(nq_Vector_equalWithinTol(&a, &b, 0.25), 0);
    Vector c = V(0, 0, 0), d = V(0, 0.5, 0);
    EXPECT_EQ(nq_Vector_equalWithinTol(&c, &d, 0.5), 0);
}

TEST(Vector, OrthogonalUsesTheRawDotProduct) {
    Vector x = V(1, 0, 0), y = V(0, 1, 0);
    EXPECT_EQ(nq_Vector_orthogonal(&x, &y), 1);
    Vector almost = V(9e-06, 1, 0);
    EXPECT_EQ(nq_Vector_orthogonal(&x, &almost), 1);
    // The same angle between longer vectors no longer passes.
    Vector longX = V(10, 0, 0);
    EXPECT_EQ(nq_Vector_orthogonal(&longX, &almost), 0);
    Vector edge = V(1e-05, 1, 0);
    EXPECT_EQ(nq_Vector_orthogonal(&x, &edge), 0);
    EXPECT_EQ(nq_Vector_orthogonalWithinTolerance(&longX, &almost, 1e-03), 1);
}

TEST(Vector, ParallelCountsAntiparallelAndZero) {
    Vector x = V(1, 0, 0), back = V(-3, 0, 0), zero = V(0, 0, 0), y = V(0, 1, 0);
    EXPECT_EQ(nq_Vector_parallel(&x, &back), 1);
    EXPECT_EQ(nq_Vector_parallel(&x, &y), 0);
    EXPECT_EQ(nq_Vector_parallel(&zero, &y), 1);
    EXPECT_EQ(nq_Vector_orthogonal(&zero, &y), 1);
    Vector tilt = V(1, 1e-05, 0);
    EXPECT_EQ(nq_Vector_parallel(&x, &tilt), 0);  // |x cross tilt| is exactly the tolerance
    EXPECT_EQ(nq_Vector_parallelWithinTolerance(&x, &tilt, 2e-05), 1);
}

TEST(Vector, HorizontalAndVertical) {
    Vector down = V(0, 0, -5), flat = V(3, 4, 0), zero = V(0, 0, 0), slope = V(1, 0, 1);
    EXPECT_EQ(nq_Vector_isVertical(&down), 1);
    EXPECT_EQ(nq_Vector_isHorizontal(&down), 0);
    EXPECT_EQ(nq_Vector_isHorizontal(&flat), 1);
    EXPECT_EQ(nq_Vector_isVertical(&flat), 0);
    EXPECT_EQ(nq_Vector_isHorizontal(&zero), 1);
    EXPECT_EQ(nq_Vector_isVertical(&zero), 1);
    EXPECT_EQ(nq_Vector_isHorizontal(&slope), 0);
    EXPECT_EQ(nq_Vector_isVertical(&slope), 0);
}

TEST(Vector, NullArgumentsGiveZeroAndWriteNothing) {
    Vector v = V(1, 2, 3), out = V(7, 7, 7);
    Point p = P(1, 1, 1);
    double d = 5;
    EXPECT_EQ(nq_Vector_set(nullptr, 1, 2, 3), 0);
    EXPECT_EQ(nq_Vector_setX(nullptr, 1), 0);
    EXPECT_EQ(nq_Vector_setY(nullptr, 1), 0);
    EXPECT_EQ(nq_Vector_setZ(nullptr, 1), 0);
    EXPECT_EQ(nq_Vector_getX(nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_getY(&d, nullptr), 0);
    EXPECT_EQ(nq_Vector_getZ(&d, nullptr), 0);
    EXPECT_EQ(nq_Vector_copy(&out, nullptr), 0);
    EXPECT_EQ(nq_Vector_copy(nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_fromPoint(&out, nullptr), 0);
    EXPECT_EQ(nq_Vector_fromNtuple(&out, nullptr), 0);
    EXPECT_EQ(nq_Vector_add(&out, &v, nullptr), 0);
    EXPECT_EQ(nq_Vector_subtract(&out, nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_negate(nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_scale(&out, nullptr, 2), 0);
    EXPECT_EQ(nq_Vector_dotProduct(nullptr, &v, &v), 0);
    EXPECT_EQ(nq_Vector_crossProduct(&out, &v, nullptr), 0);
    EXPECT_EQ(nq_Vector_magnitude(nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_normalize(nullptr), 0);
    EXPECT_EQ(nq_Vector_copyNormalize(&out, nullptr), 0);
    EXPECT_EQ(nq_Vector_angle(&d, nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_computeVector(&out, &p, nullptr), 0);
    EXPECT_EQ(nq_Vector_computeNormal(nullptr, &p, &p), 0);
    EXPECT_EQ(nq_Vector_computeOrthovec(&out, &p, &p, nullptr), 0);
    EXPECT_EQ(nq_Vector_computeOrthonorm(&out, nullptr, &p, &p), 0);
    EXPECT_EQ(nq_Vector_getOrthoVector(&out, &v, nullptr), 0);
    EXPECT_EQ(nq_Vector_equal(&v, nullptr), 0);
    EXPECT_EQ(nq_Vector_equalWithinTol(nullptr, &v, 1), 0);
    EXPECT_EQ(nq_Vector_orthogonal(nullptr, &v), 0);
    EXPECT_EQ(nq_Vector_orthogonalWithinTolerance(&v, nullptr, 1), 0);
    EXPECT_EQ(nq_Vector_parallel(&v, nullptr), 0);
    EXPECT_EQ(nq_Vector_parallelWithinTolerance(nullptr, &v, 1), 0);
    EXPECT_EQ(nq_Vector_isHorizontal(nullptr), 0);
    EXPECT_EQ(nq_Vector_isVertical(nullptr), 0);
    EXPECT_TRUE(near(out, 7, 7, 7, 0));
    EXPECT_EQ(d, 5);
}

TEST(Vector, EveryFunctionTracesEnteringAndLeaving) {
    Vector a = V(1, 0, 0), b = V(0, 1, 0), out;
    Point p1 = P(0, 0, 0), p2 = P(1, 0, 0), p3 = P(0, 1, 0);
    double d;
    Ntuple *t = nq_Ntuple_create(3);
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_Vector_set", [&] { nq_Vector_set(&out, 1, 2, 3); }},
        {"nq_Vector_setX", [&] { nq_Vector_setX(&out, 1); }},
        {"nq_Vector_setY", [&] { nq_Vector_setY(&out, 1); }},
        {"nq_Vector_setZ", [&] { nq_Vector_setZ(&out, 1); }},
        {"nq_Vector_getX", [&] { nq_Vector_getX(&d, &a); }},
        {"nq_Vector_getY", [&] { nq_Vector_getY(&d, &a); }},
        {"nq_Vector_getZ", [&] { nq_Vector_getZ(&d, &a); }},
        {"nq_Vector_copy", [&] { nq_Vector_copy(&out, &a); }},
        {"nq_Vector_fromPoint", [&] { nq_Vector_fromPoint(&out, &p1); }},
        {"nq_Vector_fromNtuple", [&] { nq_Vector_fromNtuple(&out, t); }},
        {"nq_Vector_add", [&] { nq_Vector_add(&out, &a, &b); }},
        {"nq_Vector_subtract", [&] { nq_Vector_subtract(&out, &a, &b); }},
        {"nq_Vector_negate", [&] { nq_Vector_negate(&out, &a); }},
        {"nq_Vector_scale", [&] { nq_Vector_scale(&out, &a, 2); }},
        {"nq_Vector_dotProduct", [&] { nq_Vector_dotProduct(&d, &a, &b); }},
        {"nq_Vector_crossProduct", [&] { nq_Vector_crossProduct(&out, &a, &b); }},
        {"nq_Vector_magnitude", [&] { nq_Vector_magnitude(&d, &a); }},
        {"nq_Vector_normalize", [&] { out = a; nq_Vector_normalize(&out); }},
        {"nq_Vector_copyNormalize", [&] { nq_Vector_copyNormalize(&out, &a); }},
        {"nq_Vector_angle", [&] { nq_Vector_angle(&d, &a, &b); }},
        {"nq_Vector_computeVector", [&] { nq_Vector_computeVector(&out, &p1, &p2); }},
        {"nq_Vector_computeNormal", [&] { nq_Vector_computeNormal(&out, &p1, &p2); }},
        {"nq_Vector_computeOrthovec", [&] { nq_Vector_computeOrthovec(&out, &p1, &p2, &p3); }},
        {"nq_Vector_computeOrthonorm", [&] { nq_Vector_computeOrthonorm(&out, &p1, &p2, &p3); }},
        {"nq_Vector_getOrthoVector", [&] { nq_Vector_getOrthoVector(&out, &a, &b); }},
        {"nq_Vector_equal", [&] { nq_Vector_equal(&a, &b); }},
        {"nq_Vector_equalWithinTol", [&] { nq_Vector_equalWithinTol(&a, &b, 1); }},
        {"nq_Vector_orthogonal", [&] { nq_Vector_orthogonal(&a, &b); }},
        {"nq_Vector_orthogonalWithinTolerance", [&] { nq_Vector_orthogonalWithinTolerance(&a, &b, 1); }},
        {"nq_Vector_parallel", [&] { nq_Vector_parallel(&a, &b); }},
        {"nq_Vector_parallelWithinTolerance", [&] { nq_Vector_parallelWithinTolerance(&a, &b, 1); }},
        {"nq_Vector_isHorizontal", [&] { nq_Vector_isHorizontal(&a); }},
        {"nq_Vector_isVertical", [&] { nq_Vector_isVertical(&a); }},
    };
    for (const Case &c : cases)
        geotest::expect_frame(NQ_DIAG_VECTOR, "vector.cpp", std::string("Entering ") + c.name + ".",
                              std::string("Leaving ") + c.name + ".", c.call);
    nq_Ntuple_destroy(t);
}

TEST(Vector, TracesEvenForNullArguments) {
    geotest::expect_frame(NQ_DIAG_VECTOR, "vector.cpp", "Entering nq_Vector_add.", "Leaving nq_Vector_add.",
                          [] { nq_Vector_add(nullptr, nullptr, nullptr); });
}

TEST(Vector, NoTraceBelowLevelThreeOrWithoutTheBit) {
    Vector a = V(1, 2, 3), out;
    geotest::expect_silent(NQ_DIAG_VECTOR, 2, [&] { nq_Vector_copy(&out, &a); });
    geotest::expect_silent(NQ_DIAG_POINT | NQ_DIAG_MATRIX | NQ_DIAG_NTUPLE, 3, [&] { nq_Vector_copy(&out, &a); });
}

TEST(Vector, NestedCallsTraceInsideTheFrame) {
    Point p1 = P(0, 0, 0), p2 = P(0, 0, 2);
    Vector out;
    geotest::TraceCapture capture(NQ_DIAG_VECTOR);
    nq_Vector_computeNormal(&out, &p1, &p2);
    auto lines = capture.lines();
    std::vector<std::string> messages;
    for (auto &l : lines) messages.push_back(l.message);
    EXPECT_EQ(messages, (std::vector<std::string>{
                            "Entering nq_Vector_computeNormal.", "Entering nq_Vector_computeVector.",
                            "Leaving nq_Vector_computeVector.", "Entering nq_Vector_normalize.",
                            "Leaving nq_Vector_normalize.", "Leaving nq_Vector_computeNormal."}));
}
