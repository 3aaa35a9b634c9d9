// N-tuples, matrices and transform matrices: storage by columns, the identity on create,
// products and transposes into their own operands, the printed formats, and the traces.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "geometry_support.h"
#include "nq_tls20an.h"

using geotest::matrix_near;
using geotest::near;
using Rows = std::vector<std::vector<double>>;

namespace {

Point P(double x, double y, double z) { return Point{x, y, z}; }

Matrix *make(const Rows &rows) {
    Matrix *m = nq_Matrix_create(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()));
    for (size_t r = 0; r < rows.size(); ++r)
        for (size_t c = 0; c < rows[r].size(); ++c)
            EXPECT_EQ(nq_Matrix_setElement(m, static_cast<int>(r), static_cast<int>(c), rows[r][c]), 1);
    return m;
}

Ntuple *tuple(std::initializer_list<double> values) {
    Ntuple *t = nq_Ntuple_create(static_cast<int>(values.size()));
    int i = 0;
    for (double v : values) nq_Ntuple_setElement(t, i++, v);
    return t;
}

std::vector<double> values(const Ntuple *t) { return std::vector<double>(t->values, t->values + t->count); }

std::string read_stream(FILE *f) {
    std::fflush(f);
    std::rewind(f);
    std::string out;
    int ch;
    while ((ch = std::fgetc(f)) != EOF) out.push_back(static_cast<char>(ch));
    return out;
}

}  // namespace

TEST(Ntuple, CreateGivesZeros) {
    Ntuple *t = nq_Ntuple_create(4);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->count, 4);
    EXPECT_EQ(values(t), (std::vector<double>{0, 0, 0, 0}));
    EXPECT_EQ(nq_Ntuple_destroy(t), 1);
}

TEST(Ntuple, CreateOfZeroAndNegativeCounts) {
    Ntuple *t = nq_Ntuple_create(0);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->count, 0);
    double v;
    EXPECT_EQ(nq_Ntuple_getElement(&v, t, 0), 0);
    nq_Ntuple_destroy(t);
    EXPECT_EQ(nq_Ntuple_create(-1), nullptr);
    EXPECT_EQ(nq_Ntuple_destroy(nullptr), 0);
}

TEST(Ntuple, ElementAccessIsBounded) {
    Ntuple *t = nq_Ntuple_create(2);
    EXPECT_EQ(nq_Ntuple_setElement(t, 1, 7.5), 1);
    EXPECT_EQ(nq_Ntuple_setElement(t, 2, 1), 0);
    EXPECT_EQ(nq_Ntuple_setElement(t, -1, 1), 0);
    double v = 3;
    EXPECT_EQ(nq_Ntuple_getElement(&v, t, 1), 1);
    EXPECT_EQ(v, 7.5);
    EXPECT_EQ(nq_Ntuple_getElement(&v, t, 2), 0);
    EXPECT_EQ(nq_Ntuple_getElement(&v, t, -1), 0);
    EXPECT_EQ(nq_Ntuple_getElement(nullptr, t, 0), 0);
    EXPECT_EQ(nq_Ntuple_getElement(&v, nullptr, 0), 0);
    EXPECT_EQ(nq_Ntuple_setElement(nullptr, 0, 1), 0);
    EXPECT_EQ(v, 7.5);
    nq_Ntuple_destroy(t);
}

