/* nq_tls20an: the string list, a linked list whose data are owned copies of wide strings.
 *
 * Cursor, order and walking are the linked list's. Node and string belong to the list.
 * Reading operations hand out static copies cut to 512 characters (the node keeps the
 * string whole); off the end of the list they return what they returned last, so the end
 * is told by nq_StrList_eol, not by a null result. */
#ifndef NQ_STRLIST_H
#define NQ_STRLIST_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* The node: a record holding a copy of the string made by nq_Str_dup. Null for a null
 * string or a failed allocation. The destructor releases string and record; 1, or 0 for
 * null. */
NQ_API StrListNode *nq_StrListNode_create(const nq_wchar *string);
NQ_API int nq_StrListNode_destroy(StrListNode *node);

/* The strings, closed by a null: nq_StrList_create(u"a", u"b", NULL). Cursor on the head. */
NQ_API StrList *nq_StrList_create(const nq_wchar *string, ...);
NQ_API int nq_StrList_destroy(StrList *list);
NQ_API int nq_StrList_delAll(StrList *list);
NQ_API int nq_StrList_delCurr(StrList *list);
NQ_API int nq_StrList_delNth(StrList *list, int index);

NQ_API int nq_StrList_start(StrList *list);
NQ_API int nq_StrList_end(StrList *list);
NQ_API int nq_StrList_next(StrList *list);
NQ_API int nq_StrList_prev(StrList *list);
NQ_API int nq_StrList_skip(StrList *list, int step);
NQ_API int nq_StrList_eol(StrList *list);
NQ_API int nq_StrList_length(StrList *list);
NQ_API int nq_StrList_count(StrList *list);

/* Insertions copy the string; a null string inserts nothing and yields 0. */
NQ_API int nq_StrList_insStart(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_insEnd(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_insBefore(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_insAfter(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_insNth(StrList *list, int index, const nq_wchar *string);
/* Before the first entry greater by code unit order; equal strings go after their equals. */
NQ_API int nq_StrList_insSorted(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_modCurr(StrList *list, const nq_wchar *string);
NQ_API int nq_StrList_modNth(StrList *list, int index, const nq_wchar *string);

/* The current entry copied (at most 512 characters) to a static buffer; off the list the
 * last one again, null only if none was ever read. */
NQ_API nq_wchar *nq_StrList_getCurr(StrList *list);
/* The current entry duplicated (nq_Free); off the list the last duplicate is returned once
 * more, whether or not the caller has released it. */
NQ_API nq_wchar *nq_StrList_getCurrPtr(StrList *list);
NQ_API nq_wchar *nq_StrList_getNth(StrList *list, int index);
/* Index of the first equal entry, the cursor on it; -1 and the cursor off the list. */
NQ_API int nq_StrList_search(StrList *list, const nq_wchar *string, int ignoreCase);
/* The first entry that contains part, copied (at most 512 characters) to a static buffer. */
NQ_API nq_wchar *nq_StrList_searchForString(StrList *list, const nq_wchar *part, int ignoreCase);
NQ_API void nq_StrList_sort(StrList *list);

/* Copies the entries of second behind those of list; second stays. */
NQ_API int nq_StrList_concatenate(StrList *list, StrList *second);
/* A new list; an empty one for null. */
NQ_API StrList *nq_StrList_copy(StrList *list);
/* The first occurrence of each entry survives in a new list; the old list is destroyed
 * unless it has fewer than two entries, in which case it is returned as it is. */
NQ_API StrList *nq_StrList_removeDuplicates(StrList *list, int ignoreCase);

/* Tokens of text (runs of delimiters count as one), each trimmed of blanks; null when there
 * is none. */
NQ_API StrList *nq_StrList_fromDelimitedString(const nq_wchar *text, const nq_wchar *delimiters);
/* The entries joined by delimiter, in a new block (nq_Free); null for a null or empty list. */
NQ_API nq_wchar *nq_StrList_toDelimitedString(StrList *list, const nq_wchar *delimiter);
/* The entries joined in groups of groupSize (all in one for 0 or less), each optionally
 * wrapped in single quotes, as for SQL IN lists. Entries are cut to 259 characters, 255 when
 * quoted. Null for a null or empty list. */
NQ_API StrList *nq_StrList_toDelimitedStringList(StrList *list, const nq_wchar *delimiter,
                                                 int groupSize, int quote);

NQ_EXTERN_C_END

#endif
