// Helpers of the Db tests: a private ODBC setup for the whole test program, SQLite files
// made with the sqlite3 library, names in the library's form, and a record of what reached
// the driver manager.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "nq_tls20an.h"
#include "test_support.h"

namespace dbtest {

// Writes the private ODBC setup once per process (odbc/write-odbc-setup.sh into a
// temporary folder) and points ODBCSYSINI and ODBCINI at it. The ".dbf" data source names
// a driver file that does not exist, so its connection fails.
void ensure_odbc_setup();
// The folder of that setup.
const std::string &odbc_setup_folder();

// Runs SQL on a SQLite file (made if missing); fails the test with the library's message.
void sqlite_exec(const std::string &path, const std::string &sql);
// One text value of a query's first row and column, or "<null>" / "<none>".
std::string sqlite_value(const std::string &path, const std::string &sql);
// All rows of a query, columns joined by "|", NULL as "<null>".
std::vector<std::string> sqlite_rows(const std::string &path, const std::string &sql);

// "/tmp/x/pipe.db3" as the library writes it: "C:\tmp\x\pipe.db3".
std::u16string lib_name(const std::string &os_path);
std::u16string u16(const std::string &ascii);
std::string narrow(const nq_wchar *text);  // UTF-8; null gives "<null>"

// The texts given to SQLExecDirectW, SQLDriverConnectW and SQLConnectW, as they reached the
// driver manager, in order, since the last clear.
struct DriverCalls {
    std::vector<std::string> statements;
    std::vector<std::string> connections;
    std::vector<std::string> dataSources;
};
DriverCalls &driver_calls();
void clear_driver_calls();

// Reads a table's row by names, through nq_Db_getFldStr: "a|b|c".
std::string current_row(int table, const std::vector<const char16_t *> &names);

// A DbFldList from pairs (name, value, type letter); names kept as given.
DbFldList *record(const std::vector<std::tuple<const char16_t *, const char16_t *, char16_t>> &fields);
// "NAME=value:T" for each field, joined by " ".
std::string describe(DbFldList *list);

// Each test starts with empty registries and a private setup, and works in a folder of its
// own. Connections are never closed by the library, so the files stay open until the
// program ends; the folder goes all the same.
class DbTest : public ::testing::Test {
protected:
    void SetUp() override {
        ensure_odbc_setup();
        nq_Db_closeAll();
        clear_driver_calls();
    }
    void TearDown() override {
        for (int id = 0; id < 64; ++id) nq_Db_closeDb(id);
        nq_Db_closeAll();
    }
    // A SQLite file in the folder, made by running sql; its path.
    std::string make_db(const std::string &file, const std::string &sql) {
        const std::string path = dir.file(file);
        sqlite_exec(path, sql);
        return path;
    }
    // Opens a file by its name in the library's form.
    int open(const std::string &path) { return nq_Db_openDb(lib_name(path).c_str()); }

    nqtest::TempDir dir;
};

}  // namespace dbtest