TEST(Ntuple, CopyNeedsEqualCounts) {
    Ntuple *a = tuple({1, 2, 3}), *b = nq_Ntuple_create(3), *c = nq_Ntuple_create(2);
    EXPECT_EQ(nq_Ntuple_copy(b, a), 1);
    EXPECT_EQ(values(b), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(nq_Ntuple_copy(c, a), 0);
    EXPECT_EQ(values(c), (std::vector<double>{0, 0}));
    EXPECT_EQ(nq_Ntuple_copy(nullptr, a), 0);
    EXPECT_EQ(nq_Ntuple_copy(b, nullptr), 0);
    nq_Ntuple_destroy(a);
    nq_Ntuple_destroy(b);
    nq_Ntuple_destroy(c);
}

TEST(Ntuple, AddSubtractScaleAndDot) {
    Ntuple *a = tuple({1, 2, 3}), *b = tuple({4, 5, 6}), *out = nq_Ntuple_create(3);
    EXPECT_EQ(nq_Ntuple_add(out, a, b), 1);
    EXPECT_EQ(values(out), (std::vector<double>{5, 7, 9}));
    EXPECT_EQ(nq_Ntuple_subtract(out, a, b), 1);
    EXPECT_EQ(values(out), (std::vector<double>{-3, -3, -3}));
    EXPECT_EQ(nq_Ntuple_scale(out, a, 2), 1);
    EXPECT_EQ(values(out), (std::vector<double>{2, 4, 6}));
    double d = 0;
    EXPECT_EQ(nq_Ntuple_dotProduct(&d, a, b), 1);
    EXPECT_EQ(d, 32);
    EXPECT_EQ(nq_Ntuple_add(a, a, b), 1);  // into an operand
    EXPECT_EQ(values(a), (std::vector<double>{5, 7, 9}));
    nq_Ntuple_destroy(a);
    nq_Ntuple_destroy(b);
    nq_Ntuple_destroy(out);
}

TEST(Ntuple, OperationsOnUnequalCountsFail) {
    Ntuple *a = tuple({1, 2, 3}), *b = tuple({1, 2}), *out = tuple({9, 9, 9});
    double d = 4;
    EXPECT_EQ(nq_Ntuple_add(out, a, b), 0);
    EXPECT_EQ(nq_Ntuple_subtract(out, b, a), 0);
    EXPECT_EQ(nq_Ntuple_scale(b, a, 2), 0);
    EXPECT_EQ(nq_Ntuple_dotProduct(&d, a, b), 0);
    EXPECT_EQ(values(out), (std::vector<double>{9, 9, 9}));
    EXPECT_EQ(d, 4);
    EXPECT_EQ(nq_Ntuple_add(nullptr, a, a), 0);
    EXPECT_EQ(nq_Ntuple_dotProduct(nullptr, a, a), 0);
    nq_Ntuple_destroy(a);
    nq_Ntuple_destroy(b);
    nq_Ntuple_destroy(out);
}

TEST(Ntuple, FromVectorMakesThree) {
    Vector v = {1, -2, 3};
    Ntuple *t = nq_Ntuple_fromVector(&v);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(values(t), (std::vector<double>{1, -2, 3}));
    nq_Ntuple_destroy(t);
    EXPECT_EQ(nq_Ntuple_fromVector(nullptr), nullptr);
}

TEST(Ntuple, PrintSeparatesWithCommasAndEndsBare) {
    Ntuple *t = tuple({1, 2.5, -3});
    FILE *f = std::tmpfile();
    EXPECT_EQ(nq_Ntuple_print(t, f), 1);
    EXPECT_EQ(read_stream(f), "1.000000, 2.500000, -3.000000");
    std::fclose(f);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Ntuple_print(t, nullptr), 1);
    EXPECT_EQ(out.stop(), "1.000000, 2.500000, -3.000000");
    nq_Ntuple_destroy(t);
}

TEST(Ntuple, PrintOfOneAndOfNone) {
    Ntuple *one = tuple({0.125}), *none = nq_Ntuple_create(0);
    nqtest::CaptureFd out(1);
    nq_Ntuple_print(one, nullptr);
    nq_Ntuple_print(none, nullptr);
    EXPECT_EQ(nq_Ntuple_print(nullptr, nullptr), 0);
    EXPECT_EQ(out.stop(), "0.125000");
    nq_Ntuple_destroy(one);
    nq_Ntuple_destroy(none);
}

TEST(Matrix, CreateSquareIsTheIdentity) {
    Matrix *m = nq_Matrix_create(3, 3);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->columns, 3);
    EXPECT_TRUE(matrix_near(m, {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 0));
    EXPECT_EQ(nq_Matrix_destroy(m), 1);
    EXPECT_EQ(nq_Matrix_destroy(nullptr), 0);
}

TEST(Matrix, CreateWideHasOnesOnlyAsFarAsItHasRows) {
    Matrix *m = nq_Matrix_create(2, 3);
    EXPECT_TRUE(matrix_near(m, {{1, 0, 0}, {0, 1, 0}}, 0));
    nq_Matrix_destroy(m);
    Matrix *tall = nq_Matrix_create(3, 2);
    EXPECT_TRUE(matrix_near(tall, {{1, 0}, {0, 1}, {0, 0}}, 0));
    nq_Matrix_destroy(tall);
}

TEST(Matrix, CreateEdgeSizes) {
    EXPECT_EQ(nq_Matrix_create(-1, 2), nullptr);
    EXPECT_EQ(nq_Matrix_create(2, -1), nullptr);
    Matrix *none = nq_Matrix_create(3, 0);
    ASSERT_NE(none, nullptr);
    int n = -1;
    EXPECT_EQ(nq_Matrix_numberRows(&n, none), 0);  // no first column to count
    EXPECT_EQ(nq_Matrix_numberColumns(&n, none), 1);
    EXPECT_EQ(n, 0);
    nq_Matrix_destroy(none);
    Matrix *flat = nq_Matrix_create(0, 2);
    EXPECT_EQ(nq_Matrix_numberRows(&n, flat), 1);
    EXPECT_EQ(n, 0);
    nq_Matrix_destroy(flat);
}

TEST(Matrix, RowAndColumnCounts) {
    Matrix *m = nq_Matrix_create(2, 5);
    int rows = 0, cols = 0;
    EXPECT_EQ(nq_Matrix_numberRows(&rows, m), 1);
    EXPECT_EQ(nq_Matrix_numberColumns(&cols, m), 1);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(cols, 5);
    EXPECT_EQ(nq_Matrix_numberRows(nullptr, m), 0);
    EXPECT_EQ(nq_Matrix_numberColumns(&cols, nullptr), 0);
    nq_Matrix_destroy(m);
}

