// The Db family, part two: records over a forward-only result set.
//
// Every operation is a fetch on the table's one open SELECT, a fresh SELECT followed by
// fetches, or a one-shot INSERT or UPDATE composed as text. There is no server cursor, no
// bookmark and no row key: going back runs the query again and walks forward, a seek scans,
// and an update finds its rows by the values of the columns that did not change.
//
// The current record's value buffers are bound to the result columns, so a fetch writes the
// live row straight into the table's DbFldList. Callers get copies.
#include <string>

#include "db_internal.h"
#include "nq_db.h"
#include "nq_dbfldlist.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "text/nq_text.h"

namespace {

using namespace nqdb;

// The indicator word of every bound column. The driver writes it; nothing reads it, so a
// column without a value leaves in its buffer whatever the driver put there.
SQLLEN g_indicator;

// A column whose buffer would be larger than this many characters is not bound at all.
constexpr SQLULEN kMaxColumnLength = SQLULEN(1) << 20;

// The static buffer of nq_Db_getFldStr.
constexpr std::size_t kFieldTextSize = 512;
nq_wchar g_fieldText[kFieldTextSize];

DbFldNode *field_at(LnkListNode *n) { return static_cast<DbFldNode *>(n->data); }

const nq_wchar *text_of(const DbFldNode *field) { return field->value ? field->value : u""; }

// The field type letter of an ODBC column type.
nq_wchar type_letter(SQLSMALLINT type) {
    switch (type) {
    case SQL_WLONGVARCHAR:
    case SQL_LONGVARBINARY:
    case SQL_LONGVARCHAR:
        return u'M';
    case SQL_NUMERIC:
    case SQL_DECIMAL:
    case SQL_INTEGER:
        return u'L';
    case SQL_SMALLINT:
        return u'I';
    case SQL_FLOAT:
    case SQL_REAL:
    case SQL_DOUBLE:
        return u'N';
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
        return u'T';
    default:
        return u'C';
    }
}

// Describes the result columns of the table's statement and binds a value buffer to each,
// as the nodes of a new fields list. 0, or 1 when a column could not be bound; what was
// built by then stays as fields, since the columns bound so far write into it.
int build_fields(DbRefNode *node) {
    auto stmt = static_cast<SQLHSTMT>(node->stmt);
    SQLSMALLINT columns = 0;
    if (failed(SQLNumResultCols(stmt, &columns))) return 1;
    DbFldList *list = nq_LnkList_create(nullptr);
    if (!list) return 1;
    drop_fields(node);
    node->fields = list;
    DbRefEntry *entry = entry_of(node);
    if (columns > 0) {
        entry->bound = static_cast<BoundBuffer *>(nq_Malloc(sizeof(BoundBuffer) * std::size_t(columns)));
        if (!entry->bound) return 1;
    }

    for (SQLUSMALLINT column = 1; column <= SQLUSMALLINT(columns); ++column) {
        SQLWCHAR name[200];
        SQLSMALLINT nameLength = 0, type = 0, digits = 0, nullable = 0;
        SQLULEN size = 0;
        if (SQLDescribeColW(stmt, column, name, 200, &nameLength, &type, &size, &digits, &nullable) !=
            SQL_SUCCESS)
            break;
        // Long text is bound to no more than 64 characters.
        if (type == SQL_LONGVARCHAR || type == SQL_WLONGVARCHAR) size = 64;
        const nq_wchar letter = type_letter(type);
        if (letter == u'L') size += 2;
        const SQLULEN length = letter == u'L' ? size + 25 : size;
        if (length > kMaxColumnLength) return 1;

        // The value is a duplicate of a blank template, trimmed in place: its text is empty
        // but its block keeps length + 1 characters, and that block is the bound buffer.
        auto *blank = static_cast<nq_wchar *>(nq_Malloc(length * 2 + 2));
        if (!blank) return 1;
        for (SQLULEN i = 0; i < length; ++i) blank[i] = u' ';
        blank[length] = 0;
        DbFldNode *field = nq_DbFldNode_new(reinterpret_cast<const nq_wchar *>(name), blank,
                                            uint32_t(length), uint32_t(short(digits)), letter);
        nq_Free(blank);
        if (!field || !field->value || !nq_LnkList_insEnd(list, field)) {
            nq_DbFldNode_destroy(field);
            return 1;
        }
        entry->bound[entry->boundCount++] = BoundBuffer{field->value, std::size_t(length) + 1};
        if (SQLBindCol(stmt, column, SQL_C_WCHAR, field->value, SQLLEN(length * 2 + 2), &g_indicator) !=
            SQL_SUCCESS)
            return 1;
    }
    return 0;
}

// Runs the table's SELECT on its statement. False when it was refused or failed.
bool run_select(DbRefNode *node) {
    std::u16string text;
    if (!compose_select(text, node->fileName, nullptr)) return false;
    return !failed(exec_direct(static_cast<SQLHSTMT>(node->stmt), text));
}

// Numbers of type N read with precision 0: "12.00" becomes "12"; "12.50" stays and gets
// precision 1, the digits up to the last one that is not zero.
void repair_precision(DbFldList *record) {
    for (LnkListNode *n = record->head; n; n = n->next) {
        DbFldNode *field = field_at(n);
        if (!field || field->type != u'N' || field->precision != 0 || !field->value) continue;
        nq_wchar *point = nqt::chr(field->value, u'.');
        if (!point) continue;
        nq_wchar *p = field->value + nqt::len(field->value) - 1;
        while (p > field->value && *p == u'0') --p;
        if (p == point) *p = 0;
        else if (p > point) field->precision = uint32_t(p - point);
    }
}

// The capacity, terminator included, of a buffer bound to a column; 0 for any other block.
std::size_t bound_capacity(DbRefNode *node, const nq_wchar *buffer) {
    const DbRefEntry *entry = entry_of(node);
    for (int i = 0; i < entry->boundCount; ++i)
        if (entry->bound[i].buffer == buffer) return entry->bound[i].capacity;
    return 0;
}

// Copies the values of record into the fields of the same names, so that the next UPDATE
// compares with what was written. A bound buffer takes what fits; a field of a plain list
// gets a new value.
void merge(DbRefNode *node, DbFldList *record) {
    for (LnkListNode *n = record->head; n; n = n->next) {
        const DbFldNode *source = field_at(n);
        if (!source) continue;
        DbFldNode *target = nq_DbFldList_findFld(node->fields, source->name);
        if (!target) continue;
        if (const std::size_t capacity = bound_capacity(node, target->value)) {
            nqt::copy_bounded(target->value, capacity, text_of(source));
        } else {
            nq_Free(target->value);
            target->value = nq_Str_dup(text_of(source));
        }
    }
}

// True when filter, a list of names separated by commas, holds name as a whole item. The
// items are compared as they stand, case and blanks included.
bool in_filter(const nq_wchar *name, const nq_wchar *filter) {
    const std::size_t nameLength = nqt::len(name);
    for (const nq_wchar *item = filter;;) {
        const nq_wchar *end = nqt::chr(item, u',');
        const std::size_t length = end ? std::size_t(end - item) : nqt::len(item);
        if (length == nameLength && nqt::ncmp(item, name, length) == 0) return true;
        if (!end) return false;
        item = end + 1;
    }
}

bool row_matches(DbFldList *row, const nq_wchar *value, const nq_wchar *filter) {
    for (LnkListNode *n = row->head; n; n = n->next) {
        const DbFldNode *field = field_at(n);
        if (!field || (filter && !in_filter(field->name, filter))) continue;
        if (nqt::cmp(text_of(field), value) == 0) return true;
    }
    return false;
}

}  // namespace

