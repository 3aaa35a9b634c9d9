/* nq_tls20an: database field lists, the form in which a table's record or structure passes
 * through the nq_Db family: for each column its name, its value as text, its width,
 * precision and type letter.
 *
 * A DbFldList is a linked list of DbFldNode records and shares the linked list's cursor.
 * The list owns its nodes and the nodes own their values.
 *
 * The value rule, used by every operation that sets a value: the old value is released; a
 * null new value leaves the value null and yields 0; otherwise the value is a duplicate with
 * trailing blanks removed, and for the types N and F leading blanks as well, and the result
 * is 1.
 *
 * Text results are static buffers, one per operation, good until that operation runs again.
 * nq_DbFldNode_new and nq_DbFldNode_destroy trace under condition bit 512, entry only. */
#ifndef NQ_DBFLDLIST_H
#define NQ_DBFLDLIST_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Room of the name in the node; at most 63 characters are kept. */
#define NQ_DBFLD_NAME_SIZE 64

struct DbFldNode {
    nq_wchar name[NQ_DBFLD_NAME_SIZE];  /* column name */
    nq_wchar *value;                    /* owned text, or null */
    uint32_t width;                     /* column width */
    uint32_t precision;                 /* digits behind the decimal point */
    nq_wchar type;                      /* type letter, upper case; C by default */
};

/* name (cut at 63 characters), value by the value rule, type upper-cased (0 means C).
 * Null when memory is out. */
NQ_API DbFldNode *nq_DbFldNode_new(const nq_wchar *name, const nq_wchar *value, uint32_t width,
                                   uint32_t precision, nq_wchar type);
/* Releases value and node; 1, or 0 for null. */
NQ_API int nq_DbFldNode_destroy(DbFldNode *node);

/* Pairs of name and value, closed by a null name: C nodes of width and precision 0, names
 * upper-cased, a null value giving the empty text. */
NQ_API DbFldList *nq_DbFldList_create(const nq_wchar *name, ...);
/* A new list of copies (values by the value rule); null for null. The source's cursor ends
 * past its end. */
NQ_API DbFldList *nq_DbFldList_copy(DbFldList *list);
/* Releases list, nodes and values; 1, or 0 for null. */
NQ_API int nq_DbFldList_destroy(DbFldList *list);
NQ_API int nq_DbFldList_delCurr(DbFldList *list);
/* nq_DbFldList_find, then nq_DbFldList_delCurr; 1, or 0 when not found or for null. */
NQ_API int nq_DbFldList_delFld(DbFldList *list, const nq_wchar *name);

/* The linked list's own operations under this family's names. */
NQ_API int nq_DbFldList_start(DbFldList *list);
NQ_API int nq_DbFldList_end(DbFldList *list);
NQ_API int nq_DbFldList_next(DbFldList *list);
NQ_API int nq_DbFldList_prev(DbFldList *list);
NQ_API int nq_DbFldList_eol(DbFldList *list);
NQ_API int nq_DbFldList_length(DbFldList *list);

/* Only the name asked for is upper-cased, and stored names are compared exactly: 1 with the
 * cursor on the field, else 0 with the cursor past the end. */
NQ_API int nq_DbFldList_find(DbFldList *list, const nq_wchar *name);
/* Without regard to case; the node with the cursor on it, or null. */
NQ_API DbFldNode *nq_DbFldList_findFld(DbFldList *list, const nq_wchar *name);
/* Every value released and set to null; the nodes stay, the cursor ends past the end. */
NQ_API void nq_DbFldList_freeValues(DbFldList *list);

/* A list of the good lines of a template file, with null values; null when there is none.
 * A line is "NAME TWWWPPP": a name, blanks, then exactly seven characters of type letter,
 * three-digit width and three-digit precision. */
NQ_API DbFldList *nq_DbFldList_fromTemplate(const nq_wchar *path);
/* 1 for a good line, else 0. name receives at most 63 characters (it holds
 * NQ_DBFLD_NAME_SIZE), upper-cased; type the upper-cased letter. */
NQ_API int nq_DbFldList_parseFldDesc(const nq_wchar *line, nq_wchar *name, nq_wchar *type,
                                     int *width, int *precision);

/* At most 512 characters in a static buffer; empty without a node or value. */
NQ_API nq_wchar *nq_DbFldList_getCurrName(DbFldList *list);
NQ_API nq_wchar *nq_DbFldList_getCurrStr(DbFldList *list);
/* nq_DbFldList_getCurrStr padded with blanks to the node's width (at most 512). */
NQ_API nq_wchar *nq_DbFldList_getCurrStrPadded(DbFldList *list);
/* The value as a number (of its first 512 characters); 0 without a value. */
NQ_API int nq_DbFldList_getCurrInt(DbFldList *list);
NQ_API double nq_DbFldList_getCurrDouble(DbFldList *list);
/* 0 without a node. */
NQ_API uint32_t nq_DbFldList_getCurrWidth(DbFldList *list);
NQ_API uint32_t nq_DbFldList_getCurrPrec(DbFldList *list);
/* C without a node. */
NQ_API nq_wchar nq_DbFldList_getCurrType(DbFldList *list);
/* The whole value of the field found by nq_DbFldList_findFld, in a static buffer; empty
 * when there is none. */
NQ_API nq_wchar *nq_DbFldList_getFldVal(DbFldList *list, const nq_wchar *name);
/* The cursor to the nth node, then as the current forms, each in a static buffer of its
 * own; empty when there is no such node. */
NQ_API nq_wchar *nq_DbFldList_getNthStr(DbFldList *list, int n);
NQ_API nq_wchar *nq_DbFldList_getNthStrPadded(DbFldList *list, int n);

/* A new node at the end or the start: the linked list's result, 0 when no node was made. */
NQ_API int nq_DbFldList_insEnd(DbFldList *list, const nq_wchar *name, const nq_wchar *value,
                               uint32_t width, uint32_t precision, nq_wchar type);
NQ_API int nq_DbFldList_insStart(DbFldList *list, const nq_wchar *name, const nq_wchar *value,
                                 uint32_t width, uint32_t precision, nq_wchar type);
/* The value rule on the current node, the field found by nq_DbFldList_findFld, or the nth
 * node; 0 when there is none. */
NQ_API int nq_DbFldList_modCurrVal(DbFldList *list, const nq_wchar *value);
NQ_API int nq_DbFldList_modFldVal(DbFldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_DbFldList_modNthVal(DbFldList *list, int n, const nq_wchar *value);
/* The old number; 0 and no change without a node. */
NQ_API uint32_t nq_DbFldList_modCurrWidth(DbFldList *list, uint32_t width);
NQ_API uint32_t nq_DbFldList_modCurrPrec(DbFldList *list, uint32_t precision);

/* Each node as "%-16s " with its name, then "%c:%s\n" with type and value when the value is
 * not null (so a null value leaves the line open). */
NQ_API void nq_DbFldList_printList(DbFldList *list);

NQ_EXTERN_C_END

#endif
