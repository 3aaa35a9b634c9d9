#include "ini_cache.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>

#include "config_internal.h"
#include "nq_ini.h"
#include "plat_path.h"
#include "plat_utf.h"
#include "text/nq_text.h"

namespace nq {

namespace {

// The characters a reader sees of a line: decoded, up to a NUL or the 16-bit end-of-file
// mark, at most the line limit.
std::u16string visible_text(std::string_view raw) {
    std::u16string text = nqplat::utf8_to_utf16(raw);
    const std::size_t stop = text.find_first_of(std::u16string_view(u"\0\uFFFF", 2));
    if (stop != std::u16string::npos) text.resize(stop);
    if (text.size() > IniFile::kLineLimit) text.resize(IniFile::kLineLimit);
    return text;
}

std::u16string trimmed(std::u16string_view s) {
    std::size_t begin = 0, end = s.size();
    while (begin < end && nqt::isspace(s[begin])) ++begin;
    while (end > begin && nqt::isspace(s[end - 1])) --end;
    return std::u16string(s.substr(begin, end - begin));
}

struct Meaning {
    IniFile::Line::Kind kind = IniFile::Line::Kind::Other;
    std::u16string name;
    std::u16string value;
};

// What a line means, by the same parse the direct route uses.
Meaning classify(std::string_view raw) {
    Meaning m;
    std::u16string text = visible_text(raw);
    std::size_t first = 0;
    while (first < text.size() && nqt::isspace(text[first])) ++first;
    if (first == text.size()) {
        m.kind = IniFile::Line::Kind::Blank;
        return m;
    }
    std::u16string name(text.size() + 1, u'\0');
    if (text[first] == u'[') {
        nq_Ini_getGroupName(text.c_str(), name.data());
        name.resize(nqt::len(name.c_str()));
        m.kind = IniFile::Line::Kind::Group;
        m.name = std::move(name);
        return m;
    }
    if (text[first] == u';') {
        m.kind = IniFile::Line::Kind::Comment;
        return m;
    }
    std::u16string value(text.size() + 1, u'\0');
    nq_Ini_parse(text.c_str(), name.data(), value.data());
    name.resize(nqt::len(name.c_str()));
    value.resize(nqt::len(value.c_str()));
    if (name.empty()) return m;  // "=x" names nothing
    m.kind = IniFile::Line::Kind::Variable;
    m.name = std::move(name);
    m.value = std::move(value);
    return m;
}

bool has_line_break(std::u16string_view s) { return s.find_first_of(u"\r\n") != std::u16string_view::npos; }

std::string utf8(std::u16string_view s) { return nqplat::utf16_to_utf8(s.data(), s.size()); }

// The Linux path that identifies a file in the cache: the real path when the file exists.
std::string identity(const nq_wchar *name) {
    std::string path = nqplat::os_path(name);
    char real[PATH_MAX];
    if (::realpath(path.c_str(), real)) path = real;
    return path;
}

IniCache *g_cache = nullptr;

}  // namespace

std::u16string ini_key(std::u16string_view name) {
    while (!name.empty() && nqt::isspace(name.front())) name.remove_prefix(1);
    while (!name.empty() && nqt::isspace(name.back())) name.remove_suffix(1);
    std::u16string key(name);
    for (char16_t &c : key) c = nqt::toupper(c);
    return key;
}

// ---- IniFile ----

const IniFile::Variable *IniFile::Group::find(std::u16string_view name) const {
    const auto it = index.find(ini_key(name));
    return it == index.end() ? nullptr : &variables[it->second];
}

bool IniFile::load() {
    lines_.clear();
    groups_.clear();
    by_name_.clear();
    crlf_ = false;
    final_line_end_ = true;
    unreadable_ = false;
    const int fd = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        unreadable_ = errno != ENOENT;
        return false;
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        unreadable_ = true;
        return false;
    }
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(st.st_size));
    char buffer[16384];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            ::close(fd);
            unreadable_ = true;
            return false;
        }
        if (got == 0) break;
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    parse(bytes);
    return true;
}

