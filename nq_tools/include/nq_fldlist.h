/* nq_tls20an: the field list, an ordered list of named, typed values, and the operations on
 * whole field lists.
 *
 * A FldList is a linked list whose data are FldNode records and it shares the linked list's
 * cursor. Field names are upper case from the moment a node is built; lookup upper-cases the
 * name asked for and finds the first match, and leaves the cursor on it. So every by-name
 * function moves the cursor, and a loop over a list must not call one on the same list
 * without restoring its position.
 *
 * Results of the accessors, unless a line below says otherwise:
 *    1  done
 *    0  a required argument was null, or nothing was done
 *   -1  the list has no current node
 *   -2  the named field does not exist
 *   -3  the field's type does not suit the request (it may still have been served by a
 *       conversion, and the caller's variable may have been written)
 *   -4  out of memory while building a node
 *
 * Nothing here traces, except through the linked list underneath. */
#ifndef NQ_FLDLIST_H
#define NQ_FLDLIST_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Type codes, one ASCII letter each. */
#define NQ_FLD_CHAR    ((uint16_t)'C') /* wide string, owned copy, may be null */
#define NQ_FLD_DPOINT  ((uint16_t)'D') /* three doubles */
#define NQ_FLD_HANDLE  ((uint16_t)'H') /* wide string, owned copy, may be null */
#define NQ_FLD_INT     ((uint16_t)'I') /* 32-bit signed integer */
#define NQ_FLD_LONG    ((uint16_t)'L') /* 32-bit signed integer */
#define NQ_FLD_MPOINT  ((uint16_t)'M') /* three doubles */
#define NQ_FLD_REAL    ((uint16_t)'N') /* double */
#define NQ_FLD_VECTOR  ((uint16_t)'O') /* three doubles */
#define NQ_FLD_POINT   ((uint16_t)'P') /* three doubles */
#define NQ_FLD_STRLIST ((uint16_t)'S') /* StrList, owned by the node */
#define NQ_FLD_UNKNOWN ((uint16_t)'U') /* no value */
#define NQ_FLD_LIST    ((uint16_t)'V') /* nested FldList, owned by the node, may be null */

/* The value of a field: 24 bytes, 8-byte aligned. */
typedef union FldValue {
    void *ptr;
    nq_wchar *str;     /* C, H */
    int32_t i;         /* I, L */
    double d;          /* N */
    double p[3];       /* D, M, O, P */
    Point point;       /* D, M, P */
    Vector vector;     /* O */
    FldList *list;     /* V */
    StrList *strList;  /* S */
} FldValue;

struct FldNode {
    nq_wchar *name;    /* owned copy, upper case */
    uint16_t type;     /* type code */
    int16_t aux1;      /* 1 from every constructor; read by nothing */
    int16_t aux2;      /* 0 from every constructor; read by nothing */
    FldValue value;
};

/* The linked list's own operations under the field list's names. nq_FldList_curr yields
 * the node at the cursor, nq_FldList_count the number of nodes. */
NQ_API int nq_FldList_start(FldList *list);
NQ_API int nq_FldList_next(FldList *list);
NQ_API int nq_FldList_prev(FldList *list);
NQ_API int nq_FldList_eol(FldList *list);
NQ_API int nq_FldList_count(FldList *list);
NQ_API FldNode *nq_FldList_curr(FldList *list);

/* Triples of name, type code and value, closed by a null name:
 *   nq_FldList_create(u"A", 'C', u"text", u"B", 'I', 5, u"P", 'P', 1.0, 2.0, 3.0, NULL)
 * The type is read as an int, of which the low 16 bits count. C and H take a string, D, M,
 * O and P three doubles, I and L an int, N a double; any other code takes one int, which is
 * ignored, and makes the field Unknown. The "no value" numbers are folded to zero here, and
 * only here: an I or L of -9999 is stored as 0, an N within 0.01 of -9999.0 as 0.0.
 * nq_FldList_create(NULL) is an empty list. The cursor is left where appending leaves it. */
