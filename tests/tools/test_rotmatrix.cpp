// Rotation matrices and quaternions: the crossed setters, the one-sided identity test, the
// ten-decimal half turn, rotations built from angles, points, axes and vectors, and traces.
#include <gtest/gtest.h>

#include <cmath>

#include "geometry_support.h"
#include "nq_tls20an.h"

using geotest::matrix_near;
using geotest::near;

namespace {

constexpr double kHalfTurn = 3.1415926536;

Vector V(double x, double y, double z) { return Vector{x, y, z}; }
Point P(double x, double y, double z) { return Point{x, y, z}; }

struct Rot {
    RotMatrix *m = nq_RotMatrix_create();
    ~Rot() { nq_RotMatrix_destroy(m); }
    operator RotMatrix *() const { return m; }
};

double length(const Vector &v) { return std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z); }

// Columns of unit length, pairwise orthogonal, right-handed.
::testing::AssertionResult orthonormal(const RotMatrix *m) {
    Vector c[3];
    for (int i = 0; i < 3; ++i)
        if (!nq_RotMatrix_getColumn(&c[i], m, i)) return ::testing::AssertionFailure() << "no column " << i;
    for (int i = 0; i < 3; ++i) {
        if (std::fabs(length(c[i]) - 1) > 1e-9) return ::testing::AssertionFailure() << "column " << i << " not unit";
        for (int j = i + 1; j < 3; ++j) {
            double d;
            nq_Vector_dotProduct(&d, &c[i], &c[j]);
            if (std::fabs(d) > 1e-9) return ::testing::AssertionFailure() << "columns " << i << ", " << j;
        }
    }
    Vector z;
    nq_Vector_crossProduct(&z, &c[0], &c[1]);
    if (!near(z, c[2].x, c[2].y, c[2].z)) return ::testing::AssertionFailure() << "left-handed";
    return ::testing::AssertionSuccess();
}

}  // namespace

TEST(RotMatrix, CreateIsTheIdentity) {
    Rot r;
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_destroy(nullptr), 0);
}

TEST(RotMatrix, SetFillsRowByRowAndYieldsOneForAnyMatrix) {
    Rot r;
    EXPECT_EQ(nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, 0));
    Matrix *small = nq_Matrix_create(2, 2);
    EXPECT_EQ(nq_RotMatrix_set(small, 1, 2, 3, 4, 5, 6, 7, 8, 9), 1);
    EXPECT_TRUE(matrix_near(small, {{1, 2}, {4, 5}}, 0));
    nq_Matrix_destroy(small);
    EXPECT_EQ(nq_RotMatrix_set(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9), 0);
}

TEST(RotMatrix, SetIdentityYieldsZeroButSetsIt) {
    Rot r;
    nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_setIdentity(r), 0);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_setIdentity(nullptr), 0);
}

TEST(RotMatrix, ElementAccessStopsAtThree) {
    Rot r;
    EXPECT_EQ(nq_RotMatrix_setElement(r, 2, 1, 7), 1);
    double v = 0;
    EXPECT_EQ(nq_RotMatrix_getElement(&v, r, 2, 1), 1);
    EXPECT_EQ(v, 7);
    EXPECT_EQ(nq_RotMatrix_setElement(r, 3, 0, 1), 0);
    EXPECT_EQ(nq_RotMatrix_setElement(r, 0, -1, 1), 0);
    EXPECT_EQ(nq_RotMatrix_getElement(&v, r, 0, 3), 0);
    TMatrix *t = nq_TMatrix_create();
    EXPECT_EQ(nq_RotMatrix_getElement(&v, t, 3, 3), 0);  // exists, but beyond a rotation
    nq_TMatrix_destroy(t);
    EXPECT_EQ(nq_RotMatrix_getElement(nullptr, r, 0, 0), 0);
    EXPECT_EQ(nq_RotMatrix_getElement(&v, nullptr, 0, 0), 0);
    EXPECT_EQ(v, 7);
}

TEST(RotMatrix, GetColumnAndRow) {
    Rot r;
    nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    Vector v;
    EXPECT_EQ(nq_RotMatrix_getColumn(&v, r, 1), 1);
    EXPECT_TRUE(near(v, 2, 5, 8, 0));
    EXPECT_EQ(nq_RotMatrix_getRow(&v, r, 1), 1);
    EXPECT_TRUE(near(v, 4, 5, 6, 0));
    EXPECT_EQ(nq_RotMatrix_getColumn(&v, r, 3), 0);
    EXPECT_EQ(nq_RotMatrix_getRow(&v, r, -1), 0);
    EXPECT_EQ(nq_RotMatrix_getColumn(nullptr, r, 0), 0);
    EXPECT_EQ(nq_RotMatrix_getRow(&v, nullptr, 0), 0);
    TMatrix *t = nq_TMatrix_create();
    EXPECT_EQ(nq_RotMatrix_getColumn(&v, t, 0), 0);  // a column of four does not fit
    EXPECT_EQ(nq_RotMatrix_getRow(&v, t, 0), 0);
    nq_TMatrix_destroy(t);
}

TEST(RotMatrix, SetColumnWritesAColumn) {
    Rot r;
    Vector v = V(7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_setColumn(r, 2, &v), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 7}, {0, 1, 8}, {0, 0, 9}}, 0));
    EXPECT_EQ(nq_RotMatrix_setColumn(r, 3, &v), 0);
    EXPECT_EQ(nq_RotMatrix_setColumn(r, 0, nullptr), 0);
    EXPECT_EQ(nq_RotMatrix_setColumn(nullptr, 0, &v), 0);
}

