// Diagnostics: one level, one family mask, one output target and one message buffer, all
// process-wide and exported as data.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame_msg.h"
#include "nq_diag.h"
#include "nq_fname.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "plat_path.h"
#include "text/nq_text.h"

extern "C" {
NQ_API int16_t NQ_DiagCurrentLevel = 0;
NQ_API uint32_t NQ_DiagCurrentCondition = 0;
NQ_API int16_t NQ_DiagCurrentOutput = NQ_DIAG_OUTPUT_CONSOLE;
NQ_API nq_wchar *NQ_DiagCurrentFileName = nullptr;
NQ_API FILE *NQ_DiagOutputStream = nullptr;
NQ_API nq_wchar NQ_DiagMsgBuf[NQ_DIAG_MSGBUF_SIZE] = {0};
}

namespace {

constexpr size_t kMsgBufSize = NQ_DIAG_MSGBUF_SIZE;

std::FILE *open_log(const nq_wchar *name, const char *mode) {
    if (!name || !*name) return nullptr;
    const std::string path = nqplat::os_path(name);
    return std::fopen(path.c_str(), mode);
}

// The runtime's _wperror: the text, a colon, and the system's words for errno.
void report_open_failure() {
    const int error = errno;
    std::fprintf(stderr, "%s: %s\n", "Failed to open the diagnostics output file\n", std::strerror(error));
    std::fflush(stderr);
}

}  // namespace