NQ_API FldList *nq_FldList_create(const nq_wchar *name, ...);
/* Destroys the list, its nodes and everything they own. */
NQ_API int nq_FldList_destroy(FldList *list);
/* Frees the name, a Char or Handle string, a nested List (recursively) or a StrList, and the
 * node. 1, or 0 for null. */
NQ_API int nq_FldList_destroyNode(FldNode *node);
/* Deletes the node at the cursor; the cursor goes as the linked list's delete moves it. */
NQ_API int nq_FldList_delCurr(FldList *list);
/* 1, or 0 for a null argument or a missing field. */
NQ_API int nq_FldList_delFld(FldList *list, const nq_wchar *name);

/* The first node of that name (compared after upper-casing; a name is cut at 255
 * characters), cursor on it; null with the cursor past the end. A null or empty list, or a
 * null name, yields null and leaves the cursor alone. */
NQ_API FldNode *nq_FldList_find(FldList *list, const nq_wchar *name);
/* The current name copied into out, which must hold it whole. 1, or -1 without a node or
 * name. */
NQ_API int nq_FldList_currFldname(FldList *list, nq_wchar *out);
NQ_API int nq_FldList_currFldtype(FldList *list, uint16_t *out);

/* Building a node: the name duplicated and upper-cased, aux1 1, aux2 0. Null only when the
 * node cannot be allocated. Handle values are upper-cased here and nowhere else. A null
 * point pointer is taken as the origin. */
NQ_API FldNode *nq_FldList_newChar(const nq_wchar *name, const nq_wchar *value);
NQ_API FldNode *nq_FldList_newDpoint(const nq_wchar *name, const Point *value);
NQ_API FldNode *nq_FldList_newHandle(const nq_wchar *name, const nq_wchar *value);
NQ_API FldNode *nq_FldList_newInt(const nq_wchar *name, int32_t value);
NQ_API FldNode *nq_FldList_newList(const nq_wchar *name, FldList *value);
NQ_API FldNode *nq_FldList_newLong(const nq_wchar *name, int32_t value);
NQ_API FldNode *nq_FldList_newMpoint(const nq_wchar *name, const Point *value);
NQ_API FldNode *nq_FldList_newPoint(const nq_wchar *name, const Point *value);
NQ_API FldNode *nq_FldList_newReal(const nq_wchar *name, double value);
NQ_API FldNode *nq_FldList_newUnknown(const nq_wchar *name);
NQ_API FldNode *nq_FldList_newVector(const nq_wchar *name, const Vector *value);

/* Appending without looking at the names: 1, -4 when the node cannot be made, 0 for a null
 * list. When the result is not 1, a List or StrList value stays the caller's. */
