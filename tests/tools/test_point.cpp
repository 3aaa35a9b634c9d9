// The Point family: coordinates, the line geometry (colinearity, betweenness, projection,
// intersection), delimited text, and the trace with its odd literals and projection message.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry_support.h"
#include "nq_tls20an.h"

using geotest::near;

namespace {

Vector V(double x, double y, double z) { return Vector{x, y, z}; }
Point P(double x, double y, double z) { return Point{x, y, z}; }

}  // namespace

TEST(Point, SetGetAndComponentSetters) {
    Point p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_set(&p, 1, 2, 3), 1);
    EXPECT_TRUE(near(p, 1, 2, 3));
    EXPECT_EQ(nq_Point_setX(&p, 4), 1);
    EXPECT_EQ(nq_Point_setY(&p, 5), 1);
    EXPECT_EQ(nq_Point_setZ(&p, 6), 1);
    double x, y, z;
    EXPECT_EQ(nq_Point_getX(&x, &p), 1);
    EXPECT_EQ(nq_Point_getY(&y, &p), 1);
    EXPECT_EQ(nq_Point_getZ(&z, &p), 1);
    EXPECT_EQ(x, 4);
    EXPECT_EQ(y, 5);
    EXPECT_EQ(z, 6);
}

TEST(Point, CopyAndFromVector) {
    Point a = P(1, 2, 3), b;
    EXPECT_EQ(nq_Point_copy(&b, &a), 1);
    EXPECT_TRUE(near(b, 1, 2, 3));
    Vector v = V(-1, -2, -3);
    EXPECT_EQ(nq_Point_fromVector(&b, &v), 1);
    EXPECT_TRUE(near(b, -1, -2, -3));
}

TEST(Point, AddAndMidpoint) {
    Point a = P(1, 2, 3), b = P(3, 4, 5), out;
    EXPECT_EQ(nq_Point_add(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 4, 6, 8));
    EXPECT_EQ(nq_Point_midpoint(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 2, 3, 4));
    EXPECT_EQ(nq_Point_midpoint(&a, &a, &b), 1);
    EXPECT_TRUE(near(a, 2, 3, 4));
}

TEST(Point, SubtractIsSecondMinusFirst) {
    Point a = P(1, 1, 1), b = P(4, 1, 1), out;
    EXPECT_EQ(nq_Point_subtract(&out, &a, &b), 1);
    EXPECT_TRUE(near(out, 3, 0, 0));
    EXPECT_EQ(nq_Point_subtract(&b, &a, &b), 1);
    EXPECT_TRUE(near(b, 3, 0, 0));
}

TEST(Point, Distance) {
    Point a = P(1, 2, 3), b = P(4, 6, 3);
    double d = 0;
    EXPECT_EQ(nq_Point_distance(&d, &a, &b), 1);
    EXPECT_DOUBLE_EQ(d, 5.0);
}

TEST(Point, EqualIsStrictAtTheTolerance) {
    Point a = P(0, 0, 0), b = P(0, 1e-05, 0), c = P(0, 0, -0.9e-05);
    EXPECT_EQ(nq_Point_equal(&a, &b), 0);
    EXPECT_EQ(nq_Point_equal(&a, &c), 1);
    EXPECT_EQ(nq_Point_equalWithinTol(&a, &b, 2e-05), 1);
    EXPECT_EQ(nq_Point_equalWithinTol(&a, &c, 0.5e-05), 0);
}

TEST(Point, SetToToleranceZeroesOnlySmallCoordinates) {
    Point p = P(0.9e-05, -0.9e-05, 1e-05);
    nq_Point_setToTolerance(&p);
    EXPECT_EQ(p.x, 0.0);
    EXPECT_EQ(p.y, 0.0);
    EXPECT_EQ(p.z, 1e-05);
    Point q = P(5, -3, 2e-06);
    nq_Point_setToTolerance(&q);
    EXPECT_TRUE(near(q, 5, -3, 0, 0));
    nq_Point_setToTolerance(nullptr);  // nothing happens
}

