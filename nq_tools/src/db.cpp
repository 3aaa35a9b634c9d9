// The Db family, part one: connections, the table registry (DbRef) and the tag registry
// (DbTagRef), opening and closing tables.
//
// Connections are never closed: private ones and the shared one live until the process
// ends. A table that is closed gives back its statement and its number only.
#include <cstring>
#include <string>

#include "db_internal.h"
#include "nq_db.h"
#include "nq_dbfldlist.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "plat_fs.h"
#include "plat_path.h"
#include "text/nq_text.h"

namespace nqdb {

Module &module() {
    static Module state;
    return state;
}

LnkList *refs() {
    Module &m = module();
    if (!m.refs) m.refs = nq_LnkList_create(nullptr);
    return m.refs;
}

LnkList *tags() {
    Module &m = module();
    if (!m.tags) m.tags = nq_LnkList_create(nullptr);
    return m.tags;
}

void forget_bound(DbRefEntry *entry) {
    nq_Free(entry->bound);
    entry->bound = nullptr;
    entry->boundCount = 0;
}

void drop_fields(DbRefNode *node) {
    if (node->fields) nq_DbFldList_destroy(node->fields);
    node->fields = nullptr;
    forget_bound(entry_of(node));
}

void drop_record_set(DbRefNode *node) {
    if (node->stmt) close_statement(static_cast<SQLHSTMT>(node->stmt));
    node->stmt = nullptr;
    drop_fields(node);
}

void fetch_diagnostics(SQLSMALLINT handleType, SQLHANDLE handle) {
    static SQLWCHAR sqlState[6];
    static SQLWCHAR message[544];
    SQLINTEGER nativeError = 0;
    SQLSMALLINT length = 0;
    SQLGetDiagRecW(handleType, handle, 1, sqlState, &nativeError, message, 544, &length);
}

void close_statement(SQLHSTMT stmt) {
    SQLCloseCursor(stmt);
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
}

SQLRETURN exec_direct(SQLHSTMT stmt, const std::u16string &text) {
    return SQLExecDirectW(stmt, reinterpret_cast<SQLWCHAR *>(const_cast<char16_t *>(text.c_str())),
                          SQL_NTS);
}

}  // namespace nqdb

namespace {

using namespace nqdb;

int free_ref(void *datum) {
    nq_DbRefNode_free(static_cast<DbRefNode *>(datum));
    return 1;
}

int free_tag(void *datum) {
    nq_DbTagRefNode_free(static_cast<DbTagRefNode *>(datum));
    return 1;
}

DbRefNode *ref_at(LnkListNode *n) { return static_cast<DbRefNode *>(n->data); }
DbTagRefNode *tag_at(LnkListNode *n) { return static_cast<DbTagRefNode *>(n->data); }

// Deletes the list node n through the list's cursor, so that the list keeps its count.
void delete_node(LnkList *list, LnkListNode *n, nq_DestroyFn destroy) {
    list->cursor = n;
    nq_LnkList_delCurr(list, destroy);
}

// The tag whose number is number / 100 * 100, as a list node.
LnkListNode *tag_node_by_number(int number) {
    LnkList *list = module().tags;
    if (!list) return nullptr;
    const int wanted = number / 100 * 100;
    for (LnkListNode *n = list->head; n; n = n->next)
        if (tag_at(n) && tag_at(n)->tagNo == wanted) return n;
    return nullptr;
}

// The environment handle, made once. A failure is printed and the caller carries on.
void ensure_environment() {
    Module &m = module();
    if (m.env == SQL_NULL_HENV &&
        SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m.env) == SQL_ERROR)
        nqt::print(u"Error allocating env handle\n");
    SQLSetEnvAttr(m.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                  SQL_IS_INTEGER);
}

// A private connection for one file. The driver opens the file itself, so it is given the
// name as the operating system spells it. The driver's result is passed back: only -1 makes
// the open fail, so a connection with information counts as open after the message.
SQLRETURN connect_by_file(DbRefNode *node, const nq_wchar *fileName) {
    ensure_environment();
    SQLHDBC conn = SQL_NULL_HDBC;
    if (SQLAllocHandle(SQL_HANDLE_DBC, module().env, &conn) == SQL_ERROR)
        nqt::print(u"AllocHandle on DBC failed\n");
    node->conn = conn;

    const std::u16string osName = nqt::from_utf8(nqplat::os_path(fileName));
    std::u16string text = nqt::format_string(u"Driver=SQLite3 ODBC Driver;Database=%s;", osName.c_str());
    SQLWCHAR out[1024];
    SQLSMALLINT outLength = 0;
    const SQLRETURN rc = SQLDriverConnectW(conn, nullptr, reinterpret_cast<SQLWCHAR *>(text.data()),
                                           static_cast<SQLSMALLINT>(text.size()), out, 1024,
                                           &outLength, SQL_DRIVER_NOPROMPT);
    if (rc != SQL_SUCCESS) {
        fetch_diagnostics(SQL_HANDLE_DBC, conn);
        nqt::print(u"Connect to Test DataSource failed.");
    }
    return rc;
}

}  // namespace

