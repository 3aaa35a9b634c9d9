/* nq_tls20an: functions added for Linux, standing in for services of the original platform. */
#ifndef NQ_PLATFORM_H
#define NQ_PLATFORM_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Style bits of a message box, as the engine's reports pass them. */
#define NQ_MB_OK              0x00000000u
#define NQ_MB_ICONHAND        0x00000010u
#define NQ_MB_ICONEXCLAMATION 0x00000030u
#define NQ_MB_TASKMODAL       0x00002000u

/* Texts are UTF-8. A message-box handler returns non-zero when the box was shown and
 * dismissed, 0 when it could not be shown. */
typedef int (*nq_MessageBoxHandler)(const char *title, const char *text, unsigned int style);
/* A fatal-exit handler that returns lets the default end the process. */
typedef void (*nq_FatalExitHandler)(const char *text);

/* Each returns the previous handler; null restores the default. */
NQ_API nq_MessageBoxHandler nq_Platform_setMessageBoxHandler(nq_MessageBoxHandler handler);
NQ_API nq_FatalExitHandler nq_Platform_setFatalExitHandler(nq_FatalExitHandler handler);

NQ_EXTERN_C_END

#endif