void IniFile::parse(std::string_view bytes) {
    const std::size_t first_end = bytes.find('\n');
    crlf_ = first_end != std::string_view::npos && first_end > 0 && bytes[first_end - 1] == '\r';
    final_line_end_ = bytes.empty() || bytes.back() == '\n';
    Group *current = nullptr;
    while (!bytes.empty()) {
        const std::size_t eol = bytes.find('\n');
        std::string_view raw = bytes.substr(0, eol);
        bytes.remove_prefix(eol == std::string_view::npos ? bytes.size() : eol + 1);
        if (eol != std::string_view::npos && !raw.empty() && raw.back() == '\r') raw.remove_suffix(1);

        Meaning m = classify(raw);
        const LineIt line = lines_.insert(lines_.end(), Line{std::string(raw), m.kind});
        if (m.kind == Line::Kind::Group) {
            current = find_group(m.name);
            if (current) {
                current->headers.push_back(line);  // a second section of the same group
            } else {
                current = &new_group(m.name, line);
            }
        } else if (m.kind == Line::Kind::Variable) {
            if (!current) {
                line->kind = Line::Kind::Other;  // a variable outside every group
                continue;
            }
            const std::u16string key = ini_key(m.name);
            current->index.try_emplace(key, current->variables.size());
            current->variables.push_back(Variable{std::move(m.name), std::move(m.value), line});
        }
    }
}

const IniFile::Group *IniFile::group(std::u16string_view name) const {
    const auto it = by_name_.find(ini_key(name));
    return it == by_name_.end() ? nullptr : it->second;
}

IniFile::Group *IniFile::find_group(std::u16string_view name) {
    const auto it = by_name_.find(ini_key(name));
    return it == by_name_.end() ? nullptr : it->second;
}

IniFile::Group &IniFile::new_group(std::u16string_view name, LineIt header) {
    auto group = std::make_unique<Group>();
    group->name = std::u16string(name);
    group->headers.push_back(header);
    Group &ref = *group;
    by_name_[ini_key(name)] = group.get();
    groups_.push_back(std::move(group));
    return ref;
}

IniFile::LineIt IniFile::insert_line(LineIt before, Line::Kind kind, std::string raw) {
    return lines_.insert(before, Line{std::move(raw), kind});
}

void IniFile::rebuild_index(Group &group) {
    group.index.clear();
    for (std::size_t i = 0; i < group.variables.size(); ++i) {
        group.index.try_emplace(ini_key(group.variables[i].name), i);
    }
}

int IniFile::set(std::u16string_view group_name, std::u16string_view variable_name, const nq_wchar *value) {
    const std::u16string gname = trimmed(group_name), vname = trimmed(variable_name);
    if (gname.empty() || vname.empty() || has_line_break(gname) || has_line_break(vname)) return 1;
    if (gname.size() >= kLineLimit || vname.size() >= kLineLimit) return 1;  // could not be read back
    if (gname.find(u']') != std::u16string::npos) return 1;
    if (vname.find(u'=') != std::u16string::npos || vname[0] == u'[' || vname[0] == u';') return 1;
    if (value && has_line_break(value)) return 1;

    Group *group = find_group(gname);
    if (!value) {  // removal
        if (!group) return 0;
        const auto at = group->index.find(ini_key(vname));
        if (at == group->index.end()) return 0;
        const std::size_t position = at->second;
        lines_.erase(group->variables[position].line);
        group->variables.erase(group->variables.begin() + static_cast<std::ptrdiff_t>(position));
        rebuild_index(*group);
        return write_or_reload() ? 0 : 1;
    }

    const std::u16string written_name = [&] {
        if (!group) return vname;
        const Variable *v = group->find(vname);
        return v ? v->name : vname;  // an existing line keeps its spelling of the name
    }();
    std::string raw = utf8(written_name) + "=" + utf8(value);
    // The cache holds what a reader of the line will see.
    Meaning m = classify(raw);

    if (!group) {
        final_line_end_ = true;
        const LineIt header = insert_line(lines_.end(), Line::Kind::Group, "[" + utf8(gname) + "]");
        group = &new_group(gname, header);
        const LineIt line = insert_line(lines_.end(), Line::Kind::Variable, std::move(raw));
        group->index.try_emplace(ini_key(m.name), 0);
        group->variables.push_back(Variable{std::move(m.name), std::move(m.value), line});
        insert_line(lines_.end(), Line::Kind::Blank, "");
        return write_or_reload() ? 0 : 1;
    }

    const auto at = group->index.find(ini_key(vname));
    if (at != group->index.end()) {
        Variable &v = group->variables[at->second];
        if (v.line->raw == raw) return 0;
        v.line->raw = std::move(raw);
        v.value = std::move(m.value);
        return write_or_reload() ? 0 : 1;
    }
    const LineIt after = group->variables.empty() ? group->headers.front() : group->variables.back().line;
    const LineIt line = insert_line(std::next(after), Line::Kind::Variable, std::move(raw));
    group->index.try_emplace(ini_key(m.name), group->variables.size());
    group->variables.push_back(Variable{std::move(m.name), std::move(m.value), line});
    return write_or_reload() ? 0 : 1;
}