TEST(RotMatrix, SetRowAlsoWritesAColumn) {
    Rot r;
    Vector v = V(7, 8, 9), back;
    EXPECT_EQ(nq_RotMatrix_setRow(r, 0, &v), 1);
    EXPECT_TRUE(matrix_near(r, {{7, 0, 0}, {8, 1, 0}, {9, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_getColumn(&back, r, 0), 1);
    EXPECT_TRUE(near(back, 7, 8, 9, 0));
    EXPECT_EQ(nq_RotMatrix_setRow(r, 3, &v), 0);
}

TEST(RotMatrix, SetRowValuesAndSetColumnValuesBothWriteARow) {
    Rot r, s;
    EXPECT_EQ(nq_RotMatrix_setRowValues(r, 1, 4, 5, 6), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {4, 5, 6}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_setColumnValues(s, 1, 4, 5, 6), 1);
    EXPECT_TRUE(matrix_near(s, {{1, 0, 0}, {4, 5, 6}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_setRowValues(r, 3, 1, 1, 1), 0);
    EXPECT_EQ(nq_RotMatrix_setColumnValues(nullptr, 0, 1, 1, 1), 0);
}

TEST(RotMatrix, SetRowValuesStopsAtTheFirstFailure) {
    Matrix *narrow = nq_Matrix_create(3, 2);
    EXPECT_EQ(nq_RotMatrix_setRowValues(narrow, 0, 7, 8, 9), 0);
    EXPECT_TRUE(matrix_near(narrow, {{7, 8}, {0, 1}, {0, 0}}, 0));
    nq_Matrix_destroy(narrow);
}

TEST(RotMatrix, FromColumnVectorsSetsColumnsAndYieldsZero) {
    Rot r;
    Vector a = V(1, 2, 3), b = V(4, 5, 6), c = V(7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_fromColumnVectors(r, &a, &b, &c), 0);
    EXPECT_TRUE(matrix_near(r, {{1, 4, 7}, {2, 5, 8}, {3, 6, 9}}, 0));
    EXPECT_EQ(nq_RotMatrix_fromColumnVectors(nullptr, &a, &b, &c), 0);
}

TEST(RotMatrix, FromRowVectorsGivesTheSameMatrixAsFromColumnVectors) {
    Rot r, s;
    Vector a = V(1, 2, 3), b = V(4, 5, 6), c = V(7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_fromRowVectors(r, &a, &b, &c), 0);
    nq_RotMatrix_fromColumnVectors(s, &a, &b, &c);
    EXPECT_EQ(nq_RotMatrix_equal(r, s), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 4, 7}, {2, 5, 8}, {3, 6, 9}}, 0));
}

TEST(RotMatrix, CopyAndEqual) {
    Rot a, b;
    nq_RotMatrix_set(a, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_equal(a, b), 0);
    EXPECT_EQ(nq_RotMatrix_copy(b, a), 1);
    EXPECT_EQ(nq_RotMatrix_equal(a, b), 1);
    nq_RotMatrix_setElement(b, 2, 2, 9 + 0.9e-05);
    EXPECT_EQ(nq_RotMatrix_equal(a, b), 1);
    nq_RotMatrix_setElement(b, 2, 2, 9.0001);
    EXPECT_EQ(nq_RotMatrix_equal(a, b), 0);
    EXPECT_EQ(nq_RotMatrix_equal(a, nullptr), 0);
    EXPECT_EQ(nq_RotMatrix_copy(nullptr, a), 0);
}

TEST(RotMatrix, IsIdentityIsOneSided) {
    Rot r;
    EXPECT_EQ(nq_RotMatrix_isIdentity(r), 1);
    nq_RotMatrix_set(r, -5, -5, -5, -5, -5, -5, -5, -5, -5);
    EXPECT_EQ(nq_RotMatrix_isIdentity(r), 1);
    nq_RotMatrix_set(r, 1, 0, 0, 0, 1, 0, 0, 0.9e-05, 1);
    EXPECT_EQ(nq_RotMatrix_isIdentity(r), 1);
    nq_RotMatrix_set(r, 1, 0, 0, 0, 1, 0, 0, 1e-05, 1);  // exactly the tolerance above 0
    EXPECT_EQ(nq_RotMatrix_isIdentity(r), 0);
    nq_RotMatrix_set(r, 1.5, 0, 0, 0, 1, 0, 0, 0, 1);
    EXPECT_EQ(nq_RotMatrix_isIdentity(r), 0);
    EXPECT_EQ(nq_RotMatrix_isIdentity(nullptr), 0);
}

TEST(RotMatrix, NormalizeMakesUnitColumnsButNotOrthogonalOnes) {
    Rot src, dst;
    nq_RotMatrix_set(src, 3, 0, 1, 0, 0, 1, 0, 2, 0);
    EXPECT_EQ(nq_RotMatrix_normalize(dst, src), 1);
    double h = std::sqrt(0.5);
    EXPECT_TRUE(matrix_near(dst, {{1, 0, h}, {0, 0, h}, {0, 1, 0}}));
    EXPECT_EQ(nq_RotMatrix_normalize(src, src), 1);
    EXPECT_TRUE(matrix_near(src, {{1, 0, h}, {0, 0, h}, {0, 1, 0}}));
    nq_RotMatrix_set(src, 1, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(nq_RotMatrix_normalize(dst, src), 0);  // a zero column
    EXPECT_EQ(nq_RotMatrix_normalize(nullptr, src), 0);
}

TEST(RotMatrix, FromAngleTurnsAboutZ) {
    Rot r;
    EXPECT_EQ(nq_RotMatrix_fromAngle(r, M_PI / 2), 1);
    EXPECT_TRUE(matrix_near(r, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}, 1e-15));
    Vector v = V(1, 0, 3);
    EXPECT_EQ(nq_RotMatrix_rotateVector(&v, r), 1);
    EXPECT_TRUE(near(v, 0, 1, 3));
    EXPECT_EQ(nq_RotMatrix_fromAngle(nullptr, 1), 0);
}

TEST(RotMatrix, RotateAppliesZThenYThenX) {
    Rot r, expected, x, y, z;
    double a = 0.3, b = -1.1, c = 2.0;
    EXPECT_EQ(nq_RotMatrix_rotate(r, r, a, b, c), 1);
    nq_RotMatrix_set(z, std::cos(c), -std::sin(c), 0, std::sin(c), std::cos(c), 0, 0, 0, 1);
    nq_RotMatrix_set(y, std::cos(b), 0, -std::sin(b), 0, 1, 0, std::sin(b), 0, std::cos(b));
    nq_RotMatrix_set(x, 1, 0, 0, 0, std::cos(a), -std::sin(a), 0, std::sin(a), std::cos(a));
    nq_RotMatrix_multiply(expected, y, z);
    nq_RotMatrix_multiply(expected, x, expected);
    EXPECT_TRUE(matrix_near(r, geotest::rows_of(expected), 1e-12));
    EXPECT_TRUE(orthonormal(r));
}

TEST(RotMatrix, RotateAboutYHasItsSinesReversed) {
    Rot r;
    EXPECT_EQ(nq_RotMatrix_rotate(r, r, 0, M_PI / 2, 0), 1);
    Vector v = V(1, 0, 0);
    nq_RotMatrix_rotateVector(&v, r);
    EXPECT_TRUE(near(v, 0, 0, 1, 1e-12));
}

TEST(RotMatrix, RotateStartsFromTheSource) {
    Rot src, dst;
    nq_RotMatrix_fromAngle(src, M_PI / 2);
    EXPECT_EQ(nq_RotMatrix_rotate(dst, src, 0, 0, M_PI / 2), 1);
    EXPECT_TRUE(matrix_near(dst, {{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, 1e-12));
    EXPECT_TRUE(matrix_near(src, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}, 1e-12));
}

TEST(RotMatrix, RotateWithAWrongShapeFailsAndLeavesDst) {
    Rot dst;
    nq_RotMatrix_set(dst, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    TMatrix *t = nq_TMatrix_create();
    EXPECT_EQ(nq_RotMatrix_rotate(dst, t, 1, 1, 1), 0);
    EXPECT_TRUE(matrix_near(dst, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, 0));
    EXPECT_EQ(nq_RotMatrix_rotate(t, dst, 1, 1, 1), 0);
    EXPECT_EQ(nq_RotMatrix_rotate(nullptr, dst, 1, 1, 1), 0);
    nq_TMatrix_destroy(t);
}

TEST(RotMatrix, ARotationKeepsLengths) {
    Rot r;
    nq_RotMatrix_rotate(r, r, 0.4, 1.3, -2.2);
    Vector v = V(3, -4, 12);
    Point p = P(1, 2, 2);
    EXPECT_EQ(nq_RotMatrix_rotateVector(&v, r), 1);
    EXPECT_EQ(nq_RotMatrix_rotatePoint(&p, r), 1);
    EXPECT_NEAR(length(v), 13, 1e-12);
    EXPECT_NEAR(std::sqrt(p.x * p.x + p.y * p.y + p.z * p.z), 3, 1e-12);
}

TEST(RotMatrix, RotatePointOrVectorWithAWrongShapeLeavesIt) {
    TMatrix *t = nq_TMatrix_create();
    Point p = P(1, 2, 3);
    Vector v = V(4, 5, 6);
    EXPECT_EQ(nq_RotMatrix_rotatePoint(&p, t), 0);
    EXPECT_EQ(nq_RotMatrix_rotateVector(&v, t), 0);
    EXPECT_TRUE(near(p, 1, 2, 3, 0));
    EXPECT_TRUE(near(v, 4, 5, 6, 0));
    EXPECT_EQ(nq_RotMatrix_rotatePoint(nullptr, t), 0);
    EXPECT_EQ(nq_RotMatrix_rotateVector(&v, nullptr), 0);
    nq_TMatrix_destroy(t);
}

TEST(RotMatrix, InverseUndoesARotation) {
    Rot r, inv, product;
    nq_RotMatrix_rotate(r, r, 0.7, -0.2, 1.9);
    EXPECT_EQ(nq_RotMatrix_getInverse(inv, r), 1);
    EXPECT_EQ(nq_RotMatrix_multiply(product, inv, r), 1);
    EXPECT_TRUE(matrix_near(product, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 1e-12));
    Vector v = V(1, 2, 3);
    nq_RotMatrix_rotateVector(&v, r);
    nq_RotMatrix_rotateVector(&v, inv);
    EXPECT_TRUE(near(v, 1, 2, 3, 1e-12));
    EXPECT_EQ(nq_RotMatrix_getInverse(r, r), 1);  // in place
    EXPECT_EQ(nq_RotMatrix_equal(r, inv), 1);
}

TEST(RotMatrix, MultiplyIntoAnOperand) {
    Rot a, b;
    nq_RotMatrix_fromAngle(a, M_PI / 2);
    nq_RotMatrix_fromAngle(b, M_PI / 2);
    EXPECT_EQ(nq_RotMatrix_multiply(a, a, b), 1);
    EXPECT_TRUE(matrix_near(a, {{-1, 0, 0}, {0, -1, 0}, {0, 0, 1}}, 1e-12));
}

TEST(RotMatrix, From3PointsGivesOrthonormalColumns) {
    Rot r;
    Point p1 = P(1, 1, 1), p2 = P(3, 1, 1), p3 = P(2, 5, 1);
    EXPECT_EQ(nq_RotMatrix_from3Points(r, &p1, &p2, &p3), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 1e-12));
    Point q1 = P(0.5, -2, 3), q2 = P(4, 1, -1), q3 = P(-2, 2, 7);
    EXPECT_EQ(nq_RotMatrix_from3Points(r, &q1, &q2, &q3), 1);
    EXPECT_TRUE(orthonormal(r));
    Vector x, along;
    nq_RotMatrix_getColumn(&x, r, 0);
    nq_Vector_computeNormal(&along, &q1, &q2);
    EXPECT_TRUE(near(x, along.x, along.y, along.z, 1e-12));
    // The third point lies in the plane of the first two columns, on the side of the second.
    Vector y, toQ3;
    nq_RotMatrix_getColumn(&y, r, 1);
    nq_Vector_computeVector(&toQ3, &q1, &q3);
    Vector z;
    nq_RotMatrix_getColumn(&z, r, 2);
    double dz, dy;
    nq_Vector_dotProduct(&dz, &toQ3, &z);
    nq_Vector_dotProduct(&dy, &toQ3, &y);
    EXPECT_NEAR(dz, 0, 1e-12);
    EXPECT_GT(dy, 0);
}

TEST(RotMatrix, From3PointsOnALineFailsAndLeavesTheMatrix) {
    Rot r;
    nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    Point p1 = P(0, 0, 0), p2 = P(1, 1, 1), p3 = P(3, 3, 3);
    EXPECT_EQ(nq_RotMatrix_from3Points(r, &p1, &p2, &p3), 0);
    EXPECT_EQ(nq_RotMatrix_from3Points(r, &p1, &p1, &p3), 0);
    EXPECT_EQ(nq_RotMatrix_from3Points(r, &p1, &p2, &p1), 0);
    EXPECT_TRUE(matrix_near(r, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, 0));
    EXPECT_EQ(nq_RotMatrix_from3Points(nullptr, &p1, &p2, &p3), 0);
}

TEST(RotMatrix, FromVectorsXY) {
    Rot r;
    Point origin = P(5, 5, 5);
    Vector x = V(0, 2, 0), y = V(-3, 0, 0);
    EXPECT_EQ(nq_RotMatrix_fromVectorsXY(r, &origin, &x, &y), 1);
    EXPECT_TRUE(matrix_near(r, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}, 1e-12));
    Vector zero = V(0, 0, 0);
    EXPECT_EQ(nq_RotMatrix_fromVectorsXY(r, &origin, &zero, &y), 0);
    EXPECT_EQ(nq_RotMatrix_fromVectorsXY(r, &origin, &x, &x), 0);
    EXPECT_EQ(nq_RotMatrix_fromVectorsXY(r, nullptr, &x, &y), 0);
}

TEST(RotMatrix, FromRotAxisAndAngle) {
    Rot r, z;
    Vector axis = V(0, 0, 5);
    EXPECT_EQ(nq_RotMatrix_fromRotAxisAndAngle(r, &axis, M_PI / 2), 1);
    nq_RotMatrix_fromAngle(z, M_PI / 2);
    EXPECT_TRUE(matrix_near(r, geotest::rows_of(z), 1e-12));
    Vector slanted = V(1, 1, 1), v = V(1, 0, 0);
    EXPECT_EQ(nq_RotMatrix_fromRotAxisAndAngle(r, &slanted, 2 * M_PI / 3), 1);
    nq_RotMatrix_rotateVector(&v, r);
    EXPECT_TRUE(near(v, 0, 1, 0, 1e-12));  // a third of a turn about the diagonal
    Vector zero = V(0, 0, 0);
    EXPECT_EQ(nq_RotMatrix_fromRotAxisAndAngle(r, &zero, 1), 0);
    EXPECT_EQ(nq_RotMatrix_fromRotAxisAndAngle(nullptr, &axis, 1), 0);
}

TEST(RotMatrix, FromVectorsWithoutAxisTurnsFromOntoTo) {
    Rot r;
    Vector from = V(1, 2, 0), to = V(0, -1, 3);
    EXPECT_EQ(nq_RotMatrix_fromVectors(r, nullptr, &from, &to), 1);
    Vector v = from;
    nq_RotMatrix_rotateVector(&v, r);
    double scale = length(from) / length(to);
    EXPECT_TRUE(near(v, to.x * scale, to.y * scale, to.z * scale, 1e-9));
    EXPECT_TRUE(orthonormal(r));
    Vector tinyAxis = V(0, 0, 1e-05);  // too short to count as an axis
    Rot s;
    EXPECT_EQ(nq_RotMatrix_fromVectors(s, &tinyAxis, &from, &to), 1);
    EXPECT_EQ(nq_RotMatrix_equal(r, s), 1);
}

TEST(RotMatrix, FromVectorsAboutAnAxis) {
    Rot r, z;
    Vector axis = V(0, 0, 2), from = V(1, 0, 1), to = V(0, 1, 5);
    EXPECT_EQ(nq_RotMatrix_fromVectors(r, &axis, &from, &to), 1);
    nq_RotMatrix_fromAngle(z, M_PI / 2);
    EXPECT_TRUE(matrix_near(r, geotest::rows_of(z), 1e-12));
}

TEST(RotMatrix, FromVectorsOppositeAboutAnAxisIsTheLiteralHalfTurn) {
    Rot r;
    Vector axis = V(0, 0, 1), from = V(1, 0, 0), to = V(-1, 0, 0.3);
    EXPECT_EQ(nq_RotMatrix_fromVectors(r, &axis, &from, &to), 1);
    double h = kHalfTurn / 2, s = std::sin(h), c = std::cos(h);
    // With pi itself the off-diagonal terms would be some 1e-16; the literal leaves 4e-11.
    double e01 = -2 * s * c, e00 = 1 - 2 * s * s;
    EXPECT_TRUE(matrix_near(r, {{e00, e01, 0}, {-e01, e00, 0}, {0, 0, 1}}, 1e-15));
    EXPECT_GT(std::fabs(e01), 1e-11);
}

TEST(RotMatrix, FromVectorsAlongTheAxisFails) {
    Rot r;
    Vector axis = V(0, 0, 1), from = V(0, 0, 3), to = V(1, 0, 0);
    EXPECT_EQ(nq_RotMatrix_fromVectors(r, &axis, &from, &to), 0);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_RotMatrix_fromVectors(r, &axis, nullptr, &to), 0);
    EXPECT_EQ(nq_RotMatrix_fromVectors(nullptr, &axis, &from, &to), 0);
}

TEST(RotMatrix, FromQuaternion) {
    Rot r;
    Quaternion identity = {0, 0, 0, 1};
    nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(nq_RotMatrix_fromQuaternion(r, &identity), 1);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0));
    double h = std::sqrt(0.5);
    Quaternion quarter = {0, 0, h, h};
    EXPECT_EQ(nq_RotMatrix_fromQuaternion(r, &quarter), 1);
    EXPECT_TRUE(matrix_near(r, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}, 1e-15));
    Quaternion aboutX = {h, 0, 0, h};
    nq_RotMatrix_fromQuaternion(r, &aboutX);
    EXPECT_TRUE(matrix_near(r, {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, 1e-15));
    EXPECT_EQ(nq_RotMatrix_fromQuaternion(r, nullptr), 0);
    EXPECT_EQ(nq_RotMatrix_fromQuaternion(nullptr, &quarter), 0);
}

