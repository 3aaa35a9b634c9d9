/* nq_tls20an: file names as text. The backslash separates, the colon marks a drive. */
#ifndef NQ_FNAME_H
#define NQ_FNAME_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Leaves only the last component, in place; yields the name. */
NQ_API nq_wchar *nq_Fname_rmvPath(nq_wchar *name);

NQ_EXTERN_C_END

#endif
