// The one trace frame of the tracing families: "Entering X." at entry and "Exiting X." (or
// "Leaving X.") when the function returns, each written only when the level is 3 or more
// and the family's bit is set in the mask, both tests made afresh. Nothing is composed when
// tracing is off.
#pragma once

#include <cstdint>

#include "nq_diag.h"

namespace nq {

class TraceFrame {
public:
    TraceFrame(uint32_t bit, const nq_wchar *entry, const nq_wchar *exit, const nq_wchar *file,
               int line)
        : bit_(bit), exit_(exit), file_(file), line_(line) {
        if (entry && enabled()) nq_Diag_putOutputMsg(entry, file_, line_);
    }
    ~TraceFrame() {
        if (exit_ && enabled()) nq_Diag_putOutputMsg(exit_, file_, line_);
    }
    TraceFrame(const TraceFrame &) = delete;
    TraceFrame &operator=(const TraceFrame &) = delete;

private:
    bool enabled() const { return nq_Diag_getLevel() >= 3 && (nq_Diag_getCondition() & bit_) != 0; }

    uint32_t bit_;
    const nq_wchar *exit_;
    const nq_wchar *file_;
    int line_;
};

}  // namespace nq

// Only the file's own name reaches the log, so the frame passes just that.
#define NQ_TRACE_FILE u"" __FILE_NAME__
#define NQ_TRACE_FRAME(bit, entry, exit) \
    ::nq::TraceFrame nq_trace_frame_(bit, entry, exit, NQ_TRACE_FILE, __LINE__)
