/* nq_tls20an: wide string functions.
 *
 * Strings are null-terminated UTF-16 in buffers the caller owns; a buffer is not bounded
 * unless a bound is named, so the caller gives room. Results marked "static" live in one
 * process-wide buffer of that operation and are overwritten by its next call. Nothing here
 * traces. */
#ifndef NQ_STR_H
#define NQ_STR_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Copying and duplicating. */

/* A copy from nq_Malloc, released with nq_Free; null for null. */
NQ_API nq_wchar *nq_Str_dup(const nq_wchar *string);
NQ_API nq_wchar *nq_Str_dupW(const nq_wchar *string);
/* Copies src and its terminator, then one more terminator behind it: dest needs room for
 * length + 2. A null src writes one terminator and yields null; otherwise yields dest. */
NQ_API nq_wchar *nq_Str_cpy(nq_wchar *dest, const nq_wchar *src);
/* At most n characters and always a terminator (up to n + 1 written). 1 when exactly n
 * characters were copied, else 0. A null src gives an empty dest. */
NQ_API int nq_Str_ncpy(nq_wchar *dest, const nq_wchar *src, int n);
/* nq_Str_cpy at the end of dest (with its second terminator); null if either is null. */
NQ_API nq_wchar *nq_Str_cat(nq_wchar *dest, const nq_wchar *src);
/* At most length characters from position start (counted from 1; below 1 counts as 1). */
NQ_API nq_wchar *nq_Str_substr(nq_wchar *dest, const nq_wchar *src, int start, int length);

/* Comparing: -1, 0 or 1. */

/* Ignoring case. A null equals the empty string and sorts after every other string. */
NQ_API int nq_Str_cmpi(const nq_wchar *a, const nq_wchar *b);
/* The same over at most n characters. */
NQ_API int nq_Str_ncmpi(const nq_wchar *a, const nq_wchar *b, int n);
/* "1", "TRUE", "YES", "ON" (any case); and "0", "FALSE", "NO", "OFF". 0 for null. */
NQ_API int nq_Str_isAffirmative(const nq_wchar *string);
NQ_API int nq_Str_isNegative(const nq_wchar *string);
/* Index of the first occurrence of pattern in text, or -1. An empty pattern yields 0. */
NQ_API int nq_Str_index(const nq_wchar *text, const nq_wchar *pattern, int ignoreCase);

/* Wildcards: "*" and "?" in one forward scan without backtracking. A star binds to the first
 * occurrence of the character after it (so "*abd" does not match "abcabd"), a "?" after a
 * star is a literal question mark, and "?" also matches the end of the text ("ab?" matches
 * "ab"). 1 or 0; 0 for a null argument. */
NQ_API int nq_Str_matchWildcard(const nq_wchar *text, const nq_wchar *pattern);
NQ_API int nq_Str_matchWildcardi(const nq_wchar *text, const nq_wchar *pattern);

/* Case: each character mapped into dest, which may be src. Yield dest. */
NQ_API nq_wchar *nq_Str_toUpper(nq_wchar *dest, const nq_wchar *src);
NQ_API nq_wchar *nq_Str_toLower(nq_wchar *dest, const nq_wchar *src);

/* Blanks, in place; null is ignored. Yield the string. */
NQ_API nq_wchar *nq_Str_rlb(nq_wchar *string);
NQ_API nq_wchar *nq_Str_rtb(nq_wchar *string);
NQ_API nq_wchar *nq_Str_delBlks(nq_wchar *string);
/* Removes every c (every space). */
NQ_API nq_wchar *nq_Str_stripChar(nq_wchar *string, nq_wchar c);
NQ_API nq_wchar *nq_Str_strip(nq_wchar *string);
/* Removes every character of set; with leadingOnly only up to the first one outside it. */
NQ_API nq_wchar *nq_Str_stripChars(nq_wchar *string, const nq_wchar *set, int leadingOnly);

/* Padding and justifying, in place. A negative width counts as 0; lj, rj and cj cut a
 * longer string at the width, pad keeps it whole. */
NQ_API void nq_Str_pad(nq_wchar *string, int length);
NQ_API void nq_Str_lj(nq_wchar *string, int width);
NQ_API void nq_Str_rj(nq_wchar *string, int width);
NQ_API void nq_Str_cj(nq_wchar *string, int width);

/* Words. pos is an index in and out; one semicolon (all spaces) at pos is skipped, the word
 * up to the next one goes to dest. Past the end dest becomes empty. Yield dest. */
NQ_API nq_wchar *nq_Str_nextCDLWord(nq_wchar *dest, const nq_wchar *src, int *pos);
NQ_API nq_wchar *nq_Str_nextSDLWord(nq_wchar *dest, const nq_wchar *src, int *pos);

/* Tokens (runs of delimiters count as one), n from 0, from the left or from the right.
 * Static result; position receives the token's index in text, -1 when there is none.
 * A text over 512 characters yields null. */
NQ_API nq_wchar *nq_Str_getNthToken(const nq_wchar *text, const nq_wchar *delimiters, int n,
                                    int *position);
NQ_API nq_wchar *nq_Str_getRightNthToken(const nq_wchar *text, const nq_wchar *delimiters,
                                         int n, int *position);

/* Keywords. */

/* What lies between the first two occurrences of delimiter, cut to 256 characters; static.
 * Null when there are fewer than two. */
NQ_API nq_wchar *nq_Str_locateKeyword(const nq_wchar *text, const nq_wchar *delimiter);
/* Replaces the first delimiter+keyword+delimiter by replacement, and copies the outcome back
 * into text with nq_Str_ncpy and maxLength (also when nothing was found). Yields text. */
NQ_API nq_wchar *nq_Str_replaceKeyword(nq_wchar *text, const nq_wchar *keyword,
                                       const nq_wchar *delimiter, const nq_wchar *replacement,
                                       int maxLength);
/* The same into a new block (nq_Free), a plain copy if nothing was found. */
NQ_API nq_wchar *nq_Str_replaceKeywordDynamic(const nq_wchar *text, const nq_wchar *keyword,
                                              const nq_wchar *delimiter,
                                              const nq_wchar *replacement);
/* Every occurrence of the string from replaced by the string to; static result of at most
 * 511 characters. */
NQ_API nq_wchar *nq_Str_replaceChar(const nq_wchar *text, const nq_wchar *from,
                                    const nq_wchar *to);

/* Dotted versions compared component by component as numbers, following a's components
 * only: "1.2.1" against "1.2" is 1, "1.2" against "1.2.1" is 0. */
NQ_API int nq_Str_compareVersion(const nq_wchar *a, const nq_wchar *b);

/* Word wrap. */

/* From index n - 1 backward to a space: the count to give back from n to stand on it, or 0. */
NQ_API int nq_Str_findClosestWordBoundary(const nq_wchar *text, int n);
/* A new string list of lines of at most width characters; null for null text or a width
 * below 1. */
NQ_API StrList *nq_Str_wrapText(const nq_wchar *text, int width);

NQ_EXTERN_C_END

#endif
