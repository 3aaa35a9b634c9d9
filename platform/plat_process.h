// Child processes the way CreateProcessW, WaitForSingleObject, GetExitCodeProcess, OpenProcess
// and TerminateProcess present them, on Linux.
//
// A command line is one text, split into words by the rules of the Windows C runtime and
// started with posix_spawnp: no shell sees it, so quotes, backslashes, "|", ">" and "$" reach
// the program as its words. The program word is looked up on PATH when it holds no separator;
// with a backslash or a drive mark it is a library name and crosses the path bridge.
//
// The children we start are remembered with their exit codes, so that a code can be asked
// for after the child has ended (Windows keeps it while a handle is open). Every call here
// first collects the children that have ended, so none lingers as a zombie for long.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqplat {

// GetExitCodeProcess of a process that has not ended.
constexpr uint32_t kStillActive = 259;

// CommandLineToArgvW / the C runtime's argument parser:
// - the program word runs to the first blank outside quotes; quotes in it are dropped and
//   backslashes are plain characters;
// - in the other words 2n backslashes before a quote give n backslashes and the quote opens
//   or closes a quoted part, 2n+1 give n backslashes and a literal quote, backslashes before
//   anything else stay as they are, and "" inside a quoted part is one literal quote.
std::vector<std::u16string> split_command_line(std::u16string_view line);

// Starts the command line. working_folder (a library name) may be null for the current one;
// path_value, when not null, is the PATH that the child gets and that the program is looked up
// on (the parent's own PATH is the same again when this returns). Yields 0 and the process id,
// or an errno value (ENOENT for a program that cannot be found, also for an empty line).
int spawn_process(std::u16string_view command_line, const char16_t *working_folder,
                  const std::string *path_value, pid_t *pid);

// WaitForSingleObject(INFINITE) and GetExitCodeProcess for one of our children; false for a
// process that we did not start or have already collected and forgotten.
bool wait_process(pid_t pid, uint32_t *exit_code);

// OpenProcess: true when the process exists and may be signalled by us.
bool open_process(pid_t pid);

// GetExitCodeProcess: kStillActive while the process runs; the exit code of one of our
// children that has ended (a child ended by a signal gives 128 plus its number, one ended by
// terminate_process the code given there). False when there is no such process.
bool process_exit_code(pid_t pid, uint32_t *exit_code);

// TerminateProcess: SIGTERM to the process; for our own children the code is kept as the exit
// code. False when the process cannot be signalled.
bool terminate_process(pid_t pid, uint32_t exit_code);

// Collects our children that have ended, keeping their exit codes.
void reap_children();

// FormatMessageW of a system error: the system's text for an errno value.
std::u16string system_error_text(int error);

// One word quoted so that split_command_line gives it back unchanged (the inverse of the
// argument rules; not for the program word).
std::u16string quote_argument(std::u16string_view word);

// The program a command word names: a library name (with a backslash or a drive mark)
// through the path bridge, anything else as it is, for a PATH search.
std::string program_path(const std::u16string &word);

}  // namespace nqplat