TEST(Quaternion, AccessorsAndConjugate) {
    Quaternion q = {0, 0, 0, 0};
    EXPECT_EQ(nq_Quaternion_set(&q, 1, 2, 3, 4), 1);
    double x, y, z, w;
    EXPECT_EQ(nq_Quaternion_getX(&x, &q), 1);
    EXPECT_EQ(nq_Quaternion_getY(&y, &q), 1);
    EXPECT_EQ(nq_Quaternion_getZ(&z, &q), 1);
    EXPECT_EQ(nq_Quaternion_getScalar(&w, &q), 1);
    EXPECT_EQ(x, 1);
    EXPECT_EQ(y, 2);
    EXPECT_EQ(z, 3);
    EXPECT_EQ(w, 4);
    EXPECT_EQ(nq_Quaternion_setX(&q, 5), 1);
    EXPECT_EQ(nq_Quaternion_setY(&q, 6), 1);
    EXPECT_EQ(nq_Quaternion_setZ(&q, 7), 1);
    EXPECT_EQ(nq_Quaternion_setScalar(&q, 8), 1);
    Vector v;
    EXPECT_EQ(nq_Quaternion_getVector(&v, &q), 1);
    EXPECT_TRUE(near(v, 5, 6, 7, 0));
    Vector nv = V(-1, -2, -3);
    EXPECT_EQ(nq_Quaternion_setVector(&q, &nv), 1);
    EXPECT_EQ(q.x, -1);
    EXPECT_EQ(q.w, 8);
    Quaternion c;
    EXPECT_EQ(nq_Quaternion_getConjugate(&c, &q), 1);
    EXPECT_EQ(c.x, 1);
    EXPECT_EQ(c.y, 2);
    EXPECT_EQ(c.z, 3);
    EXPECT_EQ(c.w, 8);
}