TEST(Point, TranslateByVectorUsesTheUnitVector) {
    Point p = P(1, 1, 1), out;
    Vector v = V(0, 0, 10);
    EXPECT_EQ(nq_Point_translateByVector(&out, &p, &v, 2.5), 1);
    EXPECT_TRUE(near(out, 1, 1, 3.5));
    EXPECT_EQ(nq_Point_translateByVector(&out, &p, &v, -1), 1);
    EXPECT_TRUE(near(out, 1, 1, 0));
    EXPECT_EQ(nq_Point_translateByVector(&p, &p, &v, 1), 1);
    EXPECT_TRUE(near(p, 1, 1, 2));
}

TEST(Point, TranslateByZeroVectorLeavesThePointInOutAndFails) {
    Point p = P(1, 2, 3), out = P(9, 9, 9);
    Vector zero = V(0, 0, 0);
    EXPECT_EQ(nq_Point_translateByVector(&out, &p, &zero, 5), 0);
    EXPECT_TRUE(near(out, 1, 2, 3, 0));
}

TEST(Point, TranslateByAngleMovesInTheXYPlane) {
    Point p = P(1, 1, 7), out;
    EXPECT_EQ(nq_Point_translateByAngle(&out, &p, M_PI / 2, 2), 1);
    EXPECT_TRUE(near(out, 1, 3, 7));
    EXPECT_EQ(nq_Point_translateByAngle(&out, &p, M_PI, 1), 1);
    EXPECT_TRUE(near(out, 0, 1, 7));
}

TEST(Point, FromDelimitedStringReadsThreeNumbers) {
    Point p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"1.5,-2,3e2", u","), 1);
    EXPECT_TRUE(near(p, 1.5, -2, 300));
}

TEST(Point, FromDelimitedStringWithTwoItemsLeavesZAtZero) {
    Point p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u" 4 ; 5 ", u";"), 1);
    EXPECT_TRUE(near(p, 4, 5, 0, 0));
}

TEST(Point, FromDelimitedStringWithOneItemFailsWithTheOrigin) {
    Point p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"7", u","), 0);
    EXPECT_TRUE(near(p, 0, 0, 0, 0));
    p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u",,", u","), 0);
    EXPECT_TRUE(near(p, 0, 0, 0, 0));
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"", u","), 0);
}

TEST(Point, FromDelimitedStringMergesRunsOfDelimiters) {
    Point p;
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u",,1,,,2,,", u","), 1);
    EXPECT_TRUE(near(p, 1, 2, 0, 0));
    // Any character of the set delimits.
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"1 2,3", u", "), 1);
    EXPECT_TRUE(near(p, 1, 2, 3, 0));
}

TEST(Point, FromDelimitedStringKeepsBlankItemsAsZero) {
    Point p = P(9, 9, 9);
    // The first item is blanks only: trimmed to nothing, it still counts and reads as 0.
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"   ,5,6,8", u","), 1);
    EXPECT_TRUE(near(p, 0, 5, 6, 0));
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"a,b", u","), 1);
    EXPECT_TRUE(near(p, 0, 0, 0, 0));
}

TEST(Point, FromDelimitedStringNullArguments) {
    Point p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, nullptr, u","), 0);
    EXPECT_TRUE(near(p, 0, 0, 0, 0));
    p = P(9, 9, 9);
    EXPECT_EQ(nq_Point_fromDelimitedString(&p, u"1,2", nullptr), 0);
    EXPECT_TRUE(near(p, 0, 0, 0, 0));
    EXPECT_EQ(nq_Point_fromDelimitedString(nullptr, u"1,2", u","), 0);
}

TEST(Point, ColinearOnALineAndOff) {
    Point a = P(0, 0, 0), b = P(1, 2, 3), c = P(-2, -4, -6), d = P(1, 2, 4);
    EXPECT_EQ(nq_Point_colinear(&a, &b, &c), 1);
    EXPECT_EQ(nq_Point_colinear(&a, &b, &d), 0);
}