extern "C" {

NQ_API int nq_Db_topRec(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 0;
    drop_record_set(node);

    SQLHSTMT stmt = SQL_NULL_HSTMT;
    if (failed(SQLAllocHandle(SQL_HANDLE_STMT, static_cast<SQLHDBC>(node->conn), &stmt))) return 1;
    node->stmt = stmt;
    std::u16string text;
    const bool composed = compose_select(text, node->fileName, nullptr);
    if (!composed || failed(exec_direct(stmt, text))) {
        // The statement stays; the next top or the end of the set releases it.
        if (composed) fetch_diagnostics(SQL_HANDLE_STMT, stmt);
        nqt::print(u"SQL query failed.");
        return 1;
    }
    if (build_fields(node)) return 1;
    node->recNo = -1;
    // An empty table fails here, its statement already closed by the end of the set.
    return nq_Db_nextRec(id) ? 1 : 0;
}

NQ_API int nq_Db_nextRec(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 3;
    auto stmt = static_cast<SQLHSTMT>(node->stmt);
    const SQLRETURN rc = stmt ? SQLFetch(stmt) : SQL_INVALID_HANDLE;
    if (rc == SQL_SUCCESS) {
        ++node->recNo;
        return 0;
    }
    // Anything else ends the set, a fetch with information (a cut value) included.
    if (stmt) fetch_diagnostics(SQL_HANDLE_STMT, stmt);
    drop_record_set(node);
    return 3;
}

NQ_API int nq_Db_prevRec(int id, int tag) {
    (void)tag;
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 3;
    const int32_t target = node->recNo;
    if (target < 1) return 3;
    drop_record_set(node);
    node->recNo = -1;
    if (nq_Db_topRec(id)) return 3;
    // Forward again from the top to the row before.
    while (target > node->recNo + 1) {
        auto stmt = static_cast<SQLHSTMT>(node->stmt);
        if (SQLFetch(stmt) != SQL_SUCCESS) {
            fetch_diagnostics(SQL_HANDLE_STMT, stmt);
            drop_record_set(node);
            return 3;
        }
        ++node->recNo;
    }
    return 0;
}

NQ_API int nq_Db_botRec(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 3;
    // The statement stays open past the end, and the buffers keep the last row.
    if (auto stmt = static_cast<SQLHSTMT>(node->stmt))
        while (SQLFetch(stmt) == SQL_SUCCESS) ++node->recNo;
    return 0;
}

NQ_API DbFldList *nq_Db_readRec(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    return node ? nq_Db_readCurrRec(node) : nullptr;
}

NQ_API DbFldList *nq_Db_readCurrRec(DbRefNode *node) {
    if (!node) return nullptr;
    // An append reads a blank record.
    if (node->state == 1) return nq_Db_struct(node->id);
    if (!node->stmt && nq_Db_topRec(node->id)) return nullptr;
    node->state = 3;
    if (!node->fields) return nullptr;
    DbFldList *copy = nq_DbFldList_copy(node->fields);
    if (copy) repair_precision(copy);
    return copy;
}

NQ_API DbFldList *nq_Db_struct(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return nullptr;
    if (!node->stmt) {
        SQLHSTMT stmt = SQL_NULL_HSTMT;
        if (failed(SQLAllocHandle(SQL_HANDLE_STMT, static_cast<SQLHDBC>(node->conn), &stmt))) return nullptr;
        node->stmt = stmt;
    }
    if (!run_select(node)) return nullptr;
    // The earlier record goes; its buffers are unbound first so that no fetch reaches them.
    if (node->fields) SQLFreeStmt(static_cast<SQLHSTMT>(node->stmt), SQL_UNBIND);
    drop_fields(node);
    if (build_fields(node)) return nullptr;
    return nq_DbFldList_copy(node->fields);
}

NQ_API int nq_Db_appRec(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 1;
    drop_record_set(node);
    node->state = 1;
    return 0;
}

NQ_API int nq_Db_modRec(int id, DbFldList *record) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node || !record) return 1;
    auto conn = static_cast<SQLHDBC>(node->conn);
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    std::u16string text;

    switch (node->state) {
    case 1: {
        // Each statement runs on a handle of its own, so the table's SELECT stays open.
        if (failed(SQLAllocHandle(SQL_HANDLE_STMT, conn, &stmt))) return 1;
        const bool composed = compose_insert(text, node->fileName, record);
        if (!composed || failed(exec_direct(stmt, text))) {
            if (composed) fetch_diagnostics(SQL_HANDLE_STMT, stmt);
            nqt::print(u"SQL query failed.");
            close_statement(stmt);
            return 1;
        }
        close_statement(stmt);
        // The inserted row is not part of the open set; fields just holds what was written.
        if (!node->fields) {
            node->fields = nq_DbFldList_copy(record);
            forget_bound(entry_of(node));
        } else {
            merge(node, record);
        }
        node->state = 2;
        return 0;
    }
    case 2:
    case 3: {
        if (!node->fields) return 1;
        if (failed(SQLAllocHandle(SQL_HANDLE_STMT, conn, &stmt))) return 1;
        if (!compose_update(text, node->fileName, node->fields, record)) {
            SQLFreeHandle(SQL_HANDLE_STMT, stmt);
            return 1;
        }
        if (text.empty()) {
            // Nothing changed: nothing to run.
            SQLFreeHandle(SQL_HANDLE_STMT, stmt);
            return 0;
        }
        const SQLRETURN rc = exec_direct(stmt, text);
        close_statement(stmt);
        if (failed(rc)) return 1;  // a failed update is silent
        merge(node, record);
        return 0;
    }
    default:
        return 1;
    }
}

