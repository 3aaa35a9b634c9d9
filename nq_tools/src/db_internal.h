// What the three sources of the Db family share: the process-wide ODBC state, the hidden
// part of each table's node, the statement composers and a few ODBC helpers.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <cstddef>
#include <string>

#include "nq_db.h"
#include "nq_dbfldlist.h"

static_assert(sizeof(SQLWCHAR) == sizeof(nq_wchar), "wide ODBC calls take nq_wchar text as it is");

namespace nqdb {

// ---- Process-wide state ----

struct Module {
    LnkList *refs = nullptr;      // DbRefNode per open table
    LnkList *tags = nullptr;      // DbTagRefNode per tag
    SQLHENV env = SQL_NULL_HENV;  // made on the first connection
    SQLHDBC shared = SQL_NULL_HDBC;  // the one connection of the ".dbf" tables
    bool initialised = false;     // nq_Db_init has run
    // Registries replaced by nq_Db_init. They stay allocated because callers may still hold
    // nodes of them; they are simply no longer looked at.
    LnkList *replaced = nullptr;
};

Module &module();

// The registry's own list, made on demand.
LnkList *refs();
LnkList *tags();

// ---- The node of an open table ----

// A value buffer bound to a result column, and the characters it holds, terminator included.
struct BoundBuffer {
    const nq_wchar *buffer;
    std::size_t capacity;
};

// nq_DbRefNode_create hands out the node at the start of this record. The rest remembers
// which value buffers the driver writes into, so that nothing copied into them can pass
// their end.
struct DbRefEntry {
    DbRefNode node;
    BoundBuffer *bound;  // nq_Malloc'd, one per bound column; null when fields is not bound
    int boundCount;
};

inline DbRefEntry *entry_of(DbRefNode *node) { return reinterpret_cast<DbRefEntry *>(node); }

// Forgets the bound buffers (their list is going or was replaced).
void forget_bound(DbRefEntry *entry);
// Destroys fields and forgets its buffers.
void drop_fields(DbRefNode *node);
// Closes and frees the table's statement, if any, then drops fields.
void drop_record_set(DbRefNode *node);

// ---- ODBC helpers ----

// The driver's first diagnostic record of a handle, into a static buffer of 544 characters
// that nothing shows.
void fetch_diagnostics(SQLSMALLINT handleType, SQLHANDLE handle);
// A result that the rules treat as the call failing (-1; an invalid handle likewise).
inline bool failed(SQLRETURN rc) { return rc == SQL_ERROR || rc == SQL_INVALID_HANDLE; }
// Closes the cursor of a statement and frees it.
void close_statement(SQLHSTMT stmt);
// Runs a composed statement; the text stays alive for the call.
SQLRETURN exec_direct(SQLHSTMT stmt, const std::u16string &text);

// ---- Statement texts ----

// Buffer sizes, in characters with the terminator.
constexpr std::size_t kSelectSize = 256;
constexpr std::size_t kInsertSize = 1024;
constexpr std::size_t kUpdateSize = 2048;
constexpr std::size_t kClauseSize = 1024;

// Appends the table text of a path: "[folder]\file.dbf" for ".dbf", else the base name.
void append_table_text(std::u16string &text, const nq_wchar *path);
// Each composer writes out and yields false when the text would not fit its buffer (out is
// then cleared). A null or empty field list selects "*".
bool compose_select(std::u16string &out, const nq_wchar *path, DbFldList *fieldNames);
bool compose_count(std::u16string &out, const nq_wchar *path);
bool compose_insert(std::u16string &out, const nq_wchar *path, DbFldList *record);
// An unchanged record gives the empty text (and true).
bool compose_update(std::u16string &out, const nq_wchar *path, DbFldList *oldRecord,
                    DbFldList *newRecord);

// The extension of a name: from its last point, or the empty text.
const nq_wchar *extension_of(const nq_wchar *path);

}  // namespace nqdb
