/* nq_tls20an: wide string functions. */
#ifndef NQ_STR_H
#define NQ_STR_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* A copy from nq_Malloc, released with nq_Free; null for null. */
NQ_API nq_wchar *nq_Str_dup(const nq_wchar *string);
NQ_API nq_wchar *nq_Str_dupW(const nq_wchar *string);

NQ_EXTERN_C_END

#endif
