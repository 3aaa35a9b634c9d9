// The statement texts of the Db family: table text, SELECT, count, INSERT and UPDATE.
//
// Values are pasted in as the caller gave them: only type C goes between quote marks, and a
// quote mark inside a value is neither doubled nor escaped. A text that outgrows its buffer
// is refused whole, never cut, since a cut statement would still run.
#include <string>

#include "db_internal.h"
#include "nq_dbfldlist.h"
#include "nq_str.h"
#include "text/nq_text.h"

namespace nqdb {

namespace {

const nq_wchar *value_of(const DbFldNode *node) { return node->value ? node->value : u""; }

bool is_empty(const nq_wchar *value) { return !value || !*value; }

// Drops the last two characters, as the composers do after a list's trailing separator.
void cut_two(std::u16string &text) { text.resize(text.size() >= 2 ? text.size() - 2 : 0); }

// value, between quote marks for type C only.
void append_value(std::u16string &text, const nq_wchar *value, nq_wchar type) {
    if (type == u'C') text += u'\'';
    text += value;
    if (type == u'C') text += u'\'';
}

// "[name]=value" and the separator.
void append_pair(std::u16string &clause, const nq_wchar *name, const nq_wchar *value,
                 nq_wchar type, const char16_t *separator) {
    clause += u'[';
    clause += name;
    clause += u"]=";
    append_value(clause, value, type);
    clause += separator;
}

bool fits(std::u16string &out, std::size_t size) {
    if (out.size() < size) return true;
    out.clear();
    return false;
}

// The name after the last slash or backslash, or null when the path has neither.
const nq_wchar *name_after_separator(const nq_wchar *path) {
    const nq_wchar *back = nqt::rchr(path, u'\\');
    const nq_wchar *slash = nqt::rchr(path, u'/');
    const nq_wchar *last = !back ? slash : !slash ? back : back > slash ? back : slash;
    return last ? last + 1 : nullptr;
}

}  // namespace

const nq_wchar *extension_of(const nq_wchar *path) {
    const nq_wchar *point = path ? nqt::rchr(path, u'.') : nullptr;
    return point ? point : u"";
}

void append_table_text(std::u16string &text, const nq_wchar *path) {
    if (!path) return;
    if (nq_Str_cmpi(extension_of(path), u".dbf") == 0) {
        // "[C:\data]\pipe.dbf": the bracket closes before the last backslash of the text
        // that stands at index 2 or above; with none, it stays open.
        text += u'[';
        text += path;
        for (std::size_t i = text.size(); i-- > 2;) {
            if (text[i] == u'\\') {
                text.insert(i, 1, u']');
                break;
            }
        }
        return;
    }
    // The base name: between the last backslash and the last point. A path without a
    // backslash is taken from its last slash, else from its start.
    const nq_wchar *start = nqt::rchr(path, u'\\');
    if (!start) start = nqt::rchr(path, u'/');
    start = start ? start + 1 : path;
    const nq_wchar *point = nqt::rchr(start, u'.');
    text.append(start, point ? std::size_t(point - start) : nqt::len(start));
}

bool compose_select(std::u16string &out, const nq_wchar *path, DbFldList *fieldNames) {
    out = u"SELECT ";
    if (!fieldNames || !fieldNames->head) {
        out += u" * ";
    } else {
        for (LnkListNode *n = fieldNames->head; n; n = n->next) {
            const auto *field = static_cast<const DbFldNode *>(n->data);
            if (!field) continue;
            if (n != fieldNames->head) out += u',';
            out += field->name;
        }
    }
    out += u" FROM ";
    append_table_text(out, path);
    // This one file has a fixed order; every other table comes in the driver's order.
    const nq_wchar *name = path ? name_after_separator(path) : nullptr;
    if (name && nq_Str_cmpi(name, u"settings.db3") == 0) out += u" ORDER BY TYP";
    return fits(out, kSelectSize);
}

bool compose_count(std::u16string &out, const nq_wchar *path) {
    out = u"select count(*) from ";
    append_table_text(out, path);
    return fits(out, kSelectSize);
}

bool compose_insert(std::u16string &out, const nq_wchar *path, DbFldList *record) {
    out = u"INSERT INTO ";
    append_table_text(out, path);
    out += u" (";
    // The cuts are made whether or not a field was written, as the text has always been.
    for (LnkListNode *n = record ? record->head : nullptr; n; n = n->next) {
        const auto *field = static_cast<const DbFldNode *>(n->data);
        if (!field || is_empty(field->value)) continue;
        out += u'[';
        out += field->name;
        out += u"], ";
    }
    cut_two(out);
    out += u") VALUES (";
    for (LnkListNode *n = record ? record->head : nullptr; n; n = n->next) {
        const auto *field = static_cast<const DbFldNode *>(n->data);
        if (!field || is_empty(field->value)) continue;
        append_value(out, field->value, field->type);
        out += u", ";
    }
    cut_two(out);
    out += u')';
    return fits(out, kInsertSize);
}

bool compose_update(std::u16string &out, const nq_wchar *path, DbFldList *oldRecord,
                    DbFldList *newRecord) {
    out = u"UPDATE ";
    append_table_text(out, path);
    std::u16string set = u" SET ";
    std::u16string where = u" WHERE ";
    bool changed = false;

    for (LnkListNode *n = oldRecord ? oldRecord->head : nullptr; n; n = n->next) {
        const auto *old = static_cast<const DbFldNode *>(n->data);
        if (!old) continue;
        const DbFldNode *now = nq_DbFldList_findFld(newRecord, old->name);
        if (!now) {
            // Not in the new record: an unchanged value that helps find the row.
            if (!is_empty(old->value)) append_pair(where, old->name, old->value, old->type, u" AND ");
            continue;
        }
        const nq_wchar *value = value_of(now);
        if (!*value && (now->type == u'N' || now->type == u'F')) value = u"0.0";
        else if (!*value && now->type == u'L') value = u"0";
        if (nqt::cmp(value, value_of(old)) != 0) {
            changed = true;
            append_pair(set, now->name, value, now->type, u", ");
        } else if (*value) {
            append_pair(where, now->name, value, now->type, u" AND ");
        }
    }

    if (!changed) {
        out.clear();
        return true;
    }
    // Each clause had a buffer of its own, holding its trailing separator before the cut.
    if (set.size() >= kClauseSize || where.size() >= kClauseSize) {
        out.clear();
        return false;
    }
    if (set.size() > 2) cut_two(set);
    out += set;
    if (where.size() > 5 && where != u" WHERE ") {
        where.resize(where.size() - 5);  // the trailing " AND "
        out += where;
    }
    return fits(out, kUpdateSize);
}

}  // namespace nqdb