TEST(Quaternion, InverseIsTheConjugateWithoutDivision) {
    Quaternion q = {1, 2, 3, 4}, inv;
    EXPECT_EQ(nq_Quaternion_getInverse(&inv, &q), 1);
    EXPECT_EQ(inv.x, -1);
    EXPECT_EQ(inv.y, -2);
    EXPECT_EQ(inv.z, -3);
    EXPECT_EQ(inv.w, 4);
    EXPECT_EQ(nq_Quaternion_getInverse(&q, &q), 1);
    EXPECT_EQ(q.x, -1);
}

TEST(Quaternion, MagnitudeAndNormalize) {
    Quaternion q = {1, 2, 2, 4}, n;
    double m = 0;
    EXPECT_EQ(nq_Quaternion_magnitude(&m, &q), 1);
    EXPECT_EQ(m, 5);
    EXPECT_EQ(nq_Quaternion_normalize(&n, &q), 1);
    EXPECT_DOUBLE_EQ(n.x, 0.2);
    EXPECT_DOUBLE_EQ(n.w, 0.8);
    EXPECT_EQ(nq_Quaternion_normalize(&q, &q), 1);
    EXPECT_DOUBLE_EQ(q.z, 0.4);
}

TEST(Quaternion, NormalizeOfZerosFailsAndWritesNothing) {
    Quaternion zero = {0, 0, 0, 0}, out = {9, 9, 9, 9};
    EXPECT_EQ(nq_Quaternion_normalize(&out, &zero), 0);
    EXPECT_EQ(out.x, 9);
    Quaternion tiny = {1e-05, 0, 0, 0};
    EXPECT_EQ(nq_Quaternion_normalize(&out, &tiny), 0);
    EXPECT_EQ(out.w, 9);
}

