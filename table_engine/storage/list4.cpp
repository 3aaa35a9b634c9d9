// The circular lists under every engine record.
#include "engine4.h"

namespace {

l4link_st *link_of(const void *record) {
    return static_cast<l4link_st *>(const_cast<void *>(record));
}

}  // namespace

void l4_add_after(l4list *list, void *anchor, void *record) {
    if (!list || !record) return;
    l4link_st *link = link_of(record);
    if (!list->last) {
        link->next = link;
        link->prev = link;
        list->last = link;
    } else {
        l4link_st *before = anchor ? link_of(anchor) : list->last;
        link->prev = before;
        link->next = before->next;
        before->next->prev = link;
        before->next = link;
        if (before == list->last) list->last = link;
    }
    ++list->count;
}

void l4_add(l4list *list, void *record) {
    if (!list) return;
    l4_add_after(list, list->last, record);
}

void l4_add_before(l4list *list, void *anchor, void *record) {
    if (!list || !record) return;
    if (!list->last) {
        l4_add_after(list, nullptr, record);
        return;
    }
    l4link_st *link = link_of(record);
    l4link_st *after = anchor ? link_of(anchor) : list->last->next;
    link->next = after;
    link->prev = after->prev;
    after->prev->next = link;
    after->prev = link;
    ++list->count;
}

void *l4_first(const l4list *list) {
    if (!list || !list->last) return nullptr;
    return list->last->next;
}

void *l4_last(const l4list *list) { return list ? list->last : nullptr; }

void *l4_next(const l4list *list, const void *record) {
    if (!list || !list->last) return nullptr;
    if (!record) return list->last->next;
    if (record == list->last) return nullptr;
    return link_of(record)->next;
}

void *l4_prev(const l4list *list, const void *record) {
    if (!list || !list->last) return nullptr;
    if (!record) return list->last;
    if (record == list->last->next) return nullptr;
    return link_of(record)->prev;
}

void l4_remove(l4list *list, void *record) {
    if (!list || !record || !list->last) return;
    l4link_st *link = link_of(record);
    const bool alone = link->next == link;
    if (list->selected == record) list->selected = alone ? nullptr : link->prev;
    if (list->last == link) list->last = alone ? nullptr : link->prev;
    link->prev->next = link->next;
    link->next->prev = link->prev;
    link->next = nullptr;
    link->prev = nullptr;
    --list->count;
}

void *l4_pop(l4list *list) {
    if (!list || !list->last) return nullptr;
    l4link_st *last = list->last;
    l4_remove(list, last);
    return last;
}

int l4_contains(const l4list *list, const void *record) {
    if (!list || !record) return 0;
    for (void *walk = l4_next(list, nullptr); walk; walk = l4_next(list, walk)) {
        if (walk == record) return 1;
    }
    return 0;
}
