// Seeking a key through a tag: the tag's entries may be older than the records (another
// process may have changed a record since), so an entry is trusted only once the record's own
// key agrees with it.
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

constexpr int kKeyRoom = 256;  // a key is at most 240 bytes

int seek_finish(table4 *table, tag4 *tag, int found, const char *sought, int length) {
    if (found == result4_locked) return found;
    if (found < 0) return found;
    if (tag4_eof(tag)) return table4_go_eof(table);
    int compare_length = tag->key_length;
    if (length < compare_length) compare_length = length;
    if (table->file_locked || exclusive(table)) {
        const int result = table4_go(table, tag4_record(tag));
        return result ? result : found;
    }
    for (bool first = true;; first = false) {
        const int result = table4_go(table, tag4_record(tag));
        if (result) return result;
        const char *key = nullptr;
        if (tag4_key_calc(tag, &key) < 0) return -1;
        const char *entry = tag4_key(tag);
        if (entry && std::memcmp(key, entry, static_cast<size_t>(compare_length)) == 0) {
            if (first) return found;
            const int order = std::memcmp(key, sought, static_cast<size_t>(compare_length));
            if (order == 0) return 0;
            if (order > 0) return result4_after;
        }
        if (tag4_skip(tag, 1) != 1) return table4_go_eof(table);
    }
}

int seek_key(table4 *table, tag4 *tag, const char *key, int length) {
    int result = table4_flush_record(table, 1);
    if (result) return result;
    index4_version_check(tag->index, 0, 1);
    table->engine->usage_flags |= usage4_tag_seek;
    const int found = tag4_seek(tag, key, length);
    return seek_finish(table, tag, found, key, length);
}

}  // namespace

int table4_seek(table4 *table, const char *text) { return table4_seek_n(table, text, 0); }

int table4_seek_n(table4 *table, const char *text, int length) {
    if (in_error(table)) return -1;
    tag4 *tag = table4_tag_default(table);
    if (!tag) return result4_no_tag;
    if (!text || !tag->convert_text) return -1;
    char key[kKeyRoom];
    std::memset(key, 0, sizeof(key));
    int key_length = tag->key_length;
    if (tag->pad_byte == ' ') {
        // Text keys compare over what was given.
        key_length = length < 1 ? static_cast<int>(std::strlen(text)) : length;
    }
    if (key_length > tag->key_length) key_length = tag->key_length;
    if (key_length < 0 || key_length >= kKeyRoom) return -1;
    if (tag->convert_text(tag, key, text, key_length) < 0) return -1;
    return seek_key(table, tag, key, key_length);
}

int table4_seek_double(table4 *table, double value) {
    if (in_error(table)) return -1;
    tag4 *tag = table4_tag_default(table);
    if (!tag) return result4_no_tag;
    if (!tag->convert_double || tag->key_length >= kKeyRoom) return -1;
    char key[kKeyRoom];
    std::memset(key, 0, sizeof(key));
    if (tag->convert_double(tag, key, value) < 0) return -1;
    return seek_key(table, tag, key, tag->key_length);
}
