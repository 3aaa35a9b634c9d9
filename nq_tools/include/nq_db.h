/* nq_tls20an: tables over ODBC, one record at a time.
 *
 * A caller holds a table number from nq_Db_openDb and, if it wants a narrower seek, a tag
 * number from nq_Db_createNdx or nq_Db_openNdx. It never sees a connection or a statement.
 *
 * ".db3", ".mdb" and ".accdb" files get a private connection each through the driver named
 * "SQLite3 ODBC Driver"; ".dbf" files share one connection to the data source
 * "dBase for Zelmar". Both names must be known to the ODBC setup (ODBCSYSINI); the
 * project's odbc/write-odbc-setup.sh writes such a setup into a folder.
 *
 * Record results: 0 means done in every record operation, and the failing value differs by
 * operation (see each one). Messages go to standard output; nothing is traced.
 *
 * Statements are composed as text: SELECT and count in 256 characters, INSERT in 1024,
 * UPDATE in 2048 with 1024 for each of its two clauses. A statement that would not fit is
 * refused and the operation fails as if the driver had refused it.
 *
 * One thread at a time: the registries, the handles and the text buffers are process-wide. */
#ifndef NQ_DB_H
#define NQ_DB_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* One open table. ODBC handles are kept as plain pointers so that this header needs no
 * ODBC header. */
struct DbRefNode {
    nq_wchar *fileName;  /* owned copy of the path as opened */
    void *stmt;          /* the open SELECT (SQLHSTMT), or null when no record set is open */
    void *conn;          /* the connection (SQLHDBC), shared or private */
    DbFldList *fields;   /* the current record, its values bound to the columns; or null */
    int32_t recNo;       /* zero-based number of the row last fetched; -1 before the first */
    uint32_t state;      /* what the next nq_Db_modRec means: 0 refused, 1 insert, 2 and 3 update */
    int32_t id;          /* the table number */
};

/* One index tag. Neither string is copied: the caller keeps both alive as long as the tag. */
struct DbTagRefNode {
    const nq_wchar *tagName;     /* the caller's pointer */
    const nq_wchar *expression;  /* the caller's pointer: field names separated by commas */
    uint32_t dbRefId;            /* the table the tag belongs to */
    int32_t tagNo;               /* the tag number, a multiple of 100 */
};

/* The 16-byte record of nq_Db_freeFldInfo: an owned leading block and three numbers. */
typedef struct DbFldInfo {
    void *data;          /* released by nq_Db_freeFldInfo when not null */
    uint32_t width;
    uint16_t precision;
    nq_wchar type;
} DbFldInfo;

/* ---- The table registry ---- */

/* A node numbered one above the highest number in the list (0 for an empty list), the list
 * made first if there is none. The number, or -1 when no node could be made. */
NQ_API int nq_DbRef_add(const nq_wchar *fileName);
/* The node of that number, or null. */
NQ_API DbRefNode *nq_DbRef_sel(int id);
/* Deletes the node of that number (its statement is not released): 1, or 0 when there is
 * none. Makes the list if there is none. */
NQ_API int nq_DbRef_del(int id);
/* Deletes every tag whose expression pointer, as a number, equals id: 1 when any went,
 * else 0. A tag's expression is a text, so in practice nothing matches and a table's tags
 * outlive it. */
NQ_API int nq_DbRef_delTags(int id);
/* A zeroed node with a copy of the name; null when memory is out. */
NQ_API DbRefNode *nq_DbRefNode_create(const nq_wchar *fileName, int id);
/* Releases the name, the field list and a node made by nq_DbRefNode_create; the statement
 * stays as it is. */
NQ_API void nq_DbRefNode_free(DbRefNode *node);
/* The node of that number in list, by a walk from the start; null when there is none. */
NQ_API DbRefNode *nq_DbRefNode_find(LnkList *list, int id);

/* ---- The tag registry ---- */

/* A tag numbered 100 above the highest tag number (so 100, 200, ...). The number, or -1. */
NQ_API int nq_DbTagRef_add(int dbRefId, const nq_wchar *tagName, const nq_wchar *expression);
/* The tag whose number equals number / 100 * 100 (so 250 finds tag 200), or null. */
NQ_API DbTagRefNode *nq_DbTagRef_selNdx(int number);
/* Deletes the tag found by the same rule: 1, or 0. */
NQ_API int nq_DbTagRef_del(int number);
/* Sets the name of the first tag whose table number (not tag number) equals
 * number / 100 * 100: 1, or 0 when none does. */
NQ_API int nq_DbTagRef_update(int number, const nq_wchar *tagName);
NQ_API DbTagRefNode *nq_DbTagRefNode_create(const nq_wchar *tagName, const nq_wchar *expression,
                                            int tagNo, int dbRefId);
/* Frees the node only; the strings are the caller's. */
NQ_API void nq_DbTagRefNode_free(DbTagRefNode *node);

/* ---- Opening and closing ---- */

/* Connects to "dBase for Zelmar" once per process and makes fresh, empty registries, so
 * that table numbers given out before no longer resolve. Prints its failures. */