TEST(Quaternion, FromRotAxisAndAngleIsNormalized) {
    Quaternion q;
    Vector z = V(0, 0, 1);
    EXPECT_EQ(nq_Quaternion_fromRotAxisAndAngle(&q, &z, M_PI / 2), 1);
    double h = std::sqrt(0.5);
    EXPECT_NEAR(q.z, h, 1e-15);
    EXPECT_NEAR(q.w, h, 1e-15);
    // A longer axis is not shortened first: the whole quaternion is normalized after.
    Vector longZ = V(0, 0, 2);
    EXPECT_EQ(nq_Quaternion_fromRotAxisAndAngle(&q, &longZ, M_PI / 2), 1);
    EXPECT_NEAR(q.z, 2 * h / std::sqrt(2.5), 1e-15);
    EXPECT_NEAR(q.w, h / std::sqrt(2.5), 1e-15);
    Vector zero = V(0, 0, 0);
    EXPECT_EQ(nq_Quaternion_fromRotAxisAndAngle(&q, &zero, 0), 1);
    EXPECT_EQ(q.w, 1);
    EXPECT_EQ(nq_Quaternion_fromRotAxisAndAngle(&q, &zero, M_PI), 0);
    EXPECT_EQ(nq_Quaternion_fromRotAxisAndAngle(&q, nullptr, 1), 0);
}

