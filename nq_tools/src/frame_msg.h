// The words of the frame's own texts (memory failures, diagnostics notices). One function,
// so that the message system can translate them without the frame knowing it.
#pragma once

#include "nq_types.h"

namespace nq {

// The English text, decorated by the message format code (2 "%s ", 3 "\n%s", 4 "\n%s ",
// 5 "%s\n", 6 "%s \n", 7 "\n%s\n", 8 "\n%s \n", others as it is). The result lives in a
// static buffer of 512 characters until the next call.
const nq_wchar *frame_msg(const char *text, const char *group, int format);

}  // namespace nq