TEST(Point, ColinearTestsEveryPlane) {
    // Colinear seen from above (XY) and along YZ, but not in XZ.
    Point a = P(0, 0, 0), b = P(1, 0, 0), c = P(2, 0, 1);
    EXPECT_EQ(nq_Point_colinear(&a, &b, &c), 0);
    Point d = P(0, 0, 1), e = P(0, 1, 0);
    EXPECT_EQ(nq_Point_colinear(&a, &d, &e), 0);
}

TEST(Point, ColinearIsAnAreaTestAndStrict) {
    Point a = P(0, 0, 0), b = P(1, 0, 0), c = P(0.5, 1e-05, 0);
    EXPECT_EQ(nq_Point_colinear(&a, &b, &c), 0);  // the determinant is exactly the tolerance
    Point near_ = P(0.5, 0.9e-05, 0);
    EXPECT_EQ(nq_Point_colinear(&a, &b, &near_), 1);
    // The same small offset fails with the points far apart.
    Point far = P(1000, 0, 0), mid = P(500, 1e-06, 0);
    EXPECT_EQ(nq_Point_colinear(&a, &far, &mid), 0);
    EXPECT_EQ(nq_Point_colinearWithinTol(&a, &far, &mid, 1e-02), 1);
}

TEST(Point, ColinearV2IsTrueOnlyWhenTheFirstIsBetween) {
    Point a = P(3, 0, 0), b = P(0, 0, 0), c = P(1, 0, 0);
    EXPECT_EQ(nq_Point_colinearWithinTol_v2(&a, &b, &c, 1e-05), 0);
    Point between = P(1, 0, 0), end = P(3, 0, 0);
    EXPECT_EQ(nq_Point_colinearWithinTol_v2(&between, &b, &end, 1e-05), 1);
    Point off = P(1, 0.1, 0);
    EXPECT_EQ(nq_Point_colinearWithinTol_v2(&off, &b, &end, 1e-05), 0);
    EXPECT_EQ(nq_Point_colinearWithinTol_v2(&off, &b, &end, 0.1), 1);
}

TEST(Point, BetweenExcludesBothEnds) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), mid = P(1, 0, 0);
    EXPECT_EQ(nq_Point_between(&mid, &a, &b, 1), 1);
    EXPECT_EQ(nq_Point_between(&a, &a, &b, 1), 0);
    EXPECT_EQ(nq_Point_between(&b, &a, &b, 1), 0);
    EXPECT_EQ(nq_Point_between(&a, &a, &b, 0), 0);
    EXPECT_EQ(nq_Point_between(&b, &a, &b, 0), 0);
}

TEST(Point, BetweenOffTheLineDependsOnOnLineOnly) {
    Point p = P(1, 1, 0), a = P(0, 0, 0), b = P(2, 0, 0);
    EXPECT_EQ(nq_Point_between(&p, &a, &b, 0), 1);
    EXPECT_EQ(nq_Point_between(&p, &a, &b, 1), 0);
    Point outside = P(3, 1, 0);
    EXPECT_EQ(nq_Point_between(&outside, &a, &b, 0), 0);
}

TEST(Point, BetweenOnTheLineOutsideTheSegment) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), before = P(-1, 0, 0), after = P(3, 0, 0);
    EXPECT_EQ(nq_Point_between(&before, &a, &b, 1), 0);
    EXPECT_EQ(nq_Point_between(&after, &a, &b, 1), 0);
    EXPECT_EQ(nq_Point_between(&before, &a, &a, 0), 0);  // no segment at all
}

TEST(Point, ProjectOntoLineGivesTheFootOnTheInfiniteLine) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), out;
    Point p = P(1, 1, 0);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &p, &a, &b), 1);
    EXPECT_TRUE(near(out, 1, 0, 0));
    Point beyond = P(3, -2, 5);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &beyond, &a, &b), 1);
    EXPECT_TRUE(near(out, 3, 0, 0));
    Point behind = P(-1, 1, 0);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &behind, &a, &b), 1);
    EXPECT_TRUE(near(out, -1, 0, 0));
}