TEST(Matrix, ElementAccessBounds) {
    Matrix *m = nq_Matrix_create(2, 3);
    EXPECT_EQ(nq_Matrix_setElement(m, 1, 2, 4.5), 1);
    double v = 0;
    EXPECT_EQ(nq_Matrix_getElement(&v, m, 1, 2), 1);
    EXPECT_EQ(v, 4.5);
    // A row beyond the last is the column's own refusal; a column beyond the last is 0.
    EXPECT_EQ(nq_Matrix_setElement(m, 2, 0, 1), 0);
    EXPECT_EQ(nq_Matrix_setElement(m, 0, 3, 1), 0);
    EXPECT_EQ(nq_Matrix_setElement(m, 0, -1, 1), 0);
    EXPECT_EQ(nq_Matrix_getElement(&v, m, 2, 0), 0);
    EXPECT_EQ(nq_Matrix_getElement(&v, m, 0, 3), 0);
    EXPECT_EQ(nq_Matrix_getElement(&v, m, -1, 0), 0);
    EXPECT_EQ(nq_Matrix_getElement(nullptr, m, 0, 0), 0);
    EXPECT_EQ(nq_Matrix_getElement(&v, nullptr, 0, 0), 0);
    EXPECT_EQ(nq_Matrix_setElement(nullptr, 0, 0, 1), 0);
    EXPECT_EQ(v, 4.5);
    nq_Matrix_destroy(m);
}

