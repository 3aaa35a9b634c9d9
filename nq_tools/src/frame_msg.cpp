#include "frame_msg.h"

#include "nq_msg.h"

namespace nq {

const nq_wchar *frame_msg(const char *text, const char *group, int format) {
    return nq_Msg(text, group, format);
}

}  // namespace nq
