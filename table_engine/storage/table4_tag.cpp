// The tags of a table: walking them over all its index files, finding one by name, and the
// selection that sets the table's order.
#include <cctype>
#include <cstring>

#include "error4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

tag4 *table4_tag_next(table4 *table, tag4 *tag) {
    if (!table) return nullptr;
    index4 *index = nullptr;
    if (tag) {
        index = tag->index;
        if (tag4 *next = static_cast<tag4 *>(l4_next(&index->tag_list, tag))) return next;
    }
    for (index = static_cast<index4 *>(l4_next(&table->index_list, index)); index;
         index = static_cast<index4 *>(l4_next(&table->index_list, index))) {
        if (tag4 *first = static_cast<tag4 *>(l4_first(&index->tag_list))) return first;
    }
    return nullptr;
}

tag4 *table4_tag(table4 *table, const char *name) {
    if (in_error(table) || !name) return nullptr;
    char wanted[11];
    size_t n = 0;
    for (; n < 10 && name[n]; ++n) {
        wanted[n] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[n])));
    }
    wanted[n] = '\0';
    for (tag4 *tag = table4_tag_next(table, nullptr); tag; tag = table4_tag_next(table, tag)) {
        if (std::strcmp(tag->name, wanted) == 0) return tag;
    }
    if (table->engine->err_tag) err4describe(table->engine, -330, name, nullptr, nullptr);
    return nullptr;
}

tag4 *table4_tag_selected(table4 *table) {
    if (!table) return nullptr;
    index4 *index = static_cast<index4 *>(table->index_list.selected);
    if (!index) return nullptr;
    return static_cast<tag4 *>(index->tag_list.selected);
}

void table4_tag_select(table4 *table, tag4 *tag) {
    if (!table) return;
    if (!tag) {
        table->index_list.selected = nullptr;
        return;
    }
    index4 *index = tag->index;
    if (!index || !l4_contains(&table->index_list, index) || !l4_contains(&index->tag_list, tag)) return;
    index->tag_list.selected = tag;
    table->index_list.selected = index;
}

tag4 *table4_tag_default(table4 *table) {
    if (tag4 *selected = table4_tag_selected(table)) return selected;
    return table4_tag_next(table, nullptr);
}