TEST(Matrix, GetAndSetColumn) {
    Matrix *m = make({{1, 2}, {3, 4}, {5, 6}});
    Ntuple *t = nq_Ntuple_create(3);
    EXPECT_EQ(nq_Matrix_getColumn(t, m, 1), 1);
    EXPECT_EQ(values(t), (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(nq_Matrix_getColumn(t, m, 2), 0);
    Ntuple *n = tuple({7, 8, 9});
    EXPECT_EQ(nq_Matrix_setColumn(m, 0, n), 1);
    EXPECT_TRUE(matrix_near(m, {{7, 2}, {8, 4}, {9, 6}}, 0));
    EXPECT_EQ(nq_Matrix_setColumn(m, 2, n), 0);
    Ntuple *shorter = tuple({1, 1});
    EXPECT_EQ(nq_Matrix_setColumn(m, 0, shorter), 0);
    EXPECT_EQ(nq_Matrix_getColumn(shorter, m, 0), 0);
    EXPECT_EQ(nq_Matrix_setColumn(m, 0, nullptr), 0);
    EXPECT_EQ(nq_Matrix_getColumn(nullptr, m, 0), 0);
    nq_Ntuple_destroy(t);
    nq_Ntuple_destroy(n);
    nq_Ntuple_destroy(shorter);
    nq_Matrix_destroy(m);
}

TEST(Matrix, GetRowNeedsATupleOfTheColumnCount) {
    Matrix *m = make({{1, 2, 3}, {4, 5, 6}});
    Ntuple *row = nq_Ntuple_create(3), *wrong = nq_Ntuple_create(2);
    EXPECT_EQ(nq_Matrix_getRow(row, m, 1), 1);
    EXPECT_EQ(values(row), (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(nq_Matrix_getRow(wrong, m, 0), 0);
    EXPECT_EQ(nq_Matrix_getRow(row, m, 2), 0);
    EXPECT_EQ(nq_Matrix_getRow(nullptr, m, 0), 0);
    nq_Ntuple_destroy(row);
    nq_Ntuple_destroy(wrong);
    nq_Matrix_destroy(m);
}

TEST(Matrix, SetRowChecksTheRowNumber) {
    Matrix *m = nq_Matrix_create(2, 3);
    Ntuple *row = tuple({7, 8, 9});
    EXPECT_EQ(nq_Matrix_setRow(m, 1, row), 1);
    EXPECT_TRUE(matrix_near(m, {{1, 0, 0}, {7, 8, 9}}, 0));
    EXPECT_EQ(nq_Matrix_setRow(m, 2, row), 0);
    EXPECT_EQ(nq_Matrix_setRow(m, -1, row), 0);
    Ntuple *shorter = tuple({5, 5});
    EXPECT_EQ(nq_Matrix_setRow(m, 0, shorter), 0);  // stops at the missing third value
    EXPECT_TRUE(matrix_near(m, {{5, 5, 0}, {7, 8, 9}}, 0));
    EXPECT_EQ(nq_Matrix_setRow(m, 0, nullptr), 0);
    nq_Ntuple_destroy(row);
    nq_Ntuple_destroy(shorter);
    nq_Matrix_destroy(m);
}

TEST(Matrix, CopyNeedsTheSameShape) {
    Matrix *a = make({{1, 2}, {3, 4}}), *b = nq_Matrix_create(2, 2), *c = nq_Matrix_create(2, 3),
           *d = nq_Matrix_create(3, 2);
    EXPECT_EQ(nq_Matrix_copy(b, a), 1);
    EXPECT_TRUE(matrix_near(b, {{1, 2}, {3, 4}}, 0));
    EXPECT_EQ(nq_Matrix_copy(c, a), 0);
    EXPECT_EQ(nq_Matrix_copy(d, a), 0);
    EXPECT_EQ(nq_Matrix_copy(nullptr, a), 0);
    EXPECT_EQ(nq_Matrix_copy(b, nullptr), 0);
    for (Matrix *m : {a, b, c, d}) nq_Matrix_destroy(m);
}

TEST(Matrix, AddSubtractAndScale) {
    Matrix *a = make({{1, 2}, {3, 4}}), *b = make({{10, 20}, {30, 40}}), *out = nq_Matrix_create(2, 2);
    EXPECT_EQ(nq_Matrix_add(out, a, b), 1);
    EXPECT_TRUE(matrix_near(out, {{11, 22}, {33, 44}}, 0));
    EXPECT_EQ(nq_Matrix_subtract(out, b, a), 1);
    EXPECT_TRUE(matrix_near(out, {{9, 18}, {27, 36}}, 0));
    EXPECT_EQ(nq_Matrix_scale(out, a, -2), 1);
    EXPECT_TRUE(matrix_near(out, {{-2, -4}, {-6, -8}}, 0));
    EXPECT_EQ(nq_Matrix_scale(a, a, 0.5), 1);
    EXPECT_TRUE(matrix_near(a, {{0.5, 1}, {1.5, 2}}, 0));
    Matrix *wide = nq_Matrix_create(2, 3);
    EXPECT_EQ(nq_Matrix_add(wide, a, b), 0);
    EXPECT_EQ(nq_Matrix_subtract(out, a, wide), 0);
    EXPECT_EQ(nq_Matrix_scale(wide, a, 1), 0);
    EXPECT_EQ(nq_Matrix_add(nullptr, a, b), 0);
    for (Matrix *m : {a, b, out, wide}) nq_Matrix_destroy(m);
}

TEST(Matrix, MultiplyRectangular) {
    Matrix *a = make({{1, 2, 3}, {4, 5, 6}}), *b = make({{7, 8}, {9, 10}, {11, 12}}),
           *out = nq_Matrix_create(2, 2);
    EXPECT_EQ(nq_Matrix_multiply(out, a, b), 1);
    EXPECT_TRUE(matrix_near(out, {{58, 64}, {139, 154}}, 0));
    Matrix *big = nq_Matrix_create(3, 3);
    EXPECT_EQ(nq_Matrix_multiply(big, b, a), 1);
    EXPECT_TRUE(matrix_near(big, {{39, 54, 69}, {49, 68, 87}, {59, 82, 105}}, 0));
    for (Matrix *m : {a, b, out, big}) nq_Matrix_destroy(m);
}

TEST(Matrix, MultiplyIntoEitherOperand) {
    Matrix *a = make({{1, 2}, {3, 4}}), *b = make({{5, 6}, {7, 8}});
    EXPECT_EQ(nq_Matrix_multiply(b, a, b), 1);
    EXPECT_TRUE(matrix_near(b, {{19, 22}, {43, 50}}, 0));
    Matrix *c = make({{5, 6}, {7, 8}});
    EXPECT_EQ(nq_Matrix_multiply(a, a, c), 1);
    EXPECT_TRUE(matrix_near(a, {{19, 22}, {43, 50}}, 0));
    for (Matrix *m : {a, b, c}) nq_Matrix_destroy(m);
}

TEST(Matrix, MultiplyWithMismatchedShapesFailsAndLeavesDst) {
    Matrix *a = make({{1, 2, 3}, {4, 5, 6}}), *b = make({{1, 2}, {3, 4}}), *out = make({{9, 9}, {9, 9}});
    EXPECT_EQ(nq_Matrix_multiply(out, a, b), 0);  // 3 columns against 2 rows
    Matrix *wrong = nq_Matrix_create(3, 3);
    EXPECT_EQ(nq_Matrix_multiply(wrong, b, b), 0);  // the product is 2 by 2
    EXPECT_TRUE(matrix_near(out, {{9, 9}, {9, 9}}, 0));
    EXPECT_EQ(nq_Matrix_multiply(nullptr, b, b), 0);
    EXPECT_EQ(nq_Matrix_multiply(out, nullptr, b), 0);
    EXPECT_EQ(nq_Matrix_multiply(out, b, nullptr), 0);
    for (Matrix *m : {a, b, out, wrong}) nq_Matrix_destroy(m);
}

TEST(Matrix, TransposeRectangularAndInPlace) {
    Matrix *a = make({{1, 2, 3}, {4, 5, 6}}), *t = nq_Matrix_create(3, 2);
    EXPECT_EQ(nq_Matrix_transpose(t, a), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 4}, {2, 5}, {3, 6}}, 0));
    Matrix *s = make({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    EXPECT_EQ(nq_Matrix_transpose(s, s), 1);
    EXPECT_TRUE(matrix_near(s, {{1, 4, 7}, {2, 5, 8}, {3, 6, 9}}, 0));
    for (Matrix *m : {a, t, s}) nq_Matrix_destroy(m);
}

TEST(Matrix, TransposeNeedsTheTurnedShape) {
    Matrix *a = make({{1, 2, 3}, {4, 5, 6}}), *same = make({{0, 0, 0}, {0, 0, 0}});
    EXPECT_EQ(nq_Matrix_transpose(same, a), 0);
    EXPECT_TRUE(matrix_near(same, {{0, 0, 0}, {0, 0, 0}}, 0));
    EXPECT_EQ(nq_Matrix_transpose(nullptr, a), 0);
    EXPECT_EQ(nq_Matrix_transpose(same, nullptr), 0);
    nq_Matrix_destroy(a);
    nq_Matrix_destroy(same);
}

TEST(Matrix, TransposeKeepsGoingPastAColumnThatCannotMove) {
    // A hand-made source whose second column is short: its row of the result keeps what
    // the fresh temporary had, and the transpose still reports success.
    Matrix *src = static_cast<Matrix *>(nq_Malloc(sizeof(Matrix)));
    src->columns = 2;
    src->items = static_cast<Ntuple **>(nq_Malloc(2 * sizeof(Ntuple *)));
    src->items[0] = tuple({1, 2, 3});
    src->items[1] = tuple({4, 5});
    Matrix *dst = make({{9, 9, 9}, {9, 9, 9}});
    EXPECT_EQ(nq_Matrix_transpose(dst, src), 1);
    EXPECT_TRUE(matrix_near(dst, {{1, 2, 3}, {0, 1, 0}}, 0));
    nq_Matrix_destroy(src);
    nq_Matrix_destroy(dst);
}

TEST(Matrix, PrintByRows) {
    Matrix *m = make({{1, 2}, {3, -4.5}});
    FILE *f = std::tmpfile();
    EXPECT_EQ(nq_Matrix_print(m, f), 1);
    EXPECT_EQ(read_stream(f), "1.000000 2.000000 \n3.000000 -4.500000 \n");
    std::fclose(f);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Matrix_print(m, nullptr), 1);
    EXPECT_EQ(nq_Matrix_print(nullptr, nullptr), 0);
    EXPECT_EQ(out.stop(), "1.000000 2.000000 \n3.000000 -4.500000 \n");
    nq_Matrix_destroy(m);
}

TEST(TMatrix, CreateIsTheFourByFourIdentity) {
    TMatrix *t = nq_TMatrix_create();
    ASSERT_NE(t, nullptr);
    EXPECT_TRUE(matrix_near(t, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, 0));
    EXPECT_EQ(nq_TMatrix_destroy(t), 1);
    EXPECT_EQ(nq_TMatrix_destroy(nullptr), 0);
}

TEST(TMatrix, SetFillsRowByRowAndFixesTheLastRow) {
    TMatrix *t = nq_TMatrix_create();
    nq_Matrix_setElement(t, 3, 0, 7);
    EXPECT_EQ(nq_TMatrix_set(t, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {0, 0, 0, 1}}, 0));
    EXPECT_EQ(nq_TMatrix_setIdentity(t), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, 0));
    EXPECT_EQ(nq_TMatrix_set(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12), 0);
    EXPECT_EQ(nq_TMatrix_setIdentity(nullptr), 0);
    Matrix *small = nq_Matrix_create(3, 3);
    EXPECT_EQ(nq_TMatrix_setIdentity(small), 0);
    nq_Matrix_destroy(small);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, OriginAccess) {
    TMatrix *t = nq_TMatrix_create();
    Point o = P(1, 2, 3), out;
    EXPECT_EQ(nq_TMatrix_setOrigin(t, &o), 1);
    EXPECT_EQ(nq_TMatrix_getOrigin(&out, t), 1);
    EXPECT_TRUE(near(out, 1, 2, 3, 0));
    EXPECT_TRUE(matrix_near(t, {{1, 0, 0, 1}, {0, 1, 0, 2}, {0, 0, 1, 3}, {0, 0, 0, 1}}, 0));
    EXPECT_EQ(nq_TMatrix_setOrigin(t, nullptr), 0);
    EXPECT_EQ(nq_TMatrix_getOrigin(nullptr, t), 0);
    EXPECT_EQ(nq_TMatrix_getOrigin(&out, nullptr), 0);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, RotationPartAccess) {
    TMatrix *t = nq_TMatrix_create();
    RotMatrix *r = nq_RotMatrix_create();
    nq_RotMatrix_set(r, 1, 2, 3, 4, 5, 6, 7, 8, 9);
    nq_Matrix_setElement(t, 3, 1, 5);  // the last row is rewritten
    Point o = P(-1, -2, -3);
    nq_TMatrix_setOrigin(t, &o);
    EXPECT_EQ(nq_TMatrix_setRMatrix(t, r), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 2, 3, -1}, {4, 5, 6, -2}, {7, 8, 9, -3}, {0, 0, 0, 1}}, 0));
    RotMatrix *back = nq_RotMatrix_create();
    EXPECT_EQ(nq_TMatrix_getRMatrix(back, t), 1);
    EXPECT_TRUE(matrix_near(back, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, 0));
    EXPECT_EQ(nq_TMatrix_setRMatrix(t, nullptr), 0);
    EXPECT_EQ(nq_TMatrix_getRMatrix(nullptr, t), 0);
    nq_RotMatrix_destroy(r);
    nq_RotMatrix_destroy(back);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, CreateForTranslation) {
    TMatrix *t = nq_TMatrix_create();
    nq_TMatrix_set(t, 0, 1, 0, 9, 1, 0, 0, 9, 0, 0, 1, 9);
    Point from = P(1, 1, 1), to = P(4, -1, 2);
    EXPECT_EQ(nq_TMatrix_createForTranslation(t, &from, &to), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 0, 0, 3}, {0, 1, 0, -2}, {0, 0, 1, 1}, {0, 0, 0, 1}}, 0));
    Point moved;
    nq_TMatrix_xform(&moved, t, &from);
    EXPECT_TRUE(near(moved, 4, -1, 2));
    EXPECT_EQ(nq_TMatrix_createForTranslation(t, nullptr, &to), 0);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, XformOfTheOriginGivesTheMatrixOrigin) {
    TMatrix *t = nq_TMatrix_create();
    nq_TMatrix_set(t, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12);
    Point zero = P(0, 0, 0), out;
    EXPECT_EQ(nq_TMatrix_xform(&out, t, &zero), 1);
    EXPECT_TRUE(near(out, 4, 8, 12, 0));
    Point p = P(1, 2, 3);
    EXPECT_EQ(nq_TMatrix_xform(&out, t, &p), 1);
    EXPECT_TRUE(near(out, 18, 46, 74, 0));
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, XformIgnoresTheLastRow) {
    TMatrix *t = nq_TMatrix_create();
    nq_Matrix_setElement(t, 3, 3, 2);  // a projective row that is never used
    nq_Matrix_setElement(t, 3, 0, 5);
    Point p = P(1, 2, 3), out;
    EXPECT_EQ(nq_TMatrix_xform(&out, t, &p), 1);
    EXPECT_TRUE(near(out, 1, 2, 3, 0));
    EXPECT_EQ(nq_TMatrix_xform(nullptr, t, &p), 0);
    EXPECT_EQ(nq_TMatrix_xform(&out, nullptr, &p), 0);
    EXPECT_EQ(nq_TMatrix_xform(&out, t, nullptr), 0);
    Matrix *small = nq_Matrix_create(3, 3);
    EXPECT_EQ(nq_TMatrix_xform(&out, small, &p), 0);
    nq_Matrix_destroy(small);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, RotateKeepsTheOriginAndForgetsTheRotation) {
    TMatrix *src = nq_TMatrix_create(), *dst = nq_TMatrix_create();
    nq_TMatrix_set(src, 0, -1, 0, 5, 1, 0, 0, 6, 0, 0, 1, 7);
    EXPECT_EQ(nq_TMatrix_rotate(dst, src, 0, 0, M_PI / 2), 1);
    EXPECT_TRUE(matrix_near(dst, {{0, -1, 0, 5}, {1, 0, 0, 6}, {0, 0, 1, 7}, {0, 0, 0, 1}}, 1e-12));
    // The same call again does not turn twice: src's rotation never enters.
    EXPECT_EQ(nq_TMatrix_rotate(src, src, M_PI / 2, 0, 0), 1);
    EXPECT_TRUE(matrix_near(src, {{1, 0, 0, 5}, {0, 0, -1, 6}, {0, 1, 0, 7}, {0, 0, 0, 1}}, 1e-12));
    EXPECT_EQ(nq_TMatrix_rotate(nullptr, src, 0, 0, 0), 0);
    EXPECT_EQ(nq_TMatrix_rotate(dst, nullptr, 0, 0, 0), 0);
    nq_TMatrix_destroy(src);
    nq_TMatrix_destroy(dst);
}

