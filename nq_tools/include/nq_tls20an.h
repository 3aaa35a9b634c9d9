/* nq_tls20an: the whole exported interface. */
#ifndef NQ_TLS20AN_H
#define NQ_TLS20AN_H

#include "nq_types.h"
#include "nq_platform.h"
#include "nq_memory.h"
#include "nq_diag.h"
#include "nq_array.h"
#include "nq_lnklist.h"
#include "nq_strlist.h"
#include "nq_str.h"
#include "nq_fname.h"
#include "nq_file.h"
#include "nq_vector.h"
#include "nq_point.h"
#include "nq_matrix.h"
#include "nq_rotmatrix.h"
#include "nq_fldlist.h"
#include "nq_dbfldlist.h"
#include "nq_ini.h"
#include "nq_env.h"
#include "nq_sys.h"
#include "nq_db.h"
#include "nq_cb.h"
#include "nq_msg.h"
#include "nq_translator.h"

#endif
