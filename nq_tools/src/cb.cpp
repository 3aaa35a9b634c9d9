// The bridge: the one family that reaches into the table engine. Wide text crosses as one
// byte a character (the engine's text is bytes).
#include "nq_cb.h"
#include "nq_dbfldlist.h"
#include "table_engine.h"
#include "text/nq_text.h"

extern "C" {

NQ_API int nq_d4write(table4 *table, int32_t number) { return table4_write(table, number); }

NQ_API double nq_c4atod(const char *text, int length) { return c4atod(text, length); }

NQ_API int nq_c4atoi(const char *text, int length) { return c4atoi(text, length); }

NQ_API int nq_Db_updFld(table4 *engineTable, const DbFldNode *node) {
    if (!engineTable || !node || !node->value) return 1;
    column4 *column = table4_column(engineTable, nqt::to_bytes(node->name).c_str());
    if (!column) return 1;
    const std::string value = nqt::to_bytes(node->value);
    const int length = static_cast<int>(value.size());
    switch (node->type) {
        case u'N':
        case u'F': column4_assign_double(column, nq_c4atod(value.c_str(), length)); break;
        case u'L': column4_assign_long(column, nq_c4atoi(value.c_str(), length)); break;
        default: column4_assign(column, value.c_str()); break;
    }
    return 0;
}

}  // extern "C"
