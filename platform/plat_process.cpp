#include "plat_process.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "plat_path.h"
#include "plat_utf.h"

extern char **environ;

namespace nqplat {

namespace {

bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

struct Child {
    pid_t pid = 0;
    bool ended = false;
    bool terminated = false;   // terminate_process was called; its code wins
    uint32_t exit_code = 0;
    uint32_t terminate_code = 0;
};

// Our children, oldest first. Ended ones are kept for their exit codes; the oldest of them
// are forgotten when there are too many.
std::vector<Child> g_children;
constexpr std::size_t kKeptEnded = 256;

Child *find_child(pid_t pid) {
    for (Child &c : g_children) {
        if (c.pid == pid) return &c;
    }
    return nullptr;
}

void record_status(Child &child, int status) {
    child.ended = true;
    if (child.terminated) {
        child.exit_code = child.terminate_code;
    } else if (WIFEXITED(status)) {
        child.exit_code = static_cast<uint32_t>(WEXITSTATUS(status));
    } else if (WIFSIGNALED(status)) {
        child.exit_code = 128u + static_cast<uint32_t>(WTERMSIG(status));
    }
}

void forget_old_children() {
    std::size_t ended = 0;
    for (const Child &c : g_children) ended += c.ended ? 1 : 0;
    for (auto it = g_children.begin(); ended > kKeptEnded && it != g_children.end();) {
        if (it->ended) {
            it = g_children.erase(it);
            --ended;
        } else {
            ++it;
        }
    }
}

// A process that has ended but not been collected by its parent still answers kill(pid, 0).
bool is_zombie(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    if (!in) return false;
    const std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::size_t close = stat.rfind(')');
    return close != std::string::npos && close + 2 < stat.size() && stat[close + 2] == 'Z';
}

// Sets PATH for the time of one spawn and puts the old value back.
class PathOverride {
public:
    explicit PathOverride(const std::string *value) : active_(value != nullptr) {
        if (!active_) return;
        const char *old = std::getenv("PATH");
        had_old_ = old != nullptr;
        if (had_old_) old_ = old;
        ::setenv("PATH", value->c_str(), 1);
    }
    ~PathOverride() {
        if (!active_) return;
        if (had_old_) {
            ::setenv("PATH", old_.c_str(), 1);
        } else {
            ::unsetenv("PATH");
        }
    }
    PathOverride(const PathOverride &) = delete;
    PathOverride &operator=(const PathOverride &) = delete;

private:
    bool active_;
    bool had_old_ = false;
    std::string old_;
};

}  // namespace

std::vector<std::u16string> split_command_line(std::u16string_view line) {
    std::vector<std::u16string> words;
    std::size_t p = 0;
    const std::size_t n = line.size();
    while (p < n && is_blank(line[p])) ++p;
    if (p >= n) return words;

    // The program word: quotes toggle and vanish, backslashes are characters.
    std::u16string program;
    bool quoted = false;
    while (p < n && (quoted || !is_blank(line[p]))) {
        if (line[p] == u'"') {
            quoted = !quoted;
        } else {
            program.push_back(line[p]);
        }
        ++p;
    }
    words.push_back(std::move(program));

    quoted = false;
    for (;;) {
        while (p < n && is_blank(line[p])) ++p;
        if (p >= n) break;
        std::u16string word;
        for (;;) {
            std::size_t slashes = 0;
            while (p < n && line[p] == u'\\') {
                ++p;
                ++slashes;
            }
            bool copy = true;
            if (p < n && line[p] == u'"') {
                if (slashes % 2 == 0) {
                    if (quoted && p + 1 < n && line[p + 1] == u'"') {
                        ++p;  // "" inside quotes: the second one is a literal quote
                    } else {
                        copy = false;
                        quoted = !quoted;
                    }
                }
                slashes /= 2;
            }
            word.append(slashes, u'\\');
            if (p >= n || (!quoted && is_blank(line[p]))) break;
            if (copy) word.push_back(line[p]);
            ++p;
        }
        words.push_back(std::move(word));
    }
    return words;
}

std::u16string quote_argument(std::u16string_view word) {
    if (!word.empty() && word.find_first_of(u" \t\"") == std::u16string_view::npos) return std::u16string(word);
    std::u16string out = u"\"";
    std::size_t slashes = 0;
    for (const char16_t c : word) {
        if (c == u'\\') {
            ++slashes;
            continue;
        }
        // Backslashes before a quote are doubled, and the quote itself escaped.
        out.append(c == u'"' ? 2 * slashes + 1 : slashes, u'\\');
        slashes = 0;
        out.push_back(c);
    }
    out.append(2 * slashes, u'\\');  // before the closing quote
    out.push_back(u'"');
    return out;
}

std::string program_path(const std::u16string &word) {
    const bool drive = word.size() >= 2 && word[1] == u':';
    if (drive || word.find(u'\\') != std::u16string::npos) return os_path(word.c_str());
    return utf16_to_utf8(word.c_str(), word.size());
}

int spawn_process(std::u16string_view command_line, const char16_t *working_folder,
                  const std::string *path_value, pid_t *pid) {
    if (pid) *pid = -1;
    reap_children();
    const std::vector<std::u16string> words = split_command_line(command_line);
    if (words.empty() || words[0].empty()) return ENOENT;

    std::string program = program_path(words[0]);
    const bool has_folder = working_folder && working_folder[0];
    if (has_folder && program.find('/') != std::string::npos && program[0] != '/') {
        // A relative program is found from the parent's folder, not the child's.
        char cwd[4096];
        if (::getcwd(cwd, sizeof cwd)) program = std::string(cwd) + "/" + program;
    }
    std::vector<std::string> args;
    args.reserve(words.size());
    for (const std::u16string &w : words) args.push_back(utf16_to_utf8(w.c_str(), w.size()));
    std::vector<char *> argv;
    for (std::string &a : args) argv.push_back(a.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    std::string folder;
    if (has_folder) {
        folder = os_path(working_folder);
        posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    }
    // No handle is inherited: the child sees standard input, output and error only.
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t mask;
    sigemptyset(&mask);
    posix_spawnattr_setsigmask(&attributes, &mask);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t child = -1;
    int error;
    {
        PathOverride path(path_value);
        error = ::posix_spawnp(&child, program.c_str(), &actions, &attributes, argv.data(), environ);
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return error;

    Child record;
    record.pid = child;
    if (Child *old = find_child(child)) {
        *old = record;  // the number was used by a child long gone
    } else {
        g_children.push_back(record);
    }
    forget_old_children();
    if (pid) *pid = child;
    return 0;
}

void reap_children() {
    for (Child &c : g_children) {
        if (c.ended) continue;
        int status = 0;
        const pid_t got = ::waitpid(c.pid, &status, WNOHANG);
        if (got == c.pid) {
            record_status(c, status);
        } else if (got < 0 && errno == ECHILD) {
            c.ended = true;  // someone else collected it; its code is lost
            if (c.terminated) c.exit_code = c.terminate_code;
        }
    }
}

bool wait_process(pid_t pid, uint32_t *exit_code) {
    if (pid <= 0) return false;
    Child *child = find_child(pid);
    if (!child) return false;
    while (!child->ended) {
        int status = 0;
        const pid_t got = ::waitpid(pid, &status, 0);
        if (got == pid) {
            record_status(*child, status);
        } else if (got < 0 && errno != EINTR) {
            child->ended = true;
            if (child->terminated) child->exit_code = child->terminate_code;
        }
    }
    if (exit_code) *exit_code = child->exit_code;
    return true;
}

bool open_process(pid_t pid) {
    if (pid <= 0) return false;  // 0 and -1 would name groups of processes
    reap_children();
    if (const Child *child = find_child(pid)) return !child->ended;
    return ::kill(pid, 0) == 0 && !is_zombie(pid);
}

bool process_exit_code(pid_t pid, uint32_t *exit_code) {
    if (pid <= 0) return false;
    reap_children();
    if (const Child *child = find_child(pid)) {
        if (exit_code) *exit_code = child->ended ? child->exit_code : kStillActive;
        return true;
    }
    if (!open_process(pid)) return false;
    if (exit_code) *exit_code = kStillActive;
    return true;
}

bool terminate_process(pid_t pid, uint32_t exit_code) {
    if (!open_process(pid)) return false;
    if (::kill(pid, SIGTERM) != 0) return false;
    if (Child *child = find_child(pid)) {
        child->terminated = true;
        child->terminate_code = exit_code;
    }
    return true;
}

std::u16string system_error_text(int error) {
    char buffer[256];
    const char *text = ::strerror_r(error, buffer, sizeof buffer);
    return utf8_to_utf16(text ? text : "");
}

}  // namespace nqplat