NQ_API int nq_FldList_appChar(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_appDpoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_appHandle(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_appInt(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_appList(FldList *list, const nq_wchar *name, FldList *value);
NQ_API int nq_FldList_appLong(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_appMpoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_appPoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_appReal(FldList *list, const nq_wchar *name, double value);
NQ_API int nq_FldList_appUnknown(FldList *list, const nq_wchar *name);
NQ_API int nq_FldList_appVector(FldList *list, const nq_wchar *name, const Vector *value);
/* An S field holding strList, which the node takes over. */
NQ_API int nq_FldList_appStrList(FldList *list, const nq_wchar *name, StrList *strList);

/* Setting the first field of that name, type included, or appending when there is none.
 * Only a Char or Handle string of the old value is released: a List or StrList replaced
 * here stays allocated, so a caller replacing one fetches and destroys it first. */
NQ_API int nq_FldList_modChar(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_modDpoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_modHandle(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_modInt(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_modList(FldList *list, const nq_wchar *name, FldList *value);
NQ_API int nq_FldList_modLong(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_modMpoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_modPoint(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_modReal(FldList *list, const nq_wchar *name, double value);
NQ_API int nq_FldList_modUnknown(FldList *list, const nq_wchar *name);
NQ_API int nq_FldList_modVector(FldList *list, const nq_wchar *name, const Vector *value);

/* Adding a value to a field that may hold several: a missing field is appended; a List
 * field gets the value as a node of the same name at the end of its nested list; any other
 * field is first turned into a List holding the old node. 1 whenever the field existed. */
NQ_API int nq_FldList_addCharVal(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_addDpointVal(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_addHandleVal(FldList *list, const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_FldList_addIntVal(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_addLongVal(FldList *list, const nq_wchar *name, int32_t value);
NQ_API int nq_FldList_addMpointVal(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_addPointVal(FldList *list, const nq_wchar *name, const Point *value);
NQ_API int nq_FldList_addRealVal(FldList *list, const nq_wchar *name, double value);
NQ_API int nq_FldList_addUnknownVal(FldList *list, const nq_wchar *name);
NQ_API int nq_FldList_addVectorVal(FldList *list, const nq_wchar *name, const Vector *value);
/* The add member of the type: for C and H value is the string itself, for I and L it points
 * to an int32_t, for N to a double, for D, M, O and P to three doubles, for U it is not read.
 * 1 for those codes; 0 for any other code (S and V included) and for a null number or point
 * pointer. */
NQ_API int nq_FldList_addVal(FldList *list, const nq_wchar *name, uint16_t type, const void *value);

/* Reading by name (the cursor stays on the field). getChar and getHandle empty out first,
 * then copy at most max characters (out holds max + 1); getChar writes an I, L or N value
 * as "%d", "%ld" or "%f" whatever max says (up to 317 characters for a Real) and yields -3.
 * getInt, getLong and getReal convert a Char field's text and yield -3 all the same (a null
 * text leaves out alone); a Real read as an integer is truncated toward zero. A null list or
 * name is a missing field (-2); a null out of a number or point reader yields 0. */
NQ_API int nq_FldList_getChar(FldList *list, const nq_wchar *name, nq_wchar *out, int max);
NQ_API int nq_FldList_getHandle(FldList *list, const nq_wchar *name, nq_wchar *out, int max);
NQ_API int nq_FldList_getInt(FldList *list, const nq_wchar *name, int32_t *out);
NQ_API int nq_FldList_getLong(FldList *list, const nq_wchar *name, int32_t *out);
NQ_API int nq_FldList_getReal(FldList *list, const nq_wchar *name, double *out);
/* flag is not used. */
NQ_API int nq_FldList_getPoint(FldList *list, const nq_wchar *name, Point *out, int flag);
NQ_API int nq_FldList_getVector(FldList *list, const nq_wchar *name, Vector *out);

/* Reading at the cursor; these differ from the readers by name on purpose. currChar does
 * not empty out first, leaves it alone for a null string and still yields 1, writes I, L and
 * N as numbers and anything else as the empty string, with -3. currHandle writes the empty
 * string on any mismatch. currInt (and currLong, the same function) refuses a Char field;
 * currReal converts one and yields 1. currList hands back the node's own List or StrList
 * (the node keeps it) and yields -3, not -1, without a node. */
NQ_API int nq_FldList_currChar(FldList *list, nq_wchar *out, int max);
NQ_API int nq_FldList_currHandle(FldList *list, nq_wchar *out, int max);
NQ_API int nq_FldList_currInt(FldList *list, int32_t *out);
NQ_API int nq_FldList_currLong(FldList *list, int32_t *out);
NQ_API int nq_FldList_currReal(FldList *list, double *out);
NQ_API int nq_FldList_currPoint(FldList *list, Point *out);
NQ_API int nq_FldList_currVector(FldList *list, Vector *out);
NQ_API int nq_FldList_currList(FldList *list, LnkList **out);

/* The value as text, in a new string (nq_Free): "%s", "%d", "%ld", "%f", and for the point
 * types "%c:%.3f %.3f %.3f" whose character is the low 16 bits of the first coordinate's bit
 * pattern (a zero there ends the text at once). A List node formats nothing and so yields
 * the text of the previous call again; a null node yields an empty string. */
NQ_API nq_wchar *nq_FldNode_getFldValue(FldNode *node);
/* Parses text into the node by its type. A Char or Handle string is overwritten in place and
 * never reallocated: text longer than the string there is cut to its length. D, M, O, P, V
 * and S stay unchanged; a null node, text or string does nothing. */
NQ_API void nq_FldNode_updateFldValue(FldNode *node, const nq_wchar *text);

/* Whole lists. */

/* Every field of src appended to dst (concatenate) or set in dst by name (combine). Strings
 * and numbers are copied, nested lists deeply; any other code, S among them, arrives as an
 * Unknown field of that name. 1, or 0 for a null argument. */
NQ_API int nq_FldList_concatenate(FldList *dst, FldList *src);
NQ_API int nq_FldList_combine(FldList *dst, FldList *src);
/* A new list with copies of the fields (a StrList becomes Unknown); null only when no list
 * can be made. */
NQ_API FldList *nq_FldList_copy(FldList *src);
/* One field set in dst under dstName: a Char or Handle arrives as a Char of at most 512
 * characters, numbers and points keep their type; other types write nothing. 1, or 0 for
 * a null argument or a missing source field. */
NQ_API int nq_FldList_copyFld(FldList *src, const nq_wchar *srcName, FldList *dst,
                              const nq_wchar *dstName);
/* One-sided: -2 for a null node, -1 / 1 for a type below / above; then a string compare for
 * C and H, and -1 for I, L and N only when a is less than b by 0.001 or more; every other
 * case, points and greater values included, is 0. */
NQ_API int nq_FldList_compareNode(FldNode *a, FldNode *b);
/* Copies of the fields of a that differ from b by nq_FldList_compareNode, and with
 * includeMissing those b lacks; null when there are none. */
NQ_API FldList *nq_FldList_diff(FldList *a, FldList *b, int includeMissing);
/* Turns the field into a List holding it and yields the new node. A missing field gets an
 * empty List field appended and yields null; a List field yields null. */
NQ_API FldNode *nq_FldList_convertNodeToList(FldList *list, const nq_wchar *name);
/* Rotation, then offset, applied in place to the P and M fields, rotation only to the D and
 * O fields, whose type letters are in types. Nested lists are not entered. 1, 0 for a null
 * list or types or for neither offset nor rotation, or the last failing status. */
NQ_API int nq_FldList_applyTransform(FldList *list, const Point *offset, const RotMatrix *rotation,
                                     const nq_wchar *types);

/* Printing to standard output: at level 0 each line starts with the name as "%-16s ",
 * deeper lines with 17 + 3 * (level - 1) blanks and no name. */
NQ_API void nq_FldList_printList(FldList *list);
NQ_API void nq_FldList_printLevelList(FldList *list, int level);
/* The same lines (without line ends) to the diagnostics, each only when diagLevel is not
 * above the current level and condition has a bit of the current mask. */
NQ_API void nq_FldList_printListDiag(FldList *list, int diagLevel, uint32_t condition);
NQ_API void nq_FldList_printLevelListDiag(FldList *list, int level, int diagLevel,
                                          uint32_t condition);

/* A Char field for each line "name = value" with both parts non-empty; null when there is
 * none. The cursor of the new list is on its head. */
NQ_API FldList *nq_FldList_fromEnvList(StrList *lines);
/* A field for each named column: N of precision 0 as Int, other N as Real (a decimal comma
 * is read as a point), everything else as Char. */
NQ_API FldList *nq_FldList_fromDbFldList(DbFldList *dbList);

NQ_EXTERN_C_END

#endif
