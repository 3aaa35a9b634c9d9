/* nq_tls20an: INI configuration files of the classic group and "name=value" form.
 *
 * The format, as both routes below read it: a line whose first non-blank character is "["
 * begins a group, named up to "]" or the end of the line and trimmed; a line whose first
 * non-blank character is ";" is a comment; any other non-empty line is a variable
 * "name=value" (see nq_Ini_parse). Group and variable names compare without regard to case.
 * Lines are read up to 1024 characters; the rest of a longer line is not seen. Files are
 * UTF-8; a byte that is not UTF-8 reads as the character of the same value.
 *
 * Most operations go through the process-wide INI cache: each file is read once, when first
 * asked for, and kept until nq_Ini_reload or nq_Ini_resetCache; a set, an added or a removed
 * group is written through to the file at once, changing only the lines concerned (group order,
 * comments and all other lines stay as they were). A change that cannot be written to the file
 * is not kept in the cache either. The direct operations at the end read and rewrite the file
 * itself and do not tell the cache; reload it after them.
 *
 * Results of nq_Ini_get, nq_Ini_getAbsolute and nq_Ini_getValue share one static buffer of
 * 2048 characters, good until the next of these calls. Nothing traces. */
#ifndef NQ_INI_H
#define NQ_INI_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Through the cache. */

/* The value of a variable, or null. An empty value, or one that is empty after expansion and
 * the removal of leading blanks, counts as missing; so does a missing file or group. With
 * expand non-zero the aliases in the value are expanded (nq_Alias_expandStr) and limit does not
 * apply; otherwise at most limit characters are copied. Leading blanks are removed. Static. */
NQ_API nq_wchar *nq_Ini_getValue(const nq_wchar *file, const nq_wchar *group,
                                 const nq_wchar *variable, int expand, int limit);
/* nq_Ini_getValue with expansion (limit 512), and without it. */
NQ_API nq_wchar *nq_Ini_get(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable);
NQ_API nq_wchar *nq_Ini_getAbsolute(const nq_wchar *file, const nq_wchar *group,
                                    const nq_wchar *variable);
/* _wtoi of the expanded value; 0 if missing. */
NQ_API int nq_Ini_getInt(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable);

/* Sets a variable, adding the group (at the end of the file) and the variable (after the
 * group's last variable) when missing, and writes the file; the file is made if it does not
 * exist. A null value removes the variable. 0 for success, 1 for failure: a null or empty file,
 * group or variable name, a name that cannot be written in the format (a group name with "]",
 * a variable name with "=" or beginning with "[" or ";", a line break anywhere), or a file that
 * cannot be written. */
NQ_API int nq_Ini_set(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable,
                      const nq_wchar *value);
/* Sets the value, stores the set's result through setResult if given, and yields 1 if the
 * value then read back without expansion (limit 1024) equals it ignoring case, else 0. A value
 * that reads back as missing equals only the empty value. */
NQ_API int nq_Ini_setAndVerify(const nq_wchar *file, const nq_wchar *group,
                               const nq_wchar *variable, const nq_wchar *value, int *setResult);
/* Sets each field of the list as a variable of the group: its value as text (limit 512; a
 * number is written in its text form, a point as an empty value). Without write access to
 * the file (a missing file gives none) the result is 0 and nothing is set. With existingOnly
 * non-zero a field whose variable is missing is passed over. A field without a name, or a set
 * that fails, makes the result 0; the walk goes on, and the result stays 0. Otherwise 1. The
 * list's cursor moves. */
NQ_API int nq_Ini_setGroup(const nq_wchar *file, const nq_wchar *group, FldList *list,
                           int existingOnly);
/* nq_Ini_setGroup; with replace non-zero the group is first emptied, so that variables the
 * list does not set are gone afterwards (with existingOnly, the fields of variables that
 * existed before are the ones set). */
NQ_API int nq_Ini_setGroupEx(const nq_wchar *file, const nq_wchar *group, FldList *list,
                             int existingOnly, int replace);
/* nq_Ini_setGroup with existingOnly: only variables the group already has change. */
NQ_API int nq_Ini_updateGroup(const nq_wchar *file, const nq_wchar *group, FldList *list);

/* A new field list of the group's variables (Char fields, names upper case, in the file's
 * order), or null when the file or the group is missing. Values as nq_Ini_get gives them
 * (expanded; empty ones left out), as nq_Ini_getAbsolute gives them (raw, limit 512), or
 * expanded with the empty ones kept as empty values. The caller destroys the list. */
