#include "db_test_support.h"

#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlite3.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <tuple>

namespace dbtest {

namespace {

std::string utf8(const SQLWCHAR *text, long length) {
    std::string out;
    if (!text) return "<null>";
    for (long i = 0; length == SQL_NTS ? text[i] != 0 : i < length; ++i) {
        const unsigned c = text[i];
        if (c < 0x80) {
            out += char(c);
        } else if (c < 0x800) {
            out += char(0xC0 | (c >> 6));
            out += char(0x80 | (c & 0x3F));
        } else {
            out += char(0xE0 | (c >> 12));
            out += char(0x80 | ((c >> 6) & 0x3F));
            out += char(0x80 | (c & 0x3F));
        }
    }
    return out;
}

template <typename Fn>
Fn next_definition(const char *name) {
    void *symbol = dlsym(RTLD_NEXT, name);
    if (!symbol) std::abort();
    return reinterpret_cast<Fn>(symbol);
}

}  // namespace

DriverCalls &driver_calls() {
    static DriverCalls calls;
    return calls;
}

void clear_driver_calls() { driver_calls() = DriverCalls{}; }

}  // namespace dbtest

// The test program stands in for three entry points of the driver manager: the library's
// calls reach these first, which note the text and pass the call on unchanged. They must be
// visible from the program, which is built with hidden symbols by default.
#define DB_SPY extern "C" __attribute__((visibility("default")))

DB_SPY SQLRETURN SQL_API SQLExecDirectW(SQLHSTMT stmt, SQLWCHAR *text, SQLINTEGER length) {
    using Fn = SQLRETURN (*)(SQLHSTMT, SQLWCHAR *, SQLINTEGER);
    static Fn real = dbtest::next_definition<Fn>("SQLExecDirectW");
    dbtest::driver_calls().statements.push_back(dbtest::utf8(text, length));
    return real(stmt, text, length);
}

DB_SPY SQLRETURN SQL_API SQLDriverConnectW(SQLHDBC conn, SQLHWND window, SQLWCHAR *in, SQLSMALLINT inLength,
                                    SQLWCHAR *out, SQLSMALLINT outMax, SQLSMALLINT *outLength,
                                    SQLUSMALLINT completion) {
    using Fn = SQLRETURN (*)(SQLHDBC, SQLHWND, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT,
                             SQLSMALLINT *, SQLUSMALLINT);
    static Fn real = dbtest::next_definition<Fn>("SQLDriverConnectW");
    dbtest::driver_calls().connections.push_back(dbtest::utf8(in, inLength));
    return real(conn, window, in, inLength, out, outMax, outLength, completion);
}

DB_SPY SQLRETURN SQL_API SQLConnectW(SQLHDBC conn, SQLWCHAR *source, SQLSMALLINT sourceLength, SQLWCHAR *user,
                              SQLSMALLINT userLength, SQLWCHAR *password, SQLSMALLINT passwordLength) {
    using Fn = SQLRETURN (*)(SQLHDBC, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *,
                             SQLSMALLINT);
    static Fn real = dbtest::next_definition<Fn>("SQLConnectW");
    dbtest::driver_calls().dataSources.push_back(dbtest::utf8(source, sourceLength) + "|" +
                                                 dbtest::utf8(user, userLength));
    return real(conn, source, sourceLength, user, userLength, password, passwordLength);
}

namespace dbtest {

const std::string &odbc_setup_folder() {
    // Lives as long as the process, so that the driver manager can read it at any time.
    static nqtest::TempDir *folder = new nqtest::TempDir();
    return folder->path();
}

void ensure_odbc_setup() {
    static bool done = false;
    if (done) return;
    const std::string &folder = odbc_setup_folder();
    const std::string command = std::string("'") + NQ_TEST_SOURCE_DIR + "/odbc/write-odbc-setup.sh' '" +
                                folder + "' '" + folder + "/no-dbf-driver.so'";
    std::unique_ptr<FILE, int (*)(FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    ASSERT_TRUE(pipe) << command;
    char line[4096] = {};
    ASSERT_TRUE(fgets(line, sizeof line, pipe.get())) << command;
    std::string printed = line;
    while (!printed.empty() && (printed.back() == '\n' || printed.back() == '\r')) printed.pop_back();
    ASSERT_EQ(printed, folder);
    setenv("ODBCSYSINI", printed.c_str(), 1);
    setenv("ODBCINI", (printed + "/odbc.ini").c_str(), 1);
    done = true;
}

void sqlite_exec(const std::string &path, const std::string &sql) {
    sqlite3 *db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK) << path;
    char *error = nullptr;
    // Test files need no durability; without this every statement waits for the disk.
    sqlite3_exec(db, "PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
    const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error);
    std::string message = error ? error : "";
    sqlite3_free(error);
    sqlite3_close(db);
    ASSERT_EQ(rc, SQLITE_OK) << message << "\n" << sql;
}

std::vector<std::string> sqlite_rows(const std::string &path, const std::string &sql) {
    std::vector<std::string> rows;
    sqlite3 *db = nullptr;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        sqlite3_close(db);
        ADD_FAILURE() << "cannot open " << path;
        return rows;
    }
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
        ADD_FAILURE() << sqlite3_errmsg(db) << "\n" << sql;
        sqlite3_close(db);
        return rows;
    }
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        std::string row;
        for (int c = 0; c < sqlite3_column_count(stmt); ++c) {
            if (c) row += "|";
            const unsigned char *text = sqlite3_column_text(stmt, c);
            row += text ? reinterpret_cast<const char *>(text) : "<null>";
        }
        rows.push_back(row);
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return rows;
}

std::string sqlite_value(const std::string &path, const std::string &sql) {
    std::vector<std::string> rows = sqlite_rows(path, sql);
    return rows.empty() ? "<none>" : rows.front();
}

std::u16string lib_name(const std::string &os_path) {
    std::u16string name = u"C:";
    for (char c : os_path) name += c == '/' ? u'\\' : char16_t(static_cast<unsigned char>(c));
    return name;
}

std::u16string u16(const std::string &ascii) {
    std::u16string out;
    for (char c : ascii) out += char16_t(static_cast<unsigned char>(c));
    return out;
}

std::string narrow(const nq_wchar *text) {
    return text ? utf8(reinterpret_cast<const SQLWCHAR *>(text), SQL_NTS) : "<null>";
}

std::string current_row(int table, const std::vector<const char16_t *> &names) {
    std::string row;
    for (const char16_t *name : names) {
        if (name != names.front()) row += "|";
        row += narrow(nq_Db_getFldStr(table, name));
    }
    return row;
}

DbFldList *record(const std::vector<std::tuple<const char16_t *, const char16_t *, char16_t>> &fields) {
    DbFldList *list = nq_DbFldList_create(nullptr);
    for (const auto &[name, value, type] : fields) nq_DbFldList_insEnd(list, name, value, 0, 0, type);
    return list;
}

std::string describe(DbFldList *list) {
    std::string out;
    if (!list) return "<null>";
    for (LnkListNode *n = list->head; n; n = n->next) {
        const auto *field = static_cast<const DbFldNode *>(n->data);
        if (!out.empty()) out += " ";
        out += narrow(field->name) + "=" + narrow(field->value) + ":" + char(field->type);
    }
    return out;
}

}  // namespace dbtest
