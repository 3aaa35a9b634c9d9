/* nq_tls20an: the door into the table engine: the record write and number conversions under
 * their exported names, and moving a DbFldNode into a column of an open engine table. */
#ifndef NQ_CB_H
#define NQ_CB_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* An open data file of the table engine; the engine's own header describes it. */
struct table4;

/* Writes the current record to record number; 0, a positive outcome, or a negative error. */
NQ_API int nq_d4write(struct table4 *table, int32_t number);
/* The number in the first length characters of text (number text as the engine reads it). */
NQ_API double nq_c4atod(const char *text, int length);
NQ_API int nq_c4atoi(const char *text, int length);

/* Assigns the node's value to the column of its name in the table's current record:
 * N and F as a double, L as an integer, anything else as text. 0 when assigned; 1 with no
 * such column or a null value. */
NQ_API int nq_Db_updFld(struct table4 *engineTable, const DbFldNode *node);

NQ_EXTERN_C_END

#endif