NQ_API FldList *nq_Ini_getGroup(const nq_wchar *file, const nq_wchar *group);
NQ_API FldList *nq_Ini_getGroupAbsolute(const nq_wchar *file, const nq_wchar *group);
NQ_API FldList *nq_Ini_getGroupWithNulls(const nq_wchar *file, const nq_wchar *group);
/* nq_Ini_getGroup when expand is non-zero, nq_Ini_getGroupAbsolute when it is zero. */
NQ_API FldList *nq_Ini_getGroupValues(const nq_wchar *file, const nq_wchar *group, int expand);

/* Appends "[group]" and an empty line. 1 if it was added; 0 if it exists, for a name that
 * cannot be written, or when the file cannot be written. */
NQ_API int nq_Ini_addGroup(const nq_wchar *file, const nq_wchar *group);
/* Removes every line of the group, its comments included, up to the next group. 1 or 0. */
NQ_API int nq_Ini_removeGroup(const nq_wchar *file, const nq_wchar *group);

/* A new string list of the names of the groups that begin with prefix (ignoring case; an
 * empty prefix takes all), in the file's order. Null when the file is missing or has no
 * groups; an empty list when none begins so. */
NQ_API StrList *nq_Ini_findPrefixGroups(const nq_wchar *file, const nq_wchar *prefix);
NQ_API StrList *nq_Ini_findAllGroups(const nq_wchar *file);
/* The next free number of a group family "PREFIX.n": the largest n plus 1, "0" when there is
 * no group of that prefix. Static. */
NQ_API nq_wchar *nq_Ini_getNextIncrSuffix(const nq_wchar *file, const nq_wchar *prefix);

/* Drops what the cache holds of the file and reads it again: 1 if the file could be read. */
NQ_API int nq_Ini_reload(const nq_wchar *file);
/* Empties the cache. */
NQ_API void nq_Ini_resetCache(void);
/* Prints the cache's content on standard output: each file with its groups and variables. */
NQ_API void nq_Ini_viewCache(void);

/* Directly on the file. */

/* Reads lines from the stream's position until the group's line: 1 with the stream just
 * behind it, else 0 at the end of the stream. */
NQ_API int nq_Ini_findGroup(FILE *stream, const nq_wchar *group);
/* A new string list of the group's lines with leading blanks removed, without empty lines and,
 * unless keepComments is non-zero, without comments; null for a missing group or one without
 * lines. */
NQ_API StrList *nq_Ini_getGroupLines(const nq_wchar *file, const nq_wchar *group, int keepComments);
/* A new field list of the group's variables that have a name and a value (Char fields), or
 * null when there is none. */
NQ_API FldList *nq_Ini_getGroupItems(const nq_wchar *file, const nq_wchar *group);
/* Rewrites the file with the group's lines replaced by the list's fields ("%s=%s", values as
 * text up to 1024 characters) and an empty line; a missing group, or file, gets the group at
 * its end. Works through "nq_tmp.ini" in the file's folder and nq_File_move. Lines are copied
 * through the 1024-character reader. 1 or 0. */
NQ_API int nq_Ini_setGroupItems(const nq_wchar *file, const nq_wchar *group, FldList *list);

/* Splits one line "name = value": leading spaces skipped, the name up to the first "=" and
 * trimmed, then every space and "=" skipped and the rest trimmed as the value. A line with no
 * "=" is a name with an empty value. Each buffer needs room for the line; a null one is not
 * written, a null line empties both. */
NQ_API void nq_Ini_parse(const nq_wchar *line, nq_wchar *name, nq_wchar *value);
/* 1 if the line's first non-blank character is "[", with the group's name (up to "]" or the
 * end, trimmed) in name (room for the line); else 0 and name empty. */
NQ_API int nq_Ini_getGroupName(const nq_wchar *line, nq_wchar *name);
/* What follows the first dot of a group name, or the whole name: a pointer into it. */
NQ_API nq_wchar *nq_Ini_getGroupNameSuffix(nq_wchar *groupName);
/* Prints "Error reading Ini File\nFile Name %s\nGroup Name %s\nVariable Name %s". */
NQ_API void nq_Ini_displayError(const nq_wchar *file, const nq_wchar *group,
                                const nq_wchar *variable);

NQ_EXTERN_C_END

#endif
