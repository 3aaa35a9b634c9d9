// File names as the engine builds them: the backslash and the drive colon separate, and the
// results are upper case. Every result is cut to the size given (size counts the NUL).
#include <cstring>

#include "date4.h"

namespace {

bool is_separator(char c) { return c == '\\' || c == ':'; }

// Start of the last path component.
size_t component_start(const char *name, size_t length) {
    size_t start = 0;
    for (size_t i = 0; i < length; ++i) {
        if (is_separator(name[i])) start = i + 1;
    }
    return start;
}

// The place of the last point of the last component, or length when there is none.
size_t extension_point(const char *name, size_t length) {
    const size_t start = component_start(name, length);
    for (size_t i = length; i > start; --i) {
        if (name[i - 1] == '.') return i - 1;
    }
    return length;
}

int copy_cut(char *out, int size, const char *from, size_t count) {
    if (size < 1) return 0;
    size_t n = count < static_cast<size_t>(size - 1) ? count : static_cast<size_t>(size - 1);
    std::memmove(out, from, n);
    out[n] = '\0';
    return static_cast<int>(n);
}

}  // namespace

int u4name_ext(char *name, int size, const char *extension, int force) {
    if (!name || size < 1) return -1;
    size_t length = strnlen(name, static_cast<size_t>(size));
    if (length == static_cast<size_t>(size)) {
        length = static_cast<size_t>(size) - 1;
        name[length] = '\0';
    }
    while (length > 0 && name[length - 1] == ' ') name[--length] = '\0';
    const size_t point = extension_point(name, length);
    if (point < length && !force) {
        c4upper(name);
        return 0;
    }
    if (!extension) extension = "";
    if (*extension == '.') ++extension;
    const size_t extension_length = std::strlen(extension);
    const size_t needed = point + (extension_length ? 1 + extension_length : 0) + 1;
    if (needed > static_cast<size_t>(size)) {
        c4upper(name);
        return -1;  // would not fit: the name stays as it was
    }
    if (extension_length) {
        name[point] = '.';
        std::memcpy(name + point + 1, extension, extension_length);
    }
    name[needed - 1] = '\0';
    c4upper(name);
    return 0;
}

int u4name_piece(char *out, int size, const char *name, int keep_path, int keep_extension) {
    if (!out || size < 1) return -1;
    if (!name) {
        out[0] = '\0';
        return -1;
    }
    const size_t length = std::strlen(name);
    const size_t start = keep_path ? 0 : component_start(name, length);
    const size_t end = keep_extension ? length : extension_point(name, length);
    copy_cut(out, size, name + start, end - start);
    c4upper(out);
    return 0;
}

int u4name_path(char *out, int size, const char *name) {
    if (!out || size < 1) return -1;
    if (!name) {
        out[0] = '\0';
        return 0;
    }
    const size_t length = std::strlen(name);
    return copy_cut(out, size, name, component_start(name, length));
}

int u4name_ret_ext(char *out, int size, const char *name) {
    if (!out || size < 1) return -1;
    char piece[13];
    u4name_piece(piece, sizeof(piece), name, 0, 1);
    const char *point = std::strrchr(piece, '.');
    const char *extension = point ? point + 1 : piece + std::strlen(piece);
    return copy_cut(out, size, extension, std::strlen(extension));
}

int u4name_make(char *out, int size, const char *drive, const char *path, const char *file) {
    if (!out || size < 1) return -1;
    char *const end = out + size - 1;
    char *at = out;
    auto add = [&](const char *text) {
        for (; text && *text && at < end; ++text) *at++ = *text;
    };
    const bool file_has_drive = file && file[0] && file[1] == ':';
    if (drive && std::strlen(drive) == 2 && !file_has_drive) add(drive);
    if (path && *path) {
        add(path);
        const char last = path[std::strlen(path) - 1];
        if (!is_separator(last)) add("\\");
    }
    add(file);
    *at = '\0';
    return 0;
}