TEST(Quaternion, FromVectorsOfEqualVectorsIsTheIdentity) {
    Quaternion q;
    Vector a = V(1, 2, 3), b = V(2, 4, 6);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &b), 1);
    EXPECT_EQ(q.x, 0);
    EXPECT_EQ(q.y, 0);
    EXPECT_EQ(q.z, 0);
    EXPECT_EQ(q.w, 1);
}

TEST(Quaternion, FromVectorsOfNearlyEqualVectorsIsTheIdentity) {
    Quaternion q;
    Vector a = V(1, 0, 0), b = V(1, 0.004, 0);  // cosine about 0.999992
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &b), 1);
    EXPECT_EQ(q.w, 1);
    EXPECT_EQ(q.z, 0);
}

TEST(Quaternion, FromVectorsOfOppositeVectorsIsAHalfTurnAcrossThem) {
    Quaternion q;
    Vector a = V(1, 0, 0), b = V(-3, 0, 0);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &b), 1);
    EXPECT_EQ(q.w, std::cos(kHalfTurn / 2));
    EXPECT_NEAR(q.z, 1, 1e-15);
    Vector axis;
    nq_Quaternion_getVector(&axis, &q);
    EXPECT_EQ(nq_Vector_orthogonal(&axis, &a), 1);
    RotMatrix *r = nq_RotMatrix_create();
    nq_RotMatrix_fromQuaternion(r, &q);
    Vector v = a;
    nq_RotMatrix_rotateVector(&v, r);
    EXPECT_TRUE(near(v, -1, 0, 0, 1e-9));
    nq_RotMatrix_destroy(r);
}

TEST(Quaternion, FromVectorsOppositeAlongZTakesTheXHelper) {
    Quaternion q;
    Vector a = V(0, 0, 2), b = V(0, 0, -1);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &b), 1);
    EXPECT_NEAR(q.x, 1, 1e-15);
    EXPECT_EQ(q.y, 0);
    EXPECT_EQ(q.z, 0);
}

TEST(Quaternion, FromVectorsQuarterTurn) {
    Quaternion q;
    Vector a = V(2, 0, 0), b = V(0, 5, 0);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &b), 1);
    double h = std::sqrt(0.5);
    EXPECT_NEAR(q.x, 0, 1e-15);
    EXPECT_NEAR(q.y, 0, 1e-15);
    EXPECT_NEAR(q.z, h, 1e-15);
    EXPECT_NEAR(q.w, h, 1e-15);
}