TEST(Point, ProjectOntoSlantedLine) {
    Point a = P(1, 1, 1), b = P(2, 2, 2), p = P(3, 0, 0), out;
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &p, &a, &b), 1);
    EXPECT_TRUE(near(out, 1, 1, 1));
    EXPECT_EQ(nq_Point_projectOntoLine(&p, &p, &a, &b), 1);  // into the input
    EXPECT_TRUE(near(p, 1, 1, 1));
}

TEST(Point, ProjectOfTheStartPointFails) {
    Point a = P(1, 2, 3), b = P(4, 5, 6), out = P(9, 9, 9);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &a, &a, &b), 0);
    EXPECT_TRUE(near(out, 9, 9, 9, 0));
    Point p = P(0, 0, 0);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &p, &a, &a), 0);
    Point close = P(1, 2, 3.000001);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &close, &a, &b), 0);
}

TEST(Point, ProjectionWritesItsMessageWithValues) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), p = P(1, 1, 0), out;
    geotest::TraceCapture capture(NQ_DIAG_POINT);
    nq_Point_projectOntoLine(&out, &p, &a, &b);
    auto lines = capture.lines();
    bool found = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].message == "Projection point is 1.000000, 0.000000, 0.000000") {
            found = true;
            EXPECT_EQ(lines[i].file, "point.cpp");
            // The message ends in a line feed of its own: a blank line follows.
            ASSERT_LT(i + 1, lines.size());
            EXPECT_EQ(lines[i + 1].file, "");
            EXPECT_EQ(lines[i + 1].message, "");
        }
    }
    EXPECT_TRUE(found) << capture.text();
    EXPECT_EQ(lines.front().message, "Entering nq_Point_projectOntoLine.");
    EXPECT_EQ(lines.back().message, "Leaving nq_Point_projectOntoLine.");
}

TEST(Point, ProjectionMessageNeedsLevelThreeAndThePointBit) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), p = P(1, 1, 0), out;
    geotest::expect_silent(NQ_DIAG_POINT, 2, [&] { nq_Point_projectOntoLine(&out, &p, &a, &b); });
    geotest::TraceCapture capture(NQ_DIAG_VECTOR);
    nq_Point_projectOntoLine(&out, &p, &a, &b);
    EXPECT_EQ(capture.text().find("Projection point"), std::string::npos);
}

TEST(Point, GetOrthoVectorGoesFromTheFootToTheThirdPoint) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), c = P(1, 3, 0);
    Vector out;
    EXPECT_EQ(nq_Point_getOrthoVector(&out, &a, &b, &c), 1);
    EXPECT_TRUE(near(out, 0, 3, 0));
    Point d = P(5, -1, 2);
    EXPECT_EQ(nq_Point_getOrthoVector(&out, &a, &b, &d), 1);
    EXPECT_TRUE(near(out, 0, -1, 2));
}

TEST(Point, GetOrthoVectorFailsOnTheLine) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), onLine = P(5, 0, 0);
    Vector out;
    EXPECT_EQ(nq_Point_getOrthoVector(&out, &a, &b, &onLine), 0);
    // The line runs from b: c equal to b has no projection.
    EXPECT_EQ(nq_Point_getOrthoVector(&out, &a, &b, &b), 0);
}

TEST(Point, InCylinderMeasuresTheDistanceToTheAxis) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), p = P(1, 0.3, 0.4);
    double d = -1;
    EXPECT_EQ(nq_Point_inCylinder(&d, &p, &a, &b, 1), 1);
    EXPECT_NEAR(d, 0.5, 1e-12);
    EXPECT_EQ(nq_Point_inCylinder(nullptr, &p, &a, &b, 1), 1);
}