TEST(TMatrix, FromUCSOfShiftedSystemsIsAPureTranslation) {
    TMatrix *t = nq_TMatrix_create();
    nq_TMatrix_set(t, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0);
    Point p1 = P(1, 1, 1), p2 = P(3, 2, 1), p3 = P(0, 4, 2);
    Point p4 = P(6, -1, 2), p5 = P(8, 0, 2), p6 = P(5, 2, 3);
    EXPECT_EQ(nq_TMatrix_createFromUCS(t, &p1, &p2, &p3, &p4, &p5, &p6), 1);
    EXPECT_TRUE(matrix_near(t, {{1, 0, 0, 5}, {0, 1, 0, -2}, {0, 0, 1, 1}, {0, 0, 0, 1}}, 0));
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, FromUCSMapsTheFirstSystemOntoTheSecond) {
    TMatrix *t = nq_TMatrix_create();
    Point p1 = P(1, 2, 3), p2 = P(3, 2, 3), p3 = P(1, 5, 3);
    Point p4 = P(10, 0, 0), p5 = P(10, 2, 0), p6 = P(7, 0, 0);
    EXPECT_EQ(nq_TMatrix_createFromUCS(t, &p1, &p2, &p3, &p4, &p5, &p6), 1);
    Point out;
    nq_TMatrix_xform(&out, t, &p1);
    EXPECT_TRUE(near(out, 10, 0, 0));
    nq_TMatrix_xform(&out, t, &p2);
    EXPECT_TRUE(near(out, 10, 2, 0));
    nq_TMatrix_xform(&out, t, &p3);
    EXPECT_TRUE(near(out, 7, 0, 0));
    EXPECT_TRUE(matrix_near(t, {{0, -1, 0, 12}, {1, 0, 0, -1}, {0, 0, 1, -3}, {0, 0, 0, 1}}, 1e-12));
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, FromUCSOfATurnedAndShiftedCopy) {
    // The second system is the first turned about (1, 2, 3) by 0.7 and moved by (4, -5, 6):
    // every point must go where that motion takes it.
    RotMatrix *r = nq_RotMatrix_create();
    Vector axis = {1, 2, 3};
    ASSERT_EQ(nq_RotMatrix_fromRotAxisAndAngle(r, &axis, 0.7), 1);
    auto motion = [&](Point p) {
        nq_RotMatrix_rotatePoint(&p, r);
        return P(p.x + 4, p.y - 5, p.z + 6);
    };
    Point p1 = P(1, 0, 2), p2 = P(4, 1, 2), p3 = P(0, 3, -1);
    Point p4 = motion(p1), p5 = motion(p2), p6 = motion(p3);
    TMatrix *t = nq_TMatrix_create();
    EXPECT_EQ(nq_TMatrix_createFromUCS(t, &p1, &p2, &p3, &p4, &p5, &p6), 1);
    for (Point q : {p1, p2, p3, P(7, -3, 2.5)}) {
        Point got, want = motion(q);
        nq_TMatrix_xform(&got, t, &q);
        EXPECT_TRUE(near(got, want.x, want.y, want.z, 1e-9));
    }
    nq_RotMatrix_destroy(r);
    nq_TMatrix_destroy(t);
}

