/* nq_tls20an: the session environment and aliases.
 *
 * A name is looked up in layers: the session's variables (process-wide, in memory, gone when
 * the library unloads), the group "GENERAL" of nq.ini in the configuration folder, and the
 * process's environment. Session names compare without regard to case and keep the case of
 * the call. Aliases are a separate table of names and values that the INI values expand.
 *
 * Static results (good until the next call of the same operation): nq_Env_getSes and
 * nq_Env_getSesLocal (512 characters), nq_Env_getIni (the INI result buffer), nq_Env_getWin
 * (256), nq_Env_expandVar (2048) and nq_Env_expandStr (4096); a longer result is cut.
 * Nothing traces. */
#ifndef NQ_ENV_H
#define NQ_ENV_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* The session variable's value, trimmed, or null (no such variable, or no session list yet).
 * The two names are one operation. */
NQ_API nq_wchar *nq_Env_getSes(const nq_wchar *name);
NQ_API nq_wchar *nq_Env_getSesLocal(const nq_wchar *name);
/* Sets a session variable, stored as the entry "NAME = value". A null or empty value removes
 * it. 1 if no variable of the name existed (a new entry, or nothing for a removal), 0 if one
 * was changed or removed; 0 for a null name. The first call makes the session list. */
NQ_API int nq_Env_setSes(const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_Env_setSesLocal(const nq_wchar *name, const nq_wchar *value);
/* A copy of the session list (entries "NAME = value"), which the caller destroys; null if no
 * list was made yet. */
NQ_API StrList *nq_Env_getSesList(void);
/* Removes every entry; the list stays. */
NQ_API void nq_Env_resetSes(void);
NQ_API void nq_Env_resetSesLocal(void);
/* Marks the session as belonging to an application. Nothing reads the mark. */
NQ_API void nq_Env_setSesApp(void);

/* nq_Ini_get, nq_Ini_set, nq_Ini_getGroup and nq_Ini_displayError on nq.ini in the
 * configuration folder (nq_Sys_getCfgName). */
NQ_API nq_wchar *nq_Env_getIni(const nq_wchar *group, const nq_wchar *variable);
NQ_API int nq_Env_setIni(const nq_wchar *group, const nq_wchar *variable, const nq_wchar *value);
NQ_API FldList *nq_Env_getIniGroup(const nq_wchar *group);
NQ_API void nq_Env_displayIniError(const nq_wchar *group, const nq_wchar *variable);

/* A value read from an INI file directly, the way the Windows profile functions read it (the
 * first group of the name, the first variable, blanks trimmed, one pair of enclosing quotes
 * dropped), at most 255 characters; null if missing or empty. Static. */
NQ_API nq_wchar *nq_Env_getWin(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable);

/* With a "%" at text[*position]: the value of the name that runs from the next character to
 * the next "%" (or the end), looked up among the session variables, then in the group
 * "GENERAL" of nq.ini, then in the process environment; *position moves past the closing
 * sign. Empty when found nowhere, when the name is empty, or when there is no "%" there (and
 * then *position stays). Static. */
NQ_API nq_wchar *nq_Env_expandVar(const nq_wchar *text, int *position);
/* A copy of text with every %name% replaced by nq_Env_expandVar and every "%%" by "%".
 * Static. */
NQ_API nq_wchar *nq_Env_expandStr(const nq_wchar *text);
/* A new string list of the parts between semicolons, each trimmed; runs of semicolons count as
 * one, but a part of blanks stays as an empty part. Null when there is no part. */
NQ_API StrList *nq_Env_split(const nq_wchar *text);

/* Aliases. */

/* Sets the alias; a null value removes it. The field list's result (1, or -4 without memory);
 * a removal gives 1 if the alias existed, else 0. */
NQ_API int nq_Alias_put(const nq_wchar *name, const nq_wchar *value);
NQ_API int nq_Alias_del(const nq_wchar *name);
/* The alias's value, at most limit characters, in output (emptied first): the field list's
 * answer, 1 if found, -2 if not. */
NQ_API int nq_Alias_get(nq_wchar *output, const nq_wchar *name, int limit);
/* Puts every field of the list as an alias (its value as text, limit 512). 1; 0 for null. */
NQ_API int nq_Alias_putFromFldList(FldList *list);
/* Copies text to output with each %name% that is an alias replaced by its value (at most 256
 * characters, not scanned again); any other %name% stays as it is, and a "%" without a closing
 * sign ends the text there. Output needs room for the result. Yields 0. */
NQ_API int nq_Alias_expandStr(nq_wchar *output, const nq_wchar *text);

NQ_EXTERN_C_END

#endif