TEST(Point, InCylinderRadiusComparisonIsNotStrict) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), p = P(1, 0.5, 0);
    double d = -1;
    EXPECT_EQ(nq_Point_inCylinder(&d, &p, &a, &b, 0.5), 1);
    EXPECT_EQ(d, 0.5);
    d = -1;
    EXPECT_EQ(nq_Point_inCylinder(&d, &p, &a, &b, 0.4999), 0);
    EXPECT_EQ(d, -1);
}

TEST(Point, InCylinderNeedsTheFootStrictlyInside) {
    Point a = P(0, 0, 0), b = P(2, 0, 0);
    Point beyond = P(3, 0.1, 0), atEnd = P(2, 0.1, 0), before = P(-0.5, 0.1, 0);
    EXPECT_EQ(nq_Point_inCylinder(nullptr, &beyond, &a, &b, 10), 0);
    EXPECT_EQ(nq_Point_inCylinder(nullptr, &atEnd, &a, &b, 10), 0);
    EXPECT_EQ(nq_Point_inCylinder(nullptr, &before, &a, &b, 10), 0);
}

TEST(Point, IntersectPerpendicularLines) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(1, -1, 0), b2 = P(1, 1, 0), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(out, 1, 0, 0));
}

TEST(Point, IntersectSlantedLinesBeyondTheSegments) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(0, -1, 0), b2 = P(2, 1, 0), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(out, 1, 0, 0));
    Point c1 = P(5, 3, 0), c2 = P(6, 6, 0);  // meets the X axis at x = 4
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &c1, &c2), 1);
    EXPECT_TRUE(near(out, 4, 0, 0));
}

TEST(Point, IntersectInSpace) {
    Point a1 = P(0, 0, 0), a2 = P(0, 0, 4), b1 = P(1, 1, 2), b2 = P(2, 2, 3), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(out, 0, 0, 1));
}

TEST(Point, IntersectWhenTheSecondStartsOnTheFirst) {
    Point a1 = P(0, 0, 0), a2 = P(4, 0, 0), b1 = P(1, 0, 0), b2 = P(1, 1, 1), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(out, 1, 0, 0));
}

TEST(Point, IntersectOfParallelLinesFails) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(0, 1, 0), b2 = P(-3, 1, 0), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 0);
}

TEST(Point, IntersectOfLinesSharingAnEndGivesThatPoint) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(2, 0, 0), b2 = P(5, 5, 5), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(out, 2, 0, 0, 0));
    Point c1 = P(7, 7, 0), c2 = P(0, 0, 0);
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &c1, &c2), 1);
    EXPECT_TRUE(near(out, 0, 0, 0, 0));
}

TEST(Point, IntersectOfParallelLinesSharingAnEndFails) {
    Point a1 = P(0, 0, 0), a2 = P(1, 0, 0), b1 = P(1, 0, 0), b2 = P(2, 0, 0), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 0);
}

TEST(Point, IntersectOfSkewLinesFails) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(1, -1, 1), b2 = P(1, 1, 1), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a1, &a2, &b1, &b2), 0);
    EXPECT_EQ(nq_Point_intersectPointWithinTol(&out, &a1, &a2, &b1, &b2, 1e-05), 0);
}

TEST(Point, IntersectWithoutAFirstLineFails) {
    Point a = P(3, 3, 3), b1 = P(0, 0, 0), b2 = P(1, 0, 0), out;
    EXPECT_EQ(nq_Point_intersectPoint(&out, &a, &a, &b1, &b2), 0);
}

TEST(Point, IntersectIntoAnInput) {
    Point a1 = P(0, 0, 0), a2 = P(2, 0, 0), b1 = P(1, -1, 0), b2 = P(1, 1, 0);
    EXPECT_EQ(nq_Point_intersectPoint(&b1, &a1, &a2, &b1, &b2), 1);
    EXPECT_TRUE(near(b1, 1, 0, 0));
}