TEST(TMatrix, FromUCSWithDegenerateOrNullInput) {
    TMatrix *t = nq_TMatrix_create();
    Point a = P(0, 0, 0), b = P(1, 0, 0), c = P(0, 1, 0), far = P(5, 5, 5);
    // A first system with all three points on one line: the operation still reports 1
    // and leaves finite numbers.
    Point l1 = P(0, 0, 0), l2 = P(1, 0, 0), l3 = P(2, 0, 0);
    EXPECT_EQ(nq_TMatrix_createFromUCS(t, &l1, &l2, &l3, &far, &b, &c), 1);
    for (const auto &row : geotest::rows_of(t))
        for (double v : row) EXPECT_TRUE(std::isfinite(v));
    EXPECT_EQ(nq_TMatrix_createFromUCS(nullptr, &a, &b, &c, &a, &b, &c), 0);
    EXPECT_EQ(nq_TMatrix_createFromUCS(t, &a, &b, &c, &a, &b, nullptr), 0);
    nq_TMatrix_destroy(t);
}

TEST(Matrix, EveryFunctionTracesEnteringAndLeaving) {
    Matrix *a = make({{1, 2}, {3, 4}}), *b = make({{5, 6}, {7, 8}}), *out = nq_Matrix_create(2, 2);
    Ntuple *t = nq_Ntuple_create(2);
    Matrix *made = nullptr;
    double d;
    int n;
    FILE *sink = std::tmpfile();
    struct Case {
        const char *entry;
        const char *exit;
        std::function<void()> call;
    } cases[] = {
        {"nq_Matrix_create", "nq_Matrix_create", [&] { made = nq_Matrix_create(2, 2); }},
        {"nq_Matrix_destroy", "nq_Matrix_destroy", [&] { nq_Matrix_destroy(made); }},
        {"nq_Matrix_numberRows", "nq_Matrix_numberRows", [&] { nq_Matrix_numberRows(&n, a); }},
        {"nq_Matrix_numberCols", "nq_Matrix_numberCols", [&] { nq_Matrix_numberColumns(&n, a); }},
        {"nq_Matrix_getElement", "nq_Matrix_getElement", [&] { nq_Matrix_getElement(&d, a, 0, 0); }},
        {"nq_Matrix_setElement", "nq_Matrix_setElement", [&] { nq_Matrix_setElement(out, 0, 0, 1); }},
        {"nq_Matrix_getColumn", "nq_Matrix_getColumn", [&] { nq_Matrix_getColumn(t, a, 0); }},
        {"nq_Matrix_setColumn", "nq_Matrix_setColumn", [&] { nq_Matrix_setColumn(out, 0, t); }},
        {"nq_Matrix_getRow", "nq_Matrix_getRow", [&] { nq_Matrix_getRow(t, a, 0); }},
        {"nq_Matrix_setRow", "nq_Matrix_setRow", [&] { nq_Matrix_setRow(out, 0, t); }},
        {"nq_Matrix_copy", "nq_Matrix_copy", [&] { nq_Matrix_copy(out, a); }},
        {"nq_Matrix_add", "nq_Matrix_add", [&] { nq_Matrix_add(out, a, b); }},
        {"nq_Matrix_subtract", "nq_Matrix_subtract", [&] { nq_Matrix_subtract(out, a, b); }},
        {"nq_Matrix_scale", "nq_Matrix_scale", [&] { nq_Matrix_scale(out, a, 2); }},
        {"nq_Matrix_multiply", "nq_Matrix_multiply", [&] { nq_Matrix_multiply(out, a, b); }},
        {"nq_Matrix_transpose", "nq_Matrix_transpose", [&] { nq_Matrix_transpose(out, a); }},
        {"nq_Matrix_print", "nq_Matrix_print", [&] { nq_Matrix_print(a, sink); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_MATRIX, "matrix.cpp", std::string("Entering ") + k.entry + ".",
                              std::string("Leaving ") + k.exit + ".", k.call);
    std::fclose(sink);
    nq_Ntuple_destroy(t);
    for (Matrix *m : {a, b, out}) nq_Matrix_destroy(m);
}

TEST(TMatrix, EveryFunctionTracesEnteringAndLeaving) {
    TMatrix *t = nq_TMatrix_create(), *u = nq_TMatrix_create(), *made = nullptr;
    RotMatrix *r = nq_RotMatrix_create();
    Point a = P(0, 0, 0), b = P(1, 0, 0), c = P(0, 1, 0), d = P(2, 0, 0), e = P(2, 1, 0), f = P(1, 0, 0), out;
    struct Case {
        const char *entry;
        const char *exit;
        std::function<void()> call;
    } cases[] = {
        {"nq_TMatrix_create", "nq_TMatrix_create", [&] { made = nq_TMatrix_create(); }},
        {"nq_TMatrix_destroy", "nq_TMatrix_destroy", [&] { nq_TMatrix_destroy(made); }},
        {"nq_TMatrix_set", "nq_TMatrix_set", [&] { nq_TMatrix_set(t, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0); }},
        {"nq_TMatrix_setIdentity", "nq_TMatrix_setIdentity", [&] { nq_TMatrix_setIdentity(t); }},
        {"nq_TMatrix_getOrigin", "nq_TMatrix_getOrigin", [&] { nq_TMatrix_getOrigin(&out, t); }},
        {"nq_TMatrix_setOrigin", "nq_TMatrix_setOrigin", [&] { nq_TMatrix_setOrigin(t, &a); }},
        {"nq_TMatrix_getRMatrix", "nq_TMatrix_getRMatrix", [&] { nq_TMatrix_getRMatrix(r, t); }},
        // Its exit text names the origin setter.
        {"nq_TMatrix_setRMatrix", "nq_TMatrix_setOrigin", [&] { nq_TMatrix_setRMatrix(t, r); }},
        {"nq_TMatrix_createForTranslation", "nq_TMatrix_createForTranslation",
         [&] { nq_TMatrix_createForTranslation(t, &a, &b); }},
        {"nq_TMatrix_createFromUCS", "nq_TMatrix_createFromUCS",
         [&] { nq_TMatrix_createFromUCS(t, &a, &b, &c, &d, &e, &f); }},
        {"nq_TMatrix_rotate", "nq_TMatrix_rotate", [&] { nq_TMatrix_rotate(u, t, 0, 0, 1); }},
        {"nq_TMatrix_xform", "nq_TMatrix_xform", [&] { nq_TMatrix_xform(&out, t, &b); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_MATRIX, "matrix.cpp", std::string("Entering ") + k.entry + ".",
                              std::string("Leaving ") + k.exit + ".", k.call);
    nq_TMatrix_destroy(t);
    nq_TMatrix_destroy(u);
    nq_RotMatrix_destroy(r);
}

TEST(Ntuple, EveryFunctionTracesEnteringAndLeaving) {
    Ntuple *a = tuple({1, 2}), *b = tuple({3, 4}), *out = nq_Ntuple_create(2), *made = nullptr;
    Vector v = {1, 2, 3};
    double d;
    FILE *sink = std::tmpfile();
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_Ntuple_create", [&] { made = nq_Ntuple_create(2); }},
        {"nq_Ntuple_destroy", [&] { nq_Ntuple_destroy(made); }},
        {"nq_Ntuple_getElement", [&] { nq_Ntuple_getElement(&d, a, 0); }},
        {"nq_Ntuple_setElement", [&] { nq_Ntuple_setElement(out, 0, 1); }},
        {"nq_Ntuple_copy", [&] { nq_Ntuple_copy(out, a); }},
        {"nq_Ntuple_add", [&] { nq_Ntuple_add(out, a, b); }},
        {"nq_Ntuple_subtract", [&] { nq_Ntuple_subtract(out, a, b); }},
        {"nq_Ntuple_scale", [&] { nq_Ntuple_scale(out, a, 2); }},
        {"nq_Ntuple_dotProduct", [&] { nq_Ntuple_dotProduct(&d, a, b); }},
        {"nq_Ntuple_fromVector", [&] { made = nq_Ntuple_fromVector(&v); }},
        {"nq_Ntuple_print", [&] { nq_Ntuple_print(a, sink); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_NTUPLE, "ntuple.cpp", std::string("Entering ") + k.name + ".",
                              std::string("Leaving ") + k.name + ".", k.call);
    std::fclose(sink);
    for (Ntuple *t : {a, b, out, made}) nq_Ntuple_destroy(t);
}

TEST(Matrix, FamiliesTraceOnlyUnderTheirOwnBits) {
    Matrix *m = nq_Matrix_create(2, 2);
    double d;
    geotest::expect_silent(NQ_DIAG_MATRIX, 2, [&] { nq_Matrix_getElement(&d, m, 0, 0); });
    // Under the n-tuple bit alone only the column's own access speaks.
    {
        geotest::TraceCapture capture(NQ_DIAG_NTUPLE);
        nq_Matrix_getElement(&d, m, 0, 0);
        auto lines = capture.lines();
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[0].message, "Entering nq_Ntuple_getElement.");
        EXPECT_EQ(lines[1].message, "Leaving nq_Ntuple_getElement.");
    }
    geotest::expect_silent(NQ_DIAG_POINT | NQ_DIAG_VECTOR, 3, [&] { nq_Matrix_getElement(&d, m, 0, 0); });
    nq_Matrix_destroy(m);
}