bool IniFile::add_group(std::u16string_view group_name) {
    const std::u16string gname = trimmed(group_name);
    if (gname.empty() || gname.size() >= kLineLimit || has_line_break(gname) ||
        gname.find(u']') != std::u16string::npos) {
        return false;
    }
    if (find_group(gname)) return false;
    final_line_end_ = true;
    const LineIt header = insert_line(lines_.end(), Line::Kind::Group, "[" + utf8(gname) + "]");
    insert_line(lines_.end(), Line::Kind::Blank, "");
    new_group(gname, header);
    return write_or_reload();
}

bool IniFile::remove_group(std::u16string_view group_name) {
    Group *group = find_group(trimmed(group_name));
    if (!group) return false;
    for (LineIt header : group->headers) {
        LineIt end = std::next(header);
        while (end != lines_.end() && end->kind != Line::Kind::Group) ++end;
        lines_.erase(header, end);
    }
    by_name_.erase(ini_key(group->name));
    groups_.erase(std::find_if(groups_.begin(), groups_.end(),
                               [group](const std::unique_ptr<Group> &g) { return g.get() == group; }));
    return write_or_reload();
}

bool IniFile::write() {
    if (unreadable_) return false;
    std::string bytes;
    const char *eol = crlf_ ? "\r\n" : "\n";
    for (auto it = lines_.begin(); it != lines_.end(); ++it) {
        bytes += it->raw;
        if (std::next(it) != lines_.end() || final_line_end_) bytes += eol;
    }
    const int fd = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) {
            ::close(fd);
            return false;
        }
        done += static_cast<std::size_t>(put);
    }
    return ::close(fd) == 0;
}

bool IniFile::write_or_reload() {
    if (write()) return true;
    load();  // what the disk holds, which is not what we failed to write
    return false;
}

void IniFile::view(std::FILE *out) const {
    nqt::fprint(out, u"File %s\n", name_.c_str());
    for (const auto &group : groups_) {
        nqt::fprint(out, u"[%s]\n", group->name.c_str());
        for (const Variable &v : group->variables) {
            nqt::fprint(out, u"%s=%s\n", v.name.c_str(), v.value.c_str());
        }
    }
    nqt::fprint(out, u"\n");
}

// ---- IniCache ----

IniCache &IniCache::instance() {
    if (!g_cache) g_cache = new IniCache();
    return *g_cache;
}

void IniCache::release() {
    delete g_cache;
    g_cache = nullptr;
}

IniFile *IniCache::file(const nq_wchar *name, bool create) {
    if (!name || !name[0]) return nullptr;
    const std::u16string_view library_name(name);
    if (const auto known = by_name_.find(library_name); known != by_name_.end()) return known->second;

    const std::string path = identity(name);
    if (path.empty()) return nullptr;
    IniFile *file = nullptr;
    if (const auto it = files_.find(path); it != files_.end()) {
        file = it->second.get();
    } else {
        auto fresh = std::make_unique<IniFile>(path, std::u16string(library_name));
        if (!fresh->load() && !create) return nullptr;
        file = fresh.get();
        files_.emplace(path, std::move(fresh));
        order_.push_back(file);
    }
    // A relative name may mean another file after a change of folder, so only absolute
    // names are remembered.
    const bool absolute = library_name[0] == u'\\' || library_name[0] == u'/' ||
                          (library_name.size() > 2 && library_name[1] == u':' && library_name[2] == u'\\');
    if (absolute) by_name_.emplace(library_name, file);
    return file;
}

bool IniCache::reload(const nq_wchar *name) {
    if (!name || !name[0]) return false;
    const std::string path = identity(name);
    if (const auto it = files_.find(path); it != files_.end()) {
        IniFile *old = it->second.get();
        std::erase_if(by_name_, [old](const auto &entry) { return entry.second == old; });
        std::erase(order_, old);
        files_.erase(it);
    }
    if (const auto known = by_name_.find(std::u16string_view(name)); known != by_name_.end()) by_name_.erase(known);
    return file(name, false) != nullptr;
}

void IniCache::reset() {
    by_name_.clear();
    order_.clear();
    files_.clear();
}

void IniCache::view(std::FILE *out) const {
    nqt::fprint(out, u"INI cache: %d file(s)\n", static_cast<int>(order_.size()));
    for (const IniFile *file : order_) file->view(out);
}

void ini_cache_release() { IniCache::release(); }

}  // namespace nq
