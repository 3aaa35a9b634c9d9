/* nq_tls20an: file names as text. The backslash separates, the colon marks a drive; the
 * forward slash means nothing here. Names live in the caller's buffers; only
 * nq_Fname_fullPath looks at the system (for the current folder). Nothing traces. */
#ifndef NQ_FNAME_H
#define NQ_FNAME_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Leaves only the last component, in place; yields the name. */
NQ_API nq_wchar *nq_Fname_rmvPath(nq_wchar *name);

/* The name fitted into maximum characters, keeping the start and the end of the path and
 * standing "..." for the middle; static. Empty for null or a maximum of 513 or more. */
NQ_API nq_wchar *nq_Fname_abbreviate(const nq_wchar *name, int maximum);
/* Replaces the extension, or adds one; the extension is given without its dot. Yields 0. */
NQ_API int nq_Fname_addExt(nq_wchar *name, const nq_wchar *extension);
/* As nq_Fname_addExt, but an existing extension stays unless replace is non-zero, and a null
 * or empty extension removes it. 1, or 0 for a null name. */
NQ_API int nq_Fname_modExt(nq_wchar *name, const nq_wchar *extension, int replace);
/* Cuts the name at the dot of its extension; ".profile" becomes empty. Yields the name. */
NQ_API nq_wchar *nq_Fname_rmvExt(nq_wchar *name);
/* The extension without its dot, or empty; its length. */
NQ_API int nq_Fname_extractExt(const nq_wchar *name, nq_wchar *output);
/* The folder part through the last backslash or colon, or empty; its length. */
NQ_API int nq_Fname_extractPath(const nq_wchar *name, nq_wchar *output);
/* Gives a non-empty folder name a trailing backslash; yields it. */
NQ_API nq_wchar *nq_Fname_fixDir(nq_wchar *folder);
/* The absolute name, "C:\..." on this system; static, at most 511 characters. */
NQ_API nq_wchar *nq_Fname_fullPath(const nq_wchar *name);
/* drive ":" folder "\" name "." extension, each part skipped when null or empty. The colon is
 * always added, so pass the bare drive letter. Yields output. */
NQ_API nq_wchar *nq_Fname_build(nq_wchar *output, const nq_wchar *drive, const nq_wchar *folder,
                                const nq_wchar *name, const nq_wchar *extension);
/* "nq_" and five digits from a pseudo-random series seeded once by the time; static. No file
 * is looked at, and a name can repeat. */
NQ_API nq_wchar *nq_Fname_createTemp(void);

NQ_EXTERN_C_END

#endif
