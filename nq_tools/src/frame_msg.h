// The words of the frame's own texts (memory failures, diagnostics notices). One function,
// so that the frame names the message system in one place only.
#pragma once

#include "nq_types.h"

namespace nq {

// nq_Msg: the English text translated in its group, or decorated by the message format code
// (2 "%s ", 3 "\n%s", 4 "\n%s ", 5 "%s\n", 6 "%s \n", 7 "\n%s\n", 8 "\n%s \n", others as it
// is). The result lives in nq_Msg's static buffer of 256 characters until the next message.
const nq_wchar *frame_msg(const char *text, const char *group, int format);

}  // namespace nq