extern "C" {

// ---- The table registry ----

NQ_API int nq_DbRef_add(const nq_wchar *fileName) {
    LnkList *list = refs();
    if (!list) return -1;
    int highest = -1;
    for (LnkListNode *n = list->head; n; n = n->next)
        if (ref_at(n) && ref_at(n)->id > highest) highest = ref_at(n)->id;
    DbRefNode *node = nq_DbRefNode_create(fileName, highest + 1);
    if (!node) return -1;
    if (!nq_LnkList_insEnd(list, node)) {
        nq_DbRefNode_free(node);
        return -1;
    }
    return node->id;
}

NQ_API DbRefNode *nq_DbRef_sel(int id) { return nq_DbRefNode_find(module().refs, id); }

NQ_API int nq_DbRef_del(int id) {
    LnkList *list = refs();
    if (!list) return 0;
    for (LnkListNode *n = list->head; n; n = n->next) {
        if (ref_at(n) && ref_at(n)->id == id) {
            delete_node(list, n, free_ref);
            return 1;
        }
    }
    return 0;
}

NQ_API int nq_DbRef_delTags(int id) {
    LnkList *list = module().tags;
    if (!list) return 0;
    int deleted = 0;
    for (LnkListNode *n = list->head; n;) {
        LnkListNode *next = n->next;
        // The expression pointer itself is compared with the table number; keep it so.
        if (tag_at(n) && reinterpret_cast<intptr_t>(tag_at(n)->expression) == id) {
            delete_node(list, n, free_tag);
            deleted = 1;
        }
        n = next;
    }
    return deleted;
}

NQ_API DbRefNode *nq_DbRefNode_create(const nq_wchar *fileName, int id) {
    auto *entry = static_cast<DbRefEntry *>(nq_Malloc(sizeof(DbRefEntry)));
    if (!entry) return nullptr;
    std::memset(entry, 0, sizeof *entry);
    if (fileName) {
        entry->node.fileName = nq_Str_dup(fileName);
        if (!entry->node.fileName) {
            nq_Free(entry);
            return nullptr;
        }
    }
    entry->node.id = id;
    return &entry->node;
}

NQ_API void nq_DbRefNode_free(DbRefNode *node) {
    if (!node) return;
    nq_Free(node->fileName);
    drop_fields(node);
    nq_Free(entry_of(node));
}

NQ_API DbRefNode *nq_DbRefNode_find(LnkList *list, int id) {
    if (!list) return nullptr;
    for (LnkListNode *n = list->head; n; n = n->next)
        if (ref_at(n) && ref_at(n)->id == id) return ref_at(n);
    return nullptr;
}

// ---- The tag registry ----

NQ_API int nq_DbTagRef_add(int dbRefId, const nq_wchar *tagName, const nq_wchar *expression) {
    LnkList *list = tags();
    if (!list) return -1;
    int highest = 0;
    for (LnkListNode *n = list->head; n; n = n->next)
        if (tag_at(n) && tag_at(n)->tagNo > highest) highest = tag_at(n)->tagNo;
    DbTagRefNode *node = nq_DbTagRefNode_create(tagName, expression, highest + 100, dbRefId);
    if (!node) return -1;
    if (!nq_LnkList_insEnd(list, node)) {
        nq_DbTagRefNode_free(node);
        return -1;
    }
    return node->tagNo;
}

NQ_API DbTagRefNode *nq_DbTagRef_selNdx(int number) {
    LnkListNode *n = tag_node_by_number(number);
    return n ? tag_at(n) : nullptr;
}

NQ_API int nq_DbTagRef_del(int number) {
    LnkListNode *n = tag_node_by_number(number);
    if (!n) return 0;
    delete_node(module().tags, n, free_tag);
    return 1;
}

NQ_API int nq_DbTagRef_update(int number, const nq_wchar *tagName) {
    LnkList *list = module().tags;
    if (!list) return 0;
    // Compared with the table number, not the tag number; callers rely on it as it is.
    const uint32_t wanted = static_cast<uint32_t>(number / 100 * 100);
    for (LnkListNode *n = list->head; n; n = n->next) {
        if (tag_at(n) && tag_at(n)->dbRefId == wanted) {
            tag_at(n)->tagName = tagName;
            return 1;
        }
    }
    return 0;
}

NQ_API DbTagRefNode *nq_DbTagRefNode_create(const nq_wchar *tagName, const nq_wchar *expression,
                                            int tagNo, int dbRefId) {
    auto *node = static_cast<DbTagRefNode *>(nq_Malloc(sizeof(DbTagRefNode)));
    if (!node) return nullptr;
    node->tagName = tagName;
    node->expression = expression;
    node->dbRefId = static_cast<uint32_t>(dbRefId);
    node->tagNo = tagNo;
    return node;
}

NQ_API void nq_DbTagRefNode_free(DbTagRefNode *node) { nq_Free(node); }

// ---- Opening and closing ----

NQ_API void nq_Db_init(void) {
    Module &m = module();
    if (m.initialised) return;

    // Fresh registries. Numbers given out before no longer resolve.
    if (m.refs || m.tags) {
        if (!m.replaced) m.replaced = nq_LnkList_create(nullptr);
        if (m.refs) nq_LnkList_insEnd(m.replaced, m.refs);
        if (m.tags) nq_LnkList_insEnd(m.replaced, m.tags);
    }
    m.refs = nq_LnkList_create(nullptr);
    m.tags = nq_LnkList_create(nullptr);

    ensure_environment();
    if (SQLAllocHandle(SQL_HANDLE_DBC, m.env, &m.shared) == SQL_ERROR)
        nqt::print(u"AllocHandle on DBC failed\n");
    // The user name is given with length 0, so no user goes to the data source.
    const SQLRETURN rc = SQLConnectW(m.shared, reinterpret_cast<SQLWCHAR *>(const_cast<char16_t *>(u"dBase for Zelmar")),
                                     SQL_NTS, reinterpret_cast<SQLWCHAR *>(const_cast<char16_t *>(u"Admin")), 0,
                                     reinterpret_cast<SQLWCHAR *>(const_cast<char16_t *>(u"")), 0);
    if (rc == SQL_ERROR) {
        fetch_diagnostics(SQL_HANDLE_DBC, m.shared);
        nqt::print(u"Connect to Test DataSource failed.");
    }
    m.initialised = true;
}

NQ_API int nq_Db_openDb(const nq_wchar *fileName) { return nq_Db_openDbEx(fileName, 0); }

NQ_API int nq_Db_openDbEx(const nq_wchar *fileName, int flag) {
    (void)flag;
    if (!fileName) return -1;

    // A name without a point is a ".db3" file. Its name was built in 260 characters; a
    // longer one is refused.
    nq_wchar named[260];
    const nq_wchar *name = fileName;
    if (!nqt::chr(fileName, u'.')) {
        if (nqt::len(fileName) + 4 >= 260) return -1;
        nqt::copy(named, fileName);
        nqt::cat(named, u".db3");
        name = named;
    }
    if (nqplat::file_attributes(name) == nqplat::kInvalidAttributes) return -1;

    const nq_wchar *extension = extension_of(name);
    if (nq_Str_cmpi(extension, u".dbf") == 0) {
        nq_Db_init();
        const int id = nq_DbRef_add(name);
        if (DbRefNode *node = nq_DbRef_sel(id)) node->conn = module().shared;
        return id;
    }
    if (nq_Str_cmpi(extension, u".accdb") == 0 || nq_Str_cmpi(extension, u".mdb") == 0 ||
        nq_Str_cmpi(extension, u".db3") == 0) {
        // Every private kind goes to the SQLite driver. A failed connection keeps its
        // number taken: the node stays in the registry.
        const int id = nq_DbRef_add(name);
        DbRefNode *node = nq_DbRef_sel(id);
        if (!node) return -1;
        if (failed(connect_by_file(node, name))) return -1;
        return id;
    }
    return -1;
}

NQ_API int nq_Db_createDb(const nq_wchar *fileName, DbFldList *structure) {
    (void)fileName;
    (void)structure;
    return -1;
}

NQ_API int nq_Db_closeDb(int id) {
    if (DbRefNode *node = nq_DbRef_sel(id)) {
        if (node->stmt) close_statement(static_cast<SQLHSTMT>(node->stmt));
        node->stmt = nullptr;
    }
    nq_DbRef_del(id);
    return 1;
}

NQ_API int nq_Db_closeAll(void) {
    Module &m = module();
    // Statements of tables still open are abandoned, not closed.
    if (m.refs) nq_LnkList_destroy(m.refs, free_ref);
    if (m.tags) nq_LnkList_destroy(m.tags, free_tag);
    m.refs = nq_LnkList_create(nullptr);
    m.tags = nq_LnkList_create(nullptr);
    return 0;
}

NQ_API int nq_Db_createNdx(int id, const nq_wchar *tagName, const nq_wchar *expression) {
    if (!nq_DbRef_sel(id)) return -1;
    return nq_DbTagRef_add(id, tagName, expression);
}

NQ_API int nq_Db_openNdx(int id, const nq_wchar *tagName) {
    if (!nq_DbRef_sel(id) || !tagName) return -1;
    LnkList *list = module().tags;
    if (!list) return -1;
    for (LnkListNode *n = list->head; n; n = n->next) {
        const DbTagRefNode *tag = tag_at(n);
        if (tag && tag->dbRefId == static_cast<uint32_t>(id) && tag->tagName &&
            nq_Str_cmpi(tag->tagName, tagName) == 0)
            return tag->tagNo;
    }
    return -1;
}

NQ_API int nq_Db_closeNdx(int number) {
    if (nq_DbTagRef_selNdx(number)) nq_DbTagRef_del(number);
    return 1;
}

NQ_API int nq_Db_rendx(void) { return -1; }

}  // extern "C"
