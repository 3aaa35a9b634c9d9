/* nq_tls20an: diagnostics and tracing. */
#ifndef NQ_DIAG_H
#define NQ_DIAG_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

#define NQ_DIAG_MSGBUF_SIZE 4096

/* Output targets. */
#define NQ_DIAG_OUTPUT_NONE    0
#define NQ_DIAG_OUTPUT_CONSOLE 1
#define NQ_DIAG_OUTPUT_FILE    2
#define NQ_DIAG_OUTPUT_BOTH    3

/* Condition bits of the tracing families. */
#define NQ_DIAG_STRLIST   0x00000002u
#define NQ_DIAG_LNKLIST   0x00000004u
#define NQ_DIAG_POINT     0x00000008u
#define NQ_DIAG_MATRIX    0x00000010u
#define NQ_DIAG_VECTOR    0x00000020u
#define NQ_DIAG_ARRAY     0x00000040u
#define NQ_DIAG_NTUPLE    0x00000080u
#define NQ_DIAG_DBFLD     0x00000200u
#define NQ_DIAG_MSG       0x00000400u
#define NQ_DIAG_TREENODE  0x00200000u

NQ_API extern int16_t NQ_DiagCurrentLevel;
NQ_API extern uint32_t NQ_DiagCurrentCondition;
NQ_API extern int16_t NQ_DiagCurrentOutput;
NQ_API extern nq_wchar *NQ_DiagCurrentFileName;
NQ_API extern FILE *NQ_DiagOutputStream;
NQ_API extern nq_wchar NQ_DiagMsgBuf[NQ_DIAG_MSGBUF_SIZE];

NQ_API int16_t nq_Diag_getLevel(void);
NQ_API int16_t nq_Diag_setLevel(int16_t level);
NQ_API uint32_t nq_Diag_getCondition(void);
NQ_API uint32_t nq_Diag_setCondition(uint32_t mask);
NQ_API void nq_Diag_disable(void);
NQ_API int16_t nq_Diag_getDiagOutput(void);
NQ_API int16_t nq_Diag_setDiagOutput(int16_t target);
NQ_API int16_t nq_Diag_getOutput(nq_wchar *fileNameBuffer);
NQ_API int nq_Diag_setOutput(int16_t target, const nq_wchar *fileName);
NQ_API nq_wchar *nq_Diag_getFileName(void);
NQ_API void nq_Diag_setFileName(const nq_wchar *fileName);
NQ_API FILE *nq_Diag_getOutputStream(void);
NQ_API FILE *nq_Diag_setOutputStream(FILE *stream);
NQ_API nq_wchar *nq_Diag_getDiagMsgBuf(void);
NQ_API void nq_Diag_putOutput(int length, const nq_wchar *message, const nq_wchar *sourcePath, int line);
NQ_API void nq_Diag_putOutputMsg(const nq_wchar *message, const nq_wchar *sourcePath, int line);

NQ_EXTERN_C_END

#endif