NQ_API nq_wchar *nq_Db_getFldStr(int id, const nq_wchar *name) {
    g_fieldText[0] = 0;
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return nullptr;
    // Reading opens the record set of a table that has none; the copy itself is not wanted.
    if (!node->stmt) nq_DbFldList_destroy(nq_Db_readCurrRec(node));
    if (!node->fields || !name) return nullptr;
    const DbFldNode *field = nq_DbFldList_findFld(node->fields, name);
    if (!field) return nullptr;
    // The live value, blanks from the driver and all.
    nqt::copy_bounded(g_fieldText, kFieldTextSize, text_of(field));
    return g_fieldText;
}

NQ_API int nq_Db_seekStr(const nq_wchar *value, int id, int tag) {
    const DbTagRefNode *tagNode = nq_DbTagRef_selNdx(tag);
    const nq_wchar *filter = tagNode ? tagNode->expression : nullptr;
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node || !value) return 1;
    const int32_t start = node->recNo;

    // From the current row to the end.
    for (DbFldList *row = nq_Db_readCurrRec(node); row; row = nq_Db_readCurrRec(node)) {
        const bool found = row_matches(row, value, filter);
        nq_DbFldList_destroy(row);
        if (found) return 0;
        if (nq_Db_nextRec(id)) break;
    }
    // A scan that began at the top has seen every row.
    if (start < 1) return 1;

    // From the top round to the row where the scan began.
    if (nq_Db_topRec(id)) return 1;
    for (DbFldList *row = nq_Db_readCurrRec(node); row; row = nq_Db_readCurrRec(node)) {
        const bool found = row_matches(row, value, filter);
        nq_DbFldList_destroy(row);
        if (found) return 0;
        if (nq_Db_nextRec(id) || node->recNo >= start) return 1;
    }
    return 1;
}