TEST(Point, IntersectWithinTolUsesItsTolerance) {
    // Nearly parallel lines count as parallel under a coarse tolerance.
    Point a1 = P(0, 0, 0), a2 = P(1, 0, 0), b1 = P(0, 1, 0), b2 = P(1, 1.001, 0), out;
    EXPECT_EQ(nq_Point_intersectPointWithinTol(&out, &a1, &a2, &b1, &b2, 0.01), 0);
    EXPECT_EQ(nq_Point_intersectPointWithinTol(&out, &a1, &a2, &b1, &b2, 1e-05), 1);
    EXPECT_TRUE(near(out, -1000, 0, 0, 1e-6));
}

TEST(Point, NullArguments) {
    Point p = P(1, 1, 1), q = P(2, 2, 2), out = P(5, 5, 5);
    Vector v = V(1, 0, 0);
    double d = 3;
    EXPECT_EQ(nq_Point_set(nullptr, 1, 2, 3), 0);
    EXPECT_EQ(nq_Point_setX(nullptr, 1), 0);
    EXPECT_EQ(nq_Point_setY(nullptr, 1), 0);
    EXPECT_EQ(nq_Point_setZ(nullptr, 1), 0);
    EXPECT_EQ(nq_Point_getX(&d, nullptr), 0);
    EXPECT_EQ(nq_Point_getY(nullptr, &p), 0);
    EXPECT_EQ(nq_Point_getZ(&d, nullptr), 0);
    EXPECT_EQ(nq_Point_copy(&out, nullptr), 0);
    EXPECT_EQ(nq_Point_fromVector(&out, nullptr), 0);
    EXPECT_EQ(nq_Point_add(&out, nullptr, &q), 0);
    EXPECT_EQ(nq_Point_subtract(nullptr, &p, &q), 0);
    EXPECT_EQ(nq_Point_midpoint(&out, &p, nullptr), 0);
    EXPECT_EQ(nq_Point_distance(nullptr, &p, &q), 0);
    EXPECT_EQ(nq_Point_equal(&p, nullptr), 0);
    EXPECT_EQ(nq_Point_equalWithinTol(nullptr, &p, 1), 0);
    EXPECT_EQ(nq_Point_translateByVector(&out, &p, nullptr, 1), 0);
    EXPECT_EQ(nq_Point_translateByVector(&out, nullptr, &v, 1), 0);
    EXPECT_EQ(nq_Point_translateByAngle(&out, nullptr, 1, 1), 0);
    EXPECT_EQ(nq_Point_colinear(&p, &q, nullptr), 0);
    EXPECT_EQ(nq_Point_colinearWithinTol(nullptr, &p, &q, 1), 0);
    EXPECT_EQ(nq_Point_colinearWithinTol_v2(&p, nullptr, &q, 1), 0);
    EXPECT_EQ(nq_Point_between(nullptr, &p, &q, 0), 0);
    EXPECT_EQ(nq_Point_between(&p, &p, nullptr, 0), 0);
    EXPECT_EQ(nq_Point_projectOntoLine(&out, &p, nullptr, &q), 0);
    EXPECT_EQ(nq_Point_getOrthoVector(nullptr, &p, &q, &p), 0);
    EXPECT_EQ(nq_Point_inCylinder(&d, nullptr, &p, &q, 1), 0);
    EXPECT_EQ(nq_Point_intersectPoint(&out, &p, &q, &p, nullptr), 0);
    EXPECT_EQ(nq_Point_intersectPointWithinTol(nullptr, &p, &q, &p, &q, 1), 0);
    EXPECT_TRUE(near(out, 5, 5, 5, 0));
    EXPECT_EQ(d, 3);
}

