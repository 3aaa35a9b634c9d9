// Index files as an engine without its index code sees them. This build cannot read or write
// compound index files: opening or making one is refused with -1010, so a table's index list
// stays empty and no tag exists. The data file's walks over index files and tags are
// complete; these bodies answer for an engine that has no index file open. The index code
// takes their place.
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

constexpr int kNoIndexCode = -1010;

index4 *refuse_index(table4 *table, const char *name, int force) {
    char index_name[kNameBuffer];
    const char *given = name ? name : table->file.name;
    if (!given || std::strlen(given) >= sizeof(index_name)) {
        err4report(table->engine, kNoIndexCode, nullptr);
        return nullptr;
    }
    std::strcpy(index_name, given);
    u4name_ext(index_name, sizeof(index_name), "CDX", force);
    err4describe(table->engine, kNoIndexCode, "File Name:", index_name, nullptr);
    return nullptr;
}

}  // namespace

index4 *i4open(table4 *table, const char *name) {
    if (in_error(table)) return nullptr;
    return refuse_index(table, name, name ? 0 : 1);
}

index4 *index4_create(table4 *table, const char *name, const tag_info *tags) {
    if (in_error(table) || !tags) return nullptr;
    return refuse_index(table, name, name ? 0 : 1);
}

int index4_close(index4 *index) {
    if (!index) return 0;
    engine4 *engine = index->engine;
    if (index->table && l4_contains(&index->table->index_list, index)) {
        l4_remove(&index->table->index_list, index);
    }
    if (index->file.handle >= 0) file4_close(&index->file);
    if (engine) pool4_give_back(engine->index_pool, index);
    return (engine && engine->error_code < 0) ? -1 : 0;
}

int index4_lock(index4 *index) {
    if (!index || !index->engine || index->engine->error_code < 0) return -1;
    if (index->file.is_exclusive || index->is_locked) return 0;
    const int result = file4_lock(&index->file, lock4_append_offset, 1);
    if (result) return result;
    file4_refresh(&index->file);
    index->is_locked = 1;
    return 0;
}

int index4_unlock(index4 *index) {
    if (!index) return -1;
    if (!index->is_locked) return 0;
    index4_update(index);
    flush_delayed(&index->file);
    index->is_locked = 0;
    return file4_unlock(&index->file, lock4_append_offset, 1);
}

// Nothing of an index is held in memory here, so there is nothing to write.
int index4_update(index4 *index) { return index ? 0 : -1; }

int index4_flush(index4 *index) {
    if (!index) return -1;
    const int result = index4_update(index);
    if (result) return result;
    return file4_flush_keep_error(&index->file);
}

int index4_version_check(index4 *index, int, int) { return index ? 0 : -1; }

int index4_reindex(index4 *index) {
    if (!index || !index->engine || index->engine->error_code < 0) return -1;
    return err4report(index->engine, kNoIndexCode, nullptr);
}

int table4_reindex(table4 *table) {
    if (in_error(table)) return -1;
    int result = 0;
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        const int rebuilt = index4_reindex(static_cast<index4 *>(walk));
        if (rebuilt) result = rebuilt;
    }
    return result;
}

// No tag exists, so none of these can be given one; each answers as for a failure.
int tag4_top(tag4 *) { return -1; }
int tag4_bottom(tag4 *) { return -1; }
int32_t tag4_skip(tag4 *, int32_t) { return 0; }
int tag4_seek(tag4 *, const void *, int) { return -1; }
int tag4_go(tag4 *, const void *, int32_t) { return -1; }
int tag4_eof(tag4 *) { return 1; }
int32_t tag4_record(tag4 *) { return -1; }
const char *tag4_key(tag4 *) { return nullptr; }
int tag4_key_calc(tag4 *, const char **key) {
    if (key) *key = nullptr;
    return -1;
}
int tag4_filter_true(tag4 *) { return -1; }
int tag4_add(tag4 *, const void *, int32_t) { return -1; }
int tag4_remove(tag4 *, const void *, int32_t) { return -1; }
int tag4_add_calc(tag4 *, int32_t) { return -1; }
