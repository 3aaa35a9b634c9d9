// Rows per second of a forward walk over a 100 000-row SQLite table: nq_Db_topRec and
// nq_Db_nextRec through the ODBC driver manager and the SQLite driver, against a loop over
// the same file through the sqlite3 library that reads every column as UTF-16 text, as the
// bound buffers do. Each walk runs three times and the best time counts.
#include <sqlite3.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "nq_tls20an.h"

namespace {

constexpr int kRows = 100000;
constexpr int kRuns = 3;

using Clock = std::chrono::steady_clock;

bool run(sqlite3 *db, const char *sql) {
    char *error = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &error) == SQLITE_OK) return true;
    std::fprintf(stderr, "sqlite: %s\n", error ? error : "?");
    sqlite3_free(error);
    return false;
}

bool make_table(const std::string &path) {
    sqlite3 *db = nullptr;
    if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) return false;
    bool ok = run(db, "CREATE TABLE walk (NAME VARCHAR(20), QTY INTEGER, PRICE DOUBLE, NOTE VARCHAR(40));"
                      "BEGIN;");
    sqlite3_stmt *insert = nullptr;
    ok = ok && sqlite3_prepare_v2(db, "INSERT INTO walk VALUES (?1, ?2, ?3, ?4)", -1, &insert, nullptr) == SQLITE_OK;
    for (int i = 0; ok && i < kRows; ++i) {
        const std::string name = "pipe-" + std::to_string(i);
        const std::string note = "bend " + std::to_string(i % 90) + " degrees";
        sqlite3_bind_text(insert, 1, name.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_int(insert, 2, i % 1000);
        sqlite3_bind_double(insert, 3, i * 0.25);
        sqlite3_bind_text(insert, 4, note.c_str(), -1, SQLITE_TRANSIENT);
        ok = sqlite3_step(insert) == SQLITE_DONE && sqlite3_reset(insert) == SQLITE_OK;
    }
    sqlite3_finalize(insert);
    ok = ok && run(db, "COMMIT;");
    sqlite3_close(db);
    return ok;
}

// The walk through the library: seconds, and the rows seen.
double walk_library(int table, int *rows) {
    const auto start = Clock::now();
    *rows = 0;
    if (nq_Db_topRec(table) == 0) {
        do ++*rows;
        while (nq_Db_nextRec(table) == 0);
    }
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The same walk straight through sqlite3.
double walk_sqlite(const std::string &path, int *rows) {
    const auto start = Clock::now();
    *rows = 0;
    sqlite3 *db = nullptr;
    sqlite3_stmt *select = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
        sqlite3_prepare_v2(db, "SELECT * FROM walk", -1, &select, nullptr) == SQLITE_OK) {
        const int columns = sqlite3_column_count(select);
        volatile std::size_t bytes = 0;
        while (sqlite3_step(select) == SQLITE_ROW) {
            for (int c = 0; c < columns; ++c) {
                sqlite3_column_text16(select, c);
                bytes = bytes + std::size_t(sqlite3_column_bytes16(select, c));
            }
            ++*rows;
        }
    }
    sqlite3_finalize(select);
    sqlite3_close(db);
    return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

int main() {
    char pattern[] = "/tmp/nq-bench-db-XXXXXX";
    if (!mkdtemp(pattern)) return 1;
    const std::string folder = pattern;

    // A private ODBC setup, as the tests use.
    const std::string command = std::string("'") + NQ_SOURCE_DIR + "/odbc/write-odbc-setup.sh' '" + folder + "/odbc'";
    FILE *pipe = popen(command.c_str(), "r");
    char printed[4096] = {};
    const bool setup = pipe && std::fgets(printed, sizeof printed, pipe);
    if (pipe) pclose(pipe);
    if (!setup) {
        std::fprintf(stderr, "cannot write the ODBC setup\n");
        return 1;
    }
    std::string sysini = printed;
    while (!sysini.empty() && (sysini.back() == '\n' || sysini.back() == '\r')) sysini.pop_back();
    setenv("ODBCSYSINI", sysini.c_str(), 1);
    setenv("ODBCINI", (sysini + "/odbc.ini").c_str(), 1);

    const std::string path = folder + "/walk.db3";
    if (!make_table(path)) return 1;
    std::u16string name = u"C:";
    for (char c : path) name += c == '/' ? u'\\' : char16_t(c);
    const int table = nq_Db_openDb(name.c_str());
    if (table < 0) {
        std::fprintf(stderr, "cannot open %s\n", path.c_str());
        return 1;
    }

    double best_library = 1e9, best_sqlite = 1e9;
    int rows_library = 0, rows_sqlite = 0;
    for (int run = 0; run < kRuns; ++run) {
        best_library = std::min(best_library, walk_library(table, &rows_library));
        best_sqlite = std::min(best_sqlite, walk_sqlite(path, &rows_sqlite));
    }
    nq_Db_closeDb(table);

    const double library_rate = rows_library / best_library;
    const double sqlite_rate = rows_sqlite / best_sqlite;
    std::printf("db_walk: %d rows, best of %d walks\n", kRows, kRuns);
    std::printf("  nq_Db_topRec + nq_Db_nextRec over ODBC: %8d rows in %.3f s = %12.0f rows/s\n", rows_library,
                best_library, library_rate);
    std::printf("  sqlite3 C API, columns as UTF-16 text:  %8d rows in %.3f s = %12.0f rows/s\n", rows_sqlite,
                best_sqlite, sqlite_rate);
    std::printf("  ratio sqlite3 / library: %.2f\n", sqlite_rate / library_rate);

    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
    return rows_library == kRows && rows_sqlite == kRows ? 0 : 1;
}
