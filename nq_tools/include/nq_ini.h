/* nq_tls20an: INI configuration files of the classic group and "name=value" form. */
#ifndef NQ_INI_H
#define NQ_INI_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Splits one line "name = value": leading spaces skipped, the name up to the first "=" and
 * trimmed, then every space and "=" skipped and the rest trimmed as the value. A line with no
 * "=" is a name with an empty value. Each buffer needs room for the line; a null one is not
 * written, a null line empties both. */
NQ_API void nq_Ini_parse(const nq_wchar *line, nq_wchar *name, nq_wchar *value);

NQ_EXTERN_C_END

#endif