TEST(Point, EveryFunctionTracesEnteringAndLeaving) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), c = P(1, 1, 0), d = P(1, -1, 0), out;
    Vector v = V(1, 0, 0), vo;
    double x;
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_Point_set", [&] { nq_Point_set(&out, 1, 2, 3); }},
        {"nq_Point_setX", [&] { nq_Point_setX(&out, 1); }},
        {"nq_Point_setY", [&] { nq_Point_setY(&out, 1); }},
        {"nq_Point_setZ", [&] { nq_Point_setZ(&out, 1); }},
        {"nq_Point_getX", [&] { nq_Point_getX(&x, &a); }},
        {"nq_Point_getY", [&] { nq_Point_getY(&x, &a); }},
        {"nq_Point_getZ", [&] { nq_Point_getZ(&x, &a); }},
        {"nq_Point_copy", [&] { nq_Point_copy(&out, &a); }},
        {"nq_Point_fromVector", [&] { nq_Point_fromVector(&out, &v); }},
        {"nq_Point_add", [&] { nq_Point_add(&out, &a, &b); }},
        {"nq_Point_subtract", [&] { nq_Point_subtract(&out, &a, &b); }},
        {"nq_Point_midpoint", [&] { nq_Point_midpoint(&out, &a, &b); }},
        {"nq_Point_distance", [&] { nq_Point_distance(&x, &a, &b); }},
        {"nq_Point_equal", [&] { nq_Point_equal(&a, &b); }},
        {"nq_Point_setToTolerance", [&] { nq_Point_setToTolerance(&out); }},
        {"nq_Point_translateByVector", [&] { nq_Point_translateByVector(&out, &a, &v, 1); }},
        {"nq_Point_translateByAngle", [&] { nq_Point_translateByAngle(&out, &a, 1, 1); }},
        {"nq_Point_fromDelimitedString", [&] { nq_Point_fromDelimitedString(&out, u"1,2", u","); }},
        {"nq_Point_colinear", [&] { nq_Point_colinear(&a, &b, &c); }},
        {"nq_Point_colinearWithinTol_v2", [&] { nq_Point_colinearWithinTol_v2(&a, &b, &c, 1); }},
        {"nq_Point_between", [&] { nq_Point_between(&c, &a, &b, 0); }},
        {"nq_Point_projectOntoLine", [&] { nq_Point_projectOntoLine(&out, &c, &a, &b); }},
        {"nq_Point_getOrthoVector", [&] { nq_Point_getOrthoVector(&vo, &a, &b, &c); }},
        {"nq_Point_inCylinder", [&] { nq_Point_inCylinder(&x, &c, &a, &b, 2); }},
        {"nq_Point_intersectPoint", [&] { nq_Point_intersectPoint(&out, &a, &b, &c, &d); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_POINT, "point.cpp", std::string("Entering ") + k.name + ".",
                              std::string("Leaving ") + k.name + ".", k.call);
}

TEST(Point, TolerancedFunctionsTraceUnderTheDefaultNames) {
    Point a = P(0, 0, 0), b = P(2, 0, 0), c = P(1, 1, 0), d = P(1, -1, 0), out;
    geotest::expect_frame(NQ_DIAG_POINT, "point.cpp", "Entering nq_Point_equal.", "Leaving nq_Point_equal.",
                          [&] { nq_Point_equalWithinTol(&a, &b, 1); });
    geotest::expect_frame(NQ_DIAG_POINT, "point.cpp", "Entering nq_Point_colinear.", "Leaving nq_Point_colinear.",
                          [&] { nq_Point_colinearWithinTol(&a, &b, &c, 1); });
    geotest::expect_frame(NQ_DIAG_POINT, "point.cpp", "Entering nq_Point_intersectPoint.",
                          "Leaving nq_Point_intersectPoint.",
                          [&] { nq_Point_intersectPointWithinTol(&out, &a, &b, &c, &d, 1e-05); });
}

TEST(Point, NoTraceBelowLevelThreeOrWithoutTheBit) {
    Point a = P(1, 2, 3), out;
    geotest::expect_silent(NQ_DIAG_POINT, 2, [&] { nq_Point_copy(&out, &a); });
    geotest::expect_silent(NQ_DIAG_VECTOR | NQ_DIAG_LNKLIST, 3, [&] { nq_Point_copy(&out, &a); });
}