TEST(Quaternion, FromVectorsWithAZeroVectorFails) {
    Quaternion q = {9, 9, 9, 9};
    Vector a = V(1, 0, 0), zero = V(0, 0, 0);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &a, &zero), 0);
    EXPECT_EQ(nq_Quaternion_fromVectors(&q, &zero, &a), 0);
    EXPECT_EQ(q.w, 9);
    EXPECT_EQ(nq_Quaternion_fromVectors(nullptr, &a, &a), 0);
}

TEST(Quaternion, MultiplyFollowsTheUnitRules) {
    Quaternion i = {1, 0, 0, 0}, j = {0, 1, 0, 0}, out;
    EXPECT_EQ(nq_Quaternion_multiply(&out, &i, &j), 1);
    EXPECT_EQ(out.x, 0);
    EXPECT_EQ(out.y, 0);
    EXPECT_EQ(out.z, 1);
    EXPECT_EQ(out.w, 0);
    EXPECT_EQ(nq_Quaternion_multiply(&out, &j, &i), 1);
    EXPECT_EQ(out.z, -1);
    EXPECT_EQ(nq_Quaternion_multiply(&out, &i, &i), 1);
    EXPECT_EQ(out.w, -1);
    EXPECT_EQ(out.x, 0);
}

TEST(Quaternion, MultiplyComposesRotationsAndMayWriteAnOperand) {
    Quaternion a, b;
    Vector z = V(0, 0, 1);
    nq_Quaternion_fromRotAxisAndAngle(&a, &z, M_PI / 2);
    nq_Quaternion_fromRotAxisAndAngle(&b, &z, M_PI / 2);
    EXPECT_EQ(nq_Quaternion_multiply(&a, &a, &b), 1);
    EXPECT_NEAR(a.z, 1, 1e-15);
    EXPECT_NEAR(a.w, 0, 1e-15);
    Quaternion c = {1, 2, 3, 4}, d = {5, 6, 7, 8};
    EXPECT_EQ(nq_Quaternion_multiply(&d, &c, &d), 1);
    // By hand: scalar 4 * 8 - (5 + 12 + 21), vector 4 (5, 6, 7) + 8 (1, 2, 3) + (1, 2, 3) x (5, 6, 7).
    EXPECT_EQ(d.w, -6);
    EXPECT_EQ(d.x, 24);
    EXPECT_EQ(d.y, 48);
    EXPECT_EQ(d.z, 48);
    EXPECT_EQ(nq_Quaternion_multiply(nullptr, &c, &c), 0);
}

