/* nq_tls20an: the types shared by every family.
 * Plain C11; compiles as C and as C++. */
#ifndef NQ_TYPES_H
#define NQ_TYPES_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
/* char16_t is a keyword in C++. */
#else
#include <uchar.h>
#endif

/* Exported symbols. Everything else in the library is hidden. */
#if defined(__GNUC__)
#define NQ_API __attribute__((visibility("default")))
#else
#define NQ_API
#endif

#ifdef __cplusplus
#define NQ_EXTERN_C_BEGIN extern "C" {
#define NQ_EXTERN_C_END }
#else
#define NQ_EXTERN_C_BEGIN
#define NQ_EXTERN_C_END
#endif

NQ_EXTERN_C_BEGIN

/* A wide character is one UTF-16 code unit. Callers write u"text". */
typedef char16_t nq_wchar;

/* Callbacks of the lists and the array. */
typedef int (*nq_DestroyFn)(void *datum);
typedef int (*nq_CompareFn)(void *a, void *b);
typedef int (*nq_ArrayDestroyFn)(void *element);
typedef int (*nq_ArrayCompareFn)(void *element, void *key);

/* Fixed-size array of fixed-size elements. */
typedef struct nq_Array {
    uint32_t count;        /* number of elements */
    uint32_t elementSize;  /* bytes per element */
    void *data;            /* count * elementSize bytes */
} nq_Array;

/* Doubly linked list of opaque data words with one cursor. */
typedef struct LnkListNode {
    void *data;                 /* the caller's datum; never looked into */
    struct LnkListNode *next;   /* null at the tail */
    struct LnkListNode *prev;   /* null at the head */
} LnkListNode;

typedef struct LnkList {
    int32_t count;              /* number of nodes */
    LnkListNode *head;          /* first node, null if empty */
    LnkListNode *tail;          /* last node, null if empty */
    LnkListNode *cursor;        /* current node; null means off the list */
} LnkList;

/* The other lists are the linked list under their own names. */
typedef LnkList StrList;
typedef LnkList FldList;
typedef LnkList DbFldList;
typedef LnkList PointList;
typedef LnkList VectorList;
typedef LnkList PointTravelList;

/* The datum of a string list node: a private copy of the string. */
typedef struct StrListNode {
    nq_wchar *string;
} StrListNode;

/* Three consecutive 64-bit floats. */
typedef struct Vector {
    double x, y, z;
} Vector;

typedef struct Point {
    double x, y, z;
} Point;

typedef struct Quaternion {
    double x, y, z, w;
} Quaternion;

/* A counted array of floats. */
typedef struct Ntuple {
    int32_t count;
    double *values;
} Ntuple;

/* A counted array of columns; a rotation matrix is 3 by 3, a transform 4 by 4. */
typedef struct Matrix {
    int32_t columns;     /* number of columns */
    Ntuple **items;      /* one Ntuple a column, each of as many values as there are rows */
} Matrix;

typedef Matrix RotMatrix;
typedef Matrix TMatrix;

/* Records whose fields their own families define. */
typedef struct FldNode FldNode;
typedef struct DbFldNode DbFldNode;
typedef struct PointTravelNode PointTravelNode;
typedef struct MsgNode MsgNode;
typedef struct MsgKeyWordListNode MsgKeyWordListNode;
typedef struct DbRefNode DbRefNode;
typedef struct DbTagRefNode DbTagRefNode;

NQ_EXTERN_C_END

#endif /* NQ_TYPES_H */
