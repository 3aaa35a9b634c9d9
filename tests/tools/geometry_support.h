// Helpers shared by the geometry tests: the trace log of one call, and close comparisons.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "nq_tls20an.h"
#include "test_support.h"

namespace geotest {

inline std::u16string W(const std::string &s) { return std::u16string(s.begin(), s.end()); }

// One line of the log: "<file> (<line>) <message>". A blank line has an empty file.
struct TraceLine {
    std::string file;
    int line = 0;
    std::string message;
};

inline std::vector<TraceLine> parse_log(const std::string &log) {
    std::vector<TraceLine> lines;
    std::istringstream in(log);
    std::string raw;
    while (std::getline(in, raw)) {
        TraceLine t;
        size_t open = raw.find(" (");
        size_t close = raw.find(") ", open == std::string::npos ? 0 : open);
        if (open != std::string::npos && close != std::string::npos) {
            t.file = raw.substr(0, open);
            t.line = std::stoi(raw.substr(open + 2, close - open - 2));
            t.message = raw.substr(close + 2);
        }
        lines.push_back(t);
    }
    return lines;
}

// Sends the trace to a log file at the given level and mask for as long as it lives.
class TraceCapture {
public:
    explicit TraceCapture(uint32_t mask, int16_t level = 3) {
        path_ = dir_.file("trace.log");
        EXPECT_EQ(nq_Diag_setOutput(2, W(path_).c_str()), 1);
        nq_Diag_setLevel(level);
        nq_Diag_setCondition(mask);
    }
    ~TraceCapture() {
        nq_Diag_disable();
        nq_Diag_setOutput(1, nullptr);
    }
    std::string text() const { return nqtest::read_file(path_); }
    std::vector<TraceLine> lines() const { return parse_log(text()); }

private:
    nqtest::TempDir dir_;
    std::string path_;
};

// The trace of one call under one bit: its first line must be the entry text and its last
// the exit text, both from the given source file.
inline void expect_frame(uint32_t bit, const std::string &file, const std::string &entry,
                         const std::string &exit, const std::function<void()> &call) {
    SCOPED_TRACE(entry);
    std::vector<TraceLine> lines;
    {
        TraceCapture capture(bit);
        call();
        lines = capture.lines();
    }
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.front().file, file);
    EXPECT_EQ(lines.front().message, entry);
    EXPECT_EQ(lines.back().file, file);
    EXPECT_EQ(lines.back().message, exit);
    EXPECT_GT(lines.front().line, 0);
}

inline void expect_silent(uint32_t mask, int16_t level, const std::function<void()> &call) {
    TraceCapture capture(mask, level);
    call();
    EXPECT_EQ(capture.text(), "");
}

inline ::testing::AssertionResult near3(double x, double y, double z, double ex, double ey, double ez,
                                        double tol = 1e-9) {
    if (std::fabs(x - ex) <= tol && std::fabs(y - ey) <= tol && std::fabs(z - ez) <= tol)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << x << ", " << y << ", " << z << ") is not ("
                                         << ex << ", " << ey << ", " << ez << ")";
}

inline ::testing::AssertionResult near(const Vector &v, double x, double y, double z, double tol = 1e-9) {
    return near3(v.x, v.y, v.z, x, y, z, tol);
}
inline ::testing::AssertionResult near(const Point &p, double x, double y, double z, double tol = 1e-9) {
    return near3(p.x, p.y, p.z, x, y, z, tol);
}

// The elements of a matrix, row by row.
inline std::vector<std::vector<double>> rows_of(const Matrix *m) {
    std::vector<std::vector<double>> out;
    int rows = 0, cols = 0;
    if (!nq_Matrix_numberRows(&rows, m) || !nq_Matrix_numberColumns(&cols, m)) return out;
    for (int r = 0; r < rows; ++r) {
        std::vector<double> row;
        for (int c = 0; c < cols; ++c) {
            double v = -12345.0;
            EXPECT_EQ(nq_Matrix_getElement(&v, m, r, c), 1);
            row.push_back(v);
        }
        out.push_back(row);
    }
    return out;
}

inline ::testing::AssertionResult matrix_near(const Matrix *m, const std::vector<std::vector<double>> &expected,
                                              double tol = 1e-9) {
    auto actual = rows_of(m);
    if (actual.size() != expected.size()) return ::testing::AssertionFailure() << "row count differs";
    for (size_t r = 0; r < expected.size(); ++r) {
        if (actual[r].size() != expected[r].size()) return ::testing::AssertionFailure() << "column count differs";
        for (size_t c = 0; c < expected[r].size(); ++c)
            if (std::fabs(actual[r][c] - expected[r][c]) > tol)
                return ::testing::AssertionFailure() << "element (" << r << ", " << c << ") is " << actual[r][c]
                                                     << ", expected " << expected[r][c];
    }
    return ::testing::AssertionSuccess();
}

}  // namespace geotest