TEST(Quaternion, NullArguments) {
    Quaternion q = {1, 2, 3, 4};
    Vector v = V(1, 0, 0);
    double d = 7;
    EXPECT_EQ(nq_Quaternion_set(nullptr, 1, 2, 3, 4), 0);
    EXPECT_EQ(nq_Quaternion_setX(nullptr, 1), 0);
    EXPECT_EQ(nq_Quaternion_setY(nullptr, 1), 0);
    EXPECT_EQ(nq_Quaternion_setZ(nullptr, 1), 0);
    EXPECT_EQ(nq_Quaternion_setScalar(nullptr, 1), 0);
    EXPECT_EQ(nq_Quaternion_setVector(&q, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_getX(nullptr, &q), 0);
    EXPECT_EQ(nq_Quaternion_getY(&d, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_getZ(&d, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_getScalar(&d, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_getVector(&v, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_getConjugate(nullptr, &q), 0);
    EXPECT_EQ(nq_Quaternion_getInverse(&q, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_magnitude(nullptr, &q), 0);
    EXPECT_EQ(nq_Quaternion_normalize(&q, nullptr), 0);
    EXPECT_EQ(nq_Quaternion_multiply(&q, nullptr, &q), 0);
    EXPECT_EQ(d, 7);
    EXPECT_EQ(q.x, 1);
}

TEST(RotMatrix, EveryFunctionTracesEnteringAndLeaving) {
    Rot a, b, out;
    RotMatrix *made = nullptr;
    Vector x = V(1, 0, 0), y = V(0, 1, 0), z = V(0, 0, 1), v;
    Point p1 = P(0, 0, 0), p2 = P(1, 0, 0), p3 = P(0, 1, 0), pt = P(1, 2, 3);
    Quaternion q = {0, 0, 0, 1};
    double d;
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_RotMatrix_create", [&] { made = nq_RotMatrix_create(); }},
        {"nq_RotMatrix_destroy", [&] { nq_RotMatrix_destroy(made); }},
        {"nq_RotMatrix_copy", [&] { nq_RotMatrix_copy(out, a); }},
        {"nq_RotMatrix_multiply", [&] { nq_RotMatrix_multiply(out, a, b); }},
        {"nq_RotMatrix_getInverse", [&] { nq_RotMatrix_getInverse(out, a); }},
        {"nq_RotMatrix_getElement", [&] { nq_RotMatrix_getElement(&d, a, 0, 0); }},
        {"nq_RotMatrix_setElement", [&] { nq_RotMatrix_setElement(out, 0, 0, 1); }},
        {"nq_RotMatrix_getColumn", [&] { nq_RotMatrix_getColumn(&v, a, 0); }},
        {"nq_RotMatrix_getRow", [&] { nq_RotMatrix_getRow(&v, a, 0); }},
        {"nq_RotMatrix_set", [&] { nq_RotMatrix_set(out, 1, 0, 0, 0, 1, 0, 0, 0, 1); }},
        {"nq_RotMatrix_setIdentity", [&] { nq_RotMatrix_setIdentity(out); }},
        {"nq_RotMatrix_isIdentity", [&] { nq_RotMatrix_isIdentity(a); }},
        {"nq_RotMatrix_equal", [&] { nq_RotMatrix_equal(a, b); }},
        {"nq_RotMatrix_normalize", [&] { nq_RotMatrix_normalize(out, a); }},
        {"nq_RotMatrix_setColumn", [&] { nq_RotMatrix_setColumn(out, 0, &x); }},
        {"nq_RotMatrix_setRow", [&] { nq_RotMatrix_setRow(out, 0, &x); }},
        {"nq_RotMatrix_setRowValues", [&] { nq_RotMatrix_setRowValues(out, 0, 1, 0, 0); }},
        {"nq_RotMatrix_setColumnValues", [&] { nq_RotMatrix_setColumnValues(out, 0, 1, 0, 0); }},
        {"nq_RotMatrix_fromColumnVectors", [&] { nq_RotMatrix_fromColumnVectors(out, &x, &y, &z); }},
        {"nq_RotMatrix_fromRowVectors", [&] { nq_RotMatrix_fromRowVectors(out, &x, &y, &z); }},
        {"nq_RotMatrix_fromAngle", [&] { nq_RotMatrix_fromAngle(out, 1); }},
        {"nq_RotMatrix_rotate", [&] { nq_RotMatrix_rotate(out, a, 1, 2, 3); }},
        {"nq_RotMatrix_rotatePoint", [&] { nq_RotMatrix_rotatePoint(&pt, a); }},
        {"nq_RotMatrix_rotateVector", [&] { nq_RotMatrix_rotateVector(&v, a); }},
        {"nq_RotMatrix_from3Points", [&] { nq_RotMatrix_from3Points(out, &p1, &p2, &p3); }},
        {"nq_RotMatrix_fromVectorsXY", [&] { nq_RotMatrix_fromVectorsXY(out, &p1, &x, &y); }},
        {"nq_RotMatrix_fromRotAxisAndAngle", [&] { nq_RotMatrix_fromRotAxisAndAngle(out, &z, 1); }},
        {"nq_RotMatrix_fromVectors", [&] { nq_RotMatrix_fromVectors(out, &z, &x, &y); }},
        {"nq_RotMatrix_fromQuaternion", [&] { nq_RotMatrix_fromQuaternion(out, &q); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_MATRIX, "rotmatrix.cpp", std::string("Entering ") + k.name + ".",
                              std::string("Leaving ") + k.name + ".", k.call);
}

TEST(Quaternion, EveryFunctionTracesEnteringAndExiting) {
    Quaternion q = {0, 0, 0, 1}, r = {1, 0, 0, 0}, out;
    Vector x = V(1, 0, 0), y = V(0, 1, 0), v;
    double d;
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_Quaternion_set", [&] { nq_Quaternion_set(&out, 1, 2, 3, 4); }},
        {"nq_Quaternion_setX", [&] { nq_Quaternion_setX(&out, 1); }},
        {"nq_Quaternion_setY", [&] { nq_Quaternion_setY(&out, 1); }},
        {"nq_Quaternion_setZ", [&] { nq_Quaternion_setZ(&out, 1); }},
        {"nq_Quaternion_setScalar", [&] { nq_Quaternion_setScalar(&out, 1); }},
        {"nq_Quaternion_setVector", [&] { nq_Quaternion_setVector(&out, &x); }},
        {"nq_Quaternion_getX", [&] { nq_Quaternion_getX(&d, &q); }},
        {"nq_Quaternion_getY", [&] { nq_Quaternion_getY(&d, &q); }},
        {"nq_Quaternion_getZ", [&] { nq_Quaternion_getZ(&d, &q); }},
        {"nq_Quaternion_getScalar", [&] { nq_Quaternion_getScalar(&d, &q); }},
        {"nq_Quaternion_getVector", [&] { nq_Quaternion_getVector(&v, &q); }},
        {"nq_Quaternion_getConjugate", [&] { nq_Quaternion_getConjugate(&out, &q); }},
        {"nq_Quaternion_getInverse", [&] { nq_Quaternion_getInverse(&out, &q); }},
        {"nq_Quaternion_fromRotAxisAndAngle", [&] { nq_Quaternion_fromRotAxisAndAngle(&out, &x, 1); }},
        {"nq_Quaternion_fromVectors", [&] { nq_Quaternion_fromVectors(&out, &x, &y); }},
        {"nq_Quaternion_magnitude", [&] { nq_Quaternion_magnitude(&d, &q); }},
        {"nq_Quaternion_normalize", [&] { nq_Quaternion_normalize(&out, &q); }},
        {"nq_Quaternion_multiply", [&] { nq_Quaternion_multiply(&out, &q, &r); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_MATRIX, "rotmatrix.cpp", std::string("Entering ") + k.name + ".",
                              std::string("Exiting ") + k.name + ".", k.call);
}

TEST(RotMatrix, NoTraceBelowLevelThreeOrWithoutTheMatrixBit) {
    Rot r;
    double d;
    geotest::expect_silent(NQ_DIAG_MATRIX, 2, [&] { nq_RotMatrix_getElement(&d, r, 0, 0); });
    geotest::expect_silent(NQ_DIAG_POINT | NQ_DIAG_VECTOR, 3, [&] { nq_RotMatrix_getElement(&d, r, 0, 0); });
}