NQ_API void nq_Db_init(void);
/* nq_Db_openDbEx(fileName, 0). */
NQ_API int nq_Db_openDb(const nq_wchar *fileName);
/* Opens a table and returns its number, or -1: for a missing file, an extension other than
 * ".dbf", ".db3", ".mdb" and ".accdb" (any case), or a private connection that failed (its
 * number then stays taken). A name without a point is opened with ".db3" added. flag has no
 * effect. */
NQ_API int nq_Db_openDbEx(const nq_wchar *fileName, int flag);
/* Tables cannot be created here: -1. */
NQ_API int nq_Db_createDb(const nq_wchar *fileName, DbFldList *structure);
/* Releases the table's statement and number; the connection stays. Always 1. */
NQ_API int nq_Db_closeDb(int id);
/* Empties both registries, abandoning open statements. 0. */
NQ_API int nq_Db_closeAll(void);
/* Remembers a tag (names of fields to seek in, separated by commas; nothing is built):
 * its number, or -1 when the table is not open. */
NQ_API int nq_Db_createNdx(int id, const nq_wchar *tagName, const nq_wchar *expression);
/* The number of the table's tag of that name (any case), or -1. */
NQ_API int nq_Db_openNdx(int id, const nq_wchar *tagName);
/* Forgets the tag if there is one. Always 1. */
NQ_API int nq_Db_closeNdx(int number);
/* -1: there is nothing to rebuild. */
NQ_API int nq_Db_rendx(void);

/* ---- Records ---- */

/* A fresh SELECT, positioned on the first row: 0; 1 when it fails or the table is empty;
 * 0 for a table that is not open. */
NQ_API int nq_Db_topRec(int id);
/* The next row: 0; 3 at the end (the record set is dropped) or for no such table. */
NQ_API int nq_Db_nextRec(int id);
/* The row before, by running the query again: 0; 3 on the first row or for no such table.
 * tag has no effect. */
NQ_API int nq_Db_prevRec(int id, int tag);
/* The last row: 0; 3 for no such table. */
NQ_API int nq_Db_botRec(int id);
/* A copy of the current row, owned by the caller (nq_DbFldList_destroy); 0 on failure. */
NQ_API DbFldList *nq_Db_readRec(int id);
NQ_API DbFldList *nq_Db_readCurrRec(DbRefNode *node);
/* The columns with empty values, owned by the caller; 0 on failure. */
NQ_API DbFldList *nq_Db_struct(int id);
/* Starts an append: the next nq_Db_modRec inserts. 0, or 1 for no such table. */
NQ_API int nq_Db_appRec(int id);
/* Writes record: an INSERT after nq_Db_appRec, else an UPDATE of the rows that hold the
 * current record's unchanged non-empty values. 0, or 1. */
NQ_API int nq_Db_modRec(int id, DbFldList *record);
/* The current value of a field, untrimmed, in a static buffer of 512 characters; null when
 * there is no such field or no record. */
NQ_API nq_wchar *nq_Db_getFldStr(int id, const nq_wchar *name);
/* Scans from the current row, wrapping round to it, for a row with a field equal to value
 * (only the tag's fields when tag names one): 0 with the cursor on that row, else 1. */
NQ_API int nq_Db_seekStr(const nq_wchar *value, int id, int tag);
/* The number of rows, or 0 on any failure. */
NQ_API int nq_Db_getRecordCount(int id);
/* 1 when the table is not open or has no current record, else 0. */
NQ_API int nq_Db_eof(int id);
/* Releases each record's leading block, then the array; a null array does nothing. */
NQ_API void nq_Db_freeFldInfo(DbFldInfo *info, int count);

/* ---- Operations that do nothing here ----
 * Records cannot be deleted or packed, record numbers are not published, and only the
 * string forms of read and seek work. Each of these returns 0 (0.0) and changes nothing. */
NQ_API int nq_Db_append(int id);
NQ_API int nq_Db_appendStart(int id);
NQ_API int nq_Db_assignFldDouble(int id, const nq_wchar *name, double value);
NQ_API int nq_Db_assignFldInt(int id, const nq_wchar *name, int value);
NQ_API int nq_Db_assignFldStr(int id, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_Db_assignFldStrN(int id, const nq_wchar *name, const nq_wchar *value, int length);
NQ_API int nq_Db_bof(int id);
NQ_API int nq_Db_cpyFldN(int id, const nq_wchar *name, nq_wchar *dest, int length);
NQ_API int nq_Db_delRec(int id);
NQ_API int nq_Db_deleted(int id);
NQ_API int nq_Db_getFldInt(int id, const nq_wchar *name);
NQ_API double nq_Db_getFldDouble(int id, const nq_wchar *name);
NQ_API int nq_Db_getRecordNo(int id);
NQ_API int nq_Db_packDb(int id);
NQ_API int nq_Db_padVal(nq_wchar *value, int width);
NQ_API int nq_Db_query(int id, const nq_wchar *expression);
NQ_API int nq_Db_readTable(int id);
NQ_API int nq_Db_seekDouble(double value, int id, int tag);
NQ_API int nq_Db_undelRec(int id);
NQ_API int nq_Db_writeRec(int id);

NQ_EXTERN_C_END

#endif /* NQ_DB_H */