extern "C" {

NQ_API int16_t nq_Diag_getLevel(void) { return NQ_DiagCurrentLevel; }

NQ_API int16_t nq_Diag_setLevel(int16_t level) {
    if (level < 0 || level > 3) return NQ_DiagCurrentLevel;
    const int16_t previous = NQ_DiagCurrentLevel;
    NQ_DiagCurrentLevel = level;
    return previous;
}

NQ_API uint32_t nq_Diag_getCondition(void) { return NQ_DiagCurrentCondition; }

NQ_API uint32_t nq_Diag_setCondition(uint32_t mask) {
    const uint32_t previous = NQ_DiagCurrentCondition;
    NQ_DiagCurrentCondition = mask;
    return previous;
}

NQ_API void nq_Diag_disable(void) {
    NQ_DiagCurrentLevel = 0;
    NQ_DiagCurrentCondition = 0;
}

NQ_API int16_t nq_Diag_getDiagOutput(void) { return NQ_DiagCurrentOutput; }

NQ_API int16_t nq_Diag_setDiagOutput(int16_t target) {
    NQ_DiagCurrentOutput = target;
    return target;
}

NQ_API int16_t nq_Diag_getOutput(nq_wchar *fileNameBuffer) {
    if (fileNameBuffer) {
        fileNameBuffer[0] = 0;
        if ((NQ_DiagCurrentOutput == NQ_DIAG_OUTPUT_FILE || NQ_DiagCurrentOutput == NQ_DIAG_OUTPUT_BOTH) &&
            NQ_DiagCurrentFileName) {
            nqt::copy(fileNameBuffer, NQ_DiagCurrentFileName);
        }
    }
    return NQ_DiagCurrentOutput;
}

NQ_API int nq_Diag_setOutput(int16_t target, const nq_wchar *fileName) {
    if (target == NQ_DIAG_OUTPUT_NONE || target == NQ_DIAG_OUTPUT_CONSOLE) {
        NQ_DiagCurrentOutput = target;
        return 1;
    }
    if (target != NQ_DIAG_OUTPUT_FILE && target != NQ_DIAG_OUTPUT_BOTH) {
        NQ_DiagCurrentOutput = NQ_DIAG_OUTPUT_CONSOLE;
        return 0;
    }
    nq_Free(NQ_DiagCurrentFileName);
    NQ_DiagCurrentFileName = nullptr;
    if (fileName && *fileName) {
        NQ_DiagCurrentFileName = nq_Str_dup(fileName);
    } else {
        NQ_DiagCurrentFileName = nq_Str_dup(u"NQ_DIAG.LOG");
        nqt::print(u"%s", nq::frame_msg("nq_Diag_setOutput: Diagnostics log file name specified is invalid.", "TOOL", 3));
        nq_wchar notice[260];
        nqt::format(notice, 260, u"\n%s %s\n", nq::frame_msg("Defaulting to log file:", "TOOL", 1),
                    NQ_DiagCurrentFileName);
        nqt::print(u"%s", notice);
    }
    // Mode "w": the one place where the log is emptied.
    std::FILE *file = open_log(NQ_DiagCurrentFileName, "w");
    if (!file) {
        report_open_failure();
        NQ_DiagCurrentOutput = NQ_DIAG_OUTPUT_CONSOLE;
        return 0;
    }
    std::fclose(file);
    NQ_DiagCurrentOutput = target;
    return 1;
}

NQ_API nq_wchar *nq_Diag_getFileName(void) { return NQ_DiagCurrentFileName; }

// This setter allocates and releases with the C runtime itself, unlike nq_Diag_setOutput,
// which goes through the memory manager; with the default manager the two are one heap.
NQ_API void nq_Diag_setFileName(const nq_wchar *fileName) {
    std::free(NQ_DiagCurrentFileName);
    NQ_DiagCurrentFileName = nullptr;
    if (fileName && *fileName) {
        const size_t bytes = (nqt::len(fileName) + 1) * sizeof(nq_wchar);
        auto *copy = static_cast<nq_wchar *>(std::malloc(bytes));
        if (copy) std::memcpy(copy, fileName, bytes);
        NQ_DiagCurrentFileName = copy;
    }
}

NQ_API FILE *nq_Diag_getOutputStream(void) { return NQ_DiagOutputStream; }

NQ_API FILE *nq_Diag_setOutputStream(FILE *stream) {
    NQ_DiagOutputStream = stream;
    return stream;
}

NQ_API nq_wchar *nq_Diag_getDiagMsgBuf(void) { return NQ_DiagMsgBuf; }

// Writes what stands in the message buffer; the message argument only gives the length.
NQ_API void nq_Diag_putOutput(int length, const nq_wchar *message, const nq_wchar *sourcePath, int line) {
    (void)message;
    nq_wchar *name = nq_Str_dup(sourcePath ? sourcePath : u"");
    const nq_wchar *shown = u"";
    if (name) {
        nq_Fname_rmvPath(name);
        nqt::lwr(name);
        shown = name;
    }

    // Reports an overlong text after the fact; the report replaces the buffer's content.
    if (length > static_cast<int>(kMsgBufSize) && NQ_DiagCurrentLevel >= 3 && NQ_DiagCurrentCondition != 0) {
        const int count = nqt::format(NQ_DiagMsgBuf, kMsgBufSize,
                                      u"Buffer size %d too big for diagnostics in %s at %d\n", length, shown, line);
        // The report itself always fits, so it cannot report itself again.
        const int written = count < static_cast<int>(kMsgBufSize) ? count : static_cast<int>(kMsgBufSize) - 1;
        nq_Diag_putOutput(written, NQ_DiagMsgBuf, u"" __FILE_NAME__, __LINE__);
    }

    const int16_t target = NQ_DiagCurrentOutput;
    if (target == NQ_DIAG_OUTPUT_CONSOLE || target == NQ_DIAG_OUTPUT_BOTH) {
        nqt::print(u"%s (%d) %s\n", shown, line, NQ_DiagMsgBuf);
    }
    if (target == NQ_DIAG_OUTPUT_FILE || target == NQ_DIAG_OUTPUT_BOTH) {
        // One open, append and close a message, so the log survives a crash of the host.
        NQ_DiagOutputStream = open_log(NQ_DiagCurrentFileName, "a");
        if (!NQ_DiagOutputStream) {
            report_open_failure();
            NQ_DiagCurrentOutput = NQ_DIAG_OUTPUT_CONSOLE;
        } else {
            nqt::fprint(NQ_DiagOutputStream, u"%s (%d) %s\n", shown, line, NQ_DiagMsgBuf);
            std::fclose(NQ_DiagOutputStream);
        }
    }
    nq_Free(name);
}

NQ_API void nq_Diag_putOutputMsg(const nq_wchar *message, const nq_wchar *sourcePath, int line) {
    if (!message || !*message) return;
    const size_t length = nqt::len(message);
    // Cut to the buffer; the full length still reaches the overlong-text report.
    nqt::copy_bounded(NQ_DiagMsgBuf, kMsgBufSize, message);
    nq_Diag_putOutput(static_cast<int>(length), message, sourcePath, line);
}

}  // extern "C"
