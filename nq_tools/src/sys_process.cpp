// The Sys family's processes: starting, waiting, asking and ending, the product path for a
// child, the launcher file, and opening a file in the desktop's viewer.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "config_internal.h"
#include "frame_msg.h"
#include "nq_file.h"
#include "nq_sys.h"
#include "plat_fs.h"
#include "plat_path.h"
#include "plat_process.h"
#include "plat_profile.h"
#include "plat_registry.h"
#include "plat_utf.h"
#include "text/nq_text.h"

namespace {

// The longest PATH that GetEnvironmentVariableW would hand over.
constexpr std::size_t kPathLimit = 32767;
// What ShellExecuteW yields: above 32 for success, else an error (2: file not found).
constexpr intptr_t kShellStarted = 33;
constexpr intptr_t kShellNotFound = 2;

// Appends as much of text as fits into a buffer of size characters.
void append_bounded(nq_wchar *buffer, int size, const nq_wchar *text) {
    if (!buffer || size <= 0 || !text) return;
    const std::size_t used = nqt::len(buffer);
    if (used + 1 >= static_cast<std::size_t>(size)) return;
    nqt::copy_bounded(buffer + used, static_cast<std::size_t>(size) - used, text);
}

std::u16string command_line(const nq_wchar *command, const nq_wchar *arguments) {
    if (!arguments) return command ? command : u"";
    return nqt::format_string(u"%s %s", command ? command : u"", arguments);
}

// "Unable to start the new process:", the command line and the system's text, as far as they fit.
void report_failure(nq_wchar *error, int size, const char *group, const std::u16string &line, int code) {
    if (!error || size <= 0) return;
    append_bounded(error, size, nq::frame_msg("Unable to start the new process:", group, 5));
    append_bounded(error, size, line.c_str());
    append_bounded(error, size, u"\n");
    append_bounded(error, size, nqplat::system_error_text(code).c_str());
}

int create_process(const nq_wchar *command, const nq_wchar *folder, const nq_wchar *arguments, int wait,
                   nq_wchar *error, int errorSize, int *processId, const std::string *path_value) {
    if (error && errorSize > 0) error[0] = 0;
    if (processId) *processId = -1;
    const std::u16string line = command_line(command, arguments);
    pid_t pid = -1;
    const int code = nqplat::spawn_process(line, folder, path_value, &pid);
    if (code != 0) {
        report_failure(error, errorSize, "TOOL", line, code);
        return 0;
    }
    if (processId) *processId = static_cast<int>(pid);
    // Without waiting the handle would be closed here; a process id needs no closing, so
    // the message for a failed close has no occasion on this system.
    if (wait) {
        uint32_t exit_code = 0;
        nqplat::wait_process(pid, &exit_code);
    }
    return 1;
}

// The document-management product's folder from the registry file, or empty.
std::u16string product_folder() {
    const nqplat::RegistryKey key =
        nqplat::registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Zelmar\\DocumentManagement");
    std::u16string path;
    if (!key.is_open() || !key.query(u"Path", path)) return {};
    return path;
}

// Starts a detached program with its arguments; true when it started.
bool start_detached(const std::u16string &line) {
    pid_t pid = -1;
    return nqplat::spawn_process(line, nullptr, nullptr, &pid) == 0;
}

}  // namespace

extern "C" {

NQ_API int nq_Sys_createProcess(const nq_wchar *command, const nq_wchar *arguments, int wait, nq_wchar *error,
                                int errorSize) {
    return create_process(command, nullptr, arguments, wait, error, errorSize, nullptr, nullptr);
}

NQ_API int nq_Sys_createProcessWorkingDir(const nq_wchar *command, const nq_wchar *workingFolder,
                                          const nq_wchar *arguments, int wait, nq_wchar *error, int errorSize,
                                          int *processId) {
    return create_process(command, workingFolder, arguments, wait, error, errorSize, processId, nullptr);
}

NQ_API int nq_Sys_createProcess_addLDPath(const nq_wchar *command, const nq_wchar *arguments, int wait,
                                          nq_wchar *error, int errorSize) {
    const char *old_path = std::getenv("PATH");
    const std::u16string product = product_folder();
    if (!old_path || std::string(old_path).size() >= kPathLimit || product.empty()) {
        return create_process(command, nullptr, arguments, wait, error, errorSize, nullptr, nullptr);
    }
    // The folder plus "bin" exactly as the product's path is written (a path without its
    // trailing backslash gives a folder that does not exist), in front of the old value.
    const std::u16string bin = product + u"bin\\";
    std::string folder = nqplat::os_path(bin.c_str());
    if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    const std::string longer = folder + ":" + old_path;
    return create_process(command, nullptr, arguments, wait, error, errorSize, nullptr, &longer);
}

NQ_API int nq_Sys_processRunning(int processId) {
    if (!nqplat::open_process(processId)) return 0;
    uint32_t code = 0;
    return nqplat::process_exit_code(processId, &code) && code == nqplat::kStillActive ? 1 : 0;
}

NQ_API int nq_Sys_terminateProcess(int processId, unsigned int *exitCode) {
    if (!exitCode || !nqplat::open_process(processId)) return 0;
    return nqplat::terminate_process(processId, *exitCode) ? 1 : 0;
}

NQ_API int nq_Sys_launchProcessViaShortcut(const nq_wchar *program, const nq_wchar *arguments) {
    if (!program || !program[0]) return 0;
    // A line break would end the launcher's line early.
    const auto breaks = [](const nq_wchar *s) { return s && nqt::cspn(s, u"\r\n") != nqt::len(s); };
    if (breaks(program) || breaks(arguments)) return 0;
    nq_wchar folder[nq::kSysNameSize];
    nq_Sys_getTempDir(folder, 1);
    const std::u16string launcher = std::u16string(folder) + u"Halvane.lnk";

    std::FILE *out = nqplat::fopen(launcher.c_str(), "w");
    if (!out) return 0;
    nqt::fprint(out, u"[Shortcut]\nDescription=%s\nPath=%s\nArguments=%s\n", u"Orvane Halvane.", program,
                arguments ? arguments : u"");
    const bool written = std::ferror(out) == 0;
    if (std::fclose(out) != 0 || !written) return 0;

    // Opening the launcher starts what it names.
    std::vector<nqplat::ProfileSection> sections;
    if (!nqplat::read_profile(nqplat::os_path(launcher.c_str()), sections)) return 0;
    std::u16string path, args;
    for (const nqplat::ProfileSection &section : sections) {
        if (!nqplat::equal_ignoring_case(section.name, u"Shortcut")) continue;
        for (const nqplat::ProfileEntry &entry : section.entries) {
            if (nqplat::equal_ignoring_case(entry.key, u"Path") && path.empty()) path = entry.value;
            if (nqplat::equal_ignoring_case(entry.key, u"Arguments") && args.empty()) args = entry.value;
        }
        break;
    }
    if (path.empty()) return 0;
    std::u16string line = u"\"" + path + u"\"";
    if (!args.empty()) line += u" " + args;
    return start_detached(line) ? 1 : 0;
}

NQ_API void *nq_Global_openFileinNotepad(const nq_wchar *file) {
    if (!file || !nq_File_exists(file)) return nullptr;
    const std::string target = nqplat::os_path(file);
    const std::u16string line =
        u"xdg-open " + nqplat::quote_argument(nqplat::utf8_to_utf16(target));
    const intptr_t result = start_detached(line) ? kShellStarted : kShellNotFound;
    return reinterpret_cast<void *>(result);
}

}  // extern "C"
