// The in-process INI cache: files, their groups, the groups' variables.
//
// A file is read once and kept as its lines (the bytes as they lie on disk) together with an
// index: groups by name and, in each group, variables by name, both hashed on the upper case
// of the name. Reads never touch the disk again until the file is reloaded. A change edits or
// inserts only the lines concerned and writes the whole file back, so untouched lines keep
// their bytes, their order and their line ends. When the write fails the file is read again,
// so the cache never holds what the disk does not.
#pragma once

#include <cstdio>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "nq_types.h"

namespace nq {

class IniFile {
public:
    // Lines are read up to this many characters; the rest of a longer line keeps its bytes
    // on disk but means nothing.
    static constexpr std::size_t kLineLimit = 1024;

    struct Line {
        enum class Kind { Blank, Comment, Group, Variable, Other };
        std::string raw;  // without its line end
        Kind kind = Kind::Other;
    };
    using LineList = std::list<Line>;
    using LineIt = LineList::iterator;

    struct Variable {
        std::u16string name;
        std::u16string value;
        LineIt line;
    };

    struct Group {
        std::u16string name;
        std::vector<LineIt> headers;  // one per section of this name, in file order
        std::vector<Variable> variables;
        std::unordered_map<std::u16string, std::size_t> index;  // upper name -> first variable
        const Variable *find(std::u16string_view name) const;
    };

    IniFile(std::string os_path, std::u16string name) : path_(std::move(os_path)), name_(std::move(name)) {}

    // Reads the file; false (and empty) when it cannot be read as a regular file. A file that
    // is there but cannot be read (no permission, a folder) refuses every change, so that a
    // write never replaces content it has not seen.
    bool load();
    const std::u16string &name() const { return name_; }
    const std::vector<std::unique_ptr<Group>> &groups() const { return groups_; }
    const Group *group(std::u16string_view name) const;

    // The changes, each written through. Set: 0 or 1 as nq_Ini_set. Add and remove: true when
    // done and written.
    int set(std::u16string_view group, std::u16string_view variable, const nq_wchar *value);
    bool add_group(std::u16string_view group);
    bool remove_group(std::u16string_view group);
    void view(std::FILE *out) const;

private:
    void parse(std::string_view bytes);
    void index_line(LineIt line);
    Group *find_group(std::u16string_view name);
    Group &new_group(std::u16string_view name, LineIt header);
    LineIt insert_line(LineIt before, Line::Kind kind, std::string raw);
    bool write();
    bool write_or_reload();
    void rebuild_index(Group &group);

    std::string path_;
    std::u16string name_;
    LineList lines_;
    std::vector<std::unique_ptr<Group>> groups_;
    std::unordered_map<std::u16string, Group *> by_name_;
    bool unreadable_ = false;      // the file is there but could not be read: never overwrite it
    bool crlf_ = false;            // lines end in CR LF
    bool final_line_end_ = true;   // the last line has its line end
};

class IniCache {
public:
    // The process-wide cache, made on first use.
    static IniCache &instance();
    // Forgets the cache object; the next use makes a new one.
    static void release();

    // The file's entry: read on first use. Without create a file that cannot be read has no
    // entry (so that it is seen once it exists); with create the entry is made empty.
    IniFile *file(const nq_wchar *name, bool create);
    bool reload(const nq_wchar *name);
    void reset();
    void view(std::FILE *out) const;

private:
    std::unordered_map<std::string, std::unique_ptr<IniFile>> files_;  // by Linux path
    std::vector<IniFile *> order_;
    // Library names seen, looked up without making a string of the name.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view name) const { return std::hash<std::u16string_view>{}(name); }
    };
    std::unordered_map<std::u16string, IniFile *, NameHash, std::equal_to<>> by_name_;
};

// The upper case of a name without blanks at either end, the key of every lookup.
std::u16string ini_key(std::u16string_view name);

}  // namespace nq