NQ_API int nq_Db_getRecordCount(int id) {
    DbRefNode *node = nq_DbRef_sel(id);
    if (!node) return 0;
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    if (failed(SQLAllocHandle(SQL_HANDLE_STMT, static_cast<SQLHDBC>(node->conn), &stmt))) return 0;
    std::u16string text;
    if (!compose_count(text, node->fileName) || failed(exec_direct(stmt, text))) {
        SQLFreeHandle(SQL_HANDLE_STMT, stmt);
        return 0;
    }
    // Sixteen bytes: seven digits and the terminator. A longer count does not fit, and the
    // fetch that cuts it counts as failed.
    SQLWCHAR count[8] = {};
    SQLLEN indicator = 0;
    if (SQLBindCol(stmt, 1, SQL_C_WCHAR, count, sizeof count, &indicator) != SQL_SUCCESS ||
        SQLFetch(stmt) != SQL_SUCCESS) {
        close_statement(stmt);
        return 0;
    }
    const long rows = nqt::tol_end(reinterpret_cast<const nq_wchar *>(count), nullptr, 10);
    close_statement(stmt);
    return int(rows);
}

NQ_API int nq_Db_eof(int id) {
    const DbRefNode *node = nq_DbRef_sel(id);
    return !node || !node->fields ? 1 : 0;
}

NQ_API void nq_Db_freeFldInfo(DbFldInfo *info, int count) {
    if (!info) return;
    for (int i = 0; i < count; ++i)
        if (info[i].data) nq_Free(info[i].data);
    nq_Free(info);
}

// ---- Operations that do nothing here ----

NQ_API int nq_Db_append(int) { return 0; }
NQ_API int nq_Db_appendStart(int) { return 0; }
NQ_API int nq_Db_assignFldDouble(int, const nq_wchar *, double) { return 0; }
NQ_API int nq_Db_assignFldInt(int, const nq_wchar *, int) { return 0; }
NQ_API int nq_Db_assignFldStr(int, const nq_wchar *, const nq_wchar *) { return 0; }
NQ_API int nq_Db_assignFldStrN(int, const nq_wchar *, const nq_wchar *, int) { return 0; }
NQ_API int nq_Db_bof(int) { return 0; }
NQ_API int nq_Db_cpyFldN(int, const nq_wchar *, nq_wchar *, int) { return 0; }
NQ_API int nq_Db_delRec(int) { return 0; }
NQ_API int nq_Db_deleted(int) { return 0; }
NQ_API int nq_Db_getFldInt(int, const nq_wchar *) { return 0; }
NQ_API double nq_Db_getFldDouble(int, const nq_wchar *) { return 0.0; }
NQ_API int nq_Db_getRecordNo(int) { return 0; }
NQ_API int nq_Db_packDb(int) { return 0; }
NQ_API int nq_Db_padVal(nq_wchar *, int) { return 0; }
NQ_API int nq_Db_query(int, const nq_wchar *) { return 0; }
NQ_API int nq_Db_readTable(int) { return 0; }
NQ_API int nq_Db_seekDouble(double, int, int) { return 0; }
NQ_API int nq_Db_undelRec(int) { return 0; }
NQ_API int nq_Db_writeRec(int) { return 0; }

}  // extern "C"

static_assert(sizeof(DbFldInfo) == 16, "the records of nq_Db_freeFldInfo are 16 bytes");
