/* An example Message Translator plug-in: translations from a table file.
 *
 * The file is named by the environment variable NQ_EXAMPLE_TRANSLATIONS and read once, at
 * the first translation. It is UTF-8 text, one translation a line, three fields separated by
 * tabs:
 *
 *     context <TAB> English text <TAB> translation
 *
 * Empty lines and lines that begin with "#" are skipped, and so is a line with fewer than
 * three fields. In each field "\n", "\t" and "\\" stand for a line break, a tab and a
 * backslash. A context of "*" matches every context. Texts compare exactly; the first line
 * that matches wins.
 *
 * A found translation is decorated by the format index as the library asks (1 a trailing
 * blank, 2 a leading line break, 4 a trailing line break). An empty translation comes back
 * empty and undecorated, which tells the library to show its English text. A text that the
 * table does not hold gives null: no translation either.
 *
 * Build: the target nq_example_translator; point NQ_TRANSLATOR at the shared object. */
#define _POSIX_C_SOURCE 200809L /* getline */

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define NQ_TRANSLATOR_PLUGIN
#include "nq_translator.h"

typedef struct Entry {
    nq_wchar *context;
    nq_wchar *text;
    nq_wchar *translation;
} Entry;

static Entry *g_entries = NULL;
static size_t g_count = 0;
static int g_loaded = 0;

static size_t wlen(const nq_wchar *s) {
    size_t n = 0;
    while (s[n]) ++n;
    return n;
}

static int wequal(const nq_wchar *a, const nq_wchar *b) {
    while (*a && *a == *b) ++a, ++b;
    return *a == *b;
}

/* UTF-8 bytes to a new UTF-16 text. A byte that does not begin a valid sequence becomes the
 * code unit of its value, so Latin-1 tables read too. */
static nq_wchar *from_utf8(const unsigned char *s, size_t n) {
    nq_wchar *out = malloc((n + 1) * sizeof(nq_wchar));
    size_t k = 0, i = 0;
    if (!out) return NULL;
    while (i < n) {
        const unsigned char c = s[i];
        uint32_t cp = c;
        size_t extra = 0;
        if (c >= 0xF0 && c <= 0xF4) extra = 3, cp = c & 0x07u;
        else if (c >= 0xE0) extra = 2, cp = c & 0x0Fu;
        else if (c >= 0xC2 && c < 0xE0) extra = 1, cp = c & 0x1Fu;
        if (extra > 0 && i + extra < n) {
            size_t j = 1;
            while (j <= extra && (s[i + j] & 0xC0u) == 0x80u) cp = (cp << 6) | (s[i + j++] & 0x3Fu);
            const uint32_t least = extra == 1 ? 0x80u : extra == 2 ? 0x800u : 0x10000u;
            if (j > extra && cp >= least && cp <= 0x10FFFFu && !(cp >= 0xD800u && cp <= 0xDFFFu)) {
                if (cp >= 0x10000u) {
                    cp -= 0x10000u;
                    out[k++] = (nq_wchar)(0xD800u + (cp >> 10));
                    out[k++] = (nq_wchar)(0xDC00u + (cp & 0x3FFu));
                } else {
                    out[k++] = (nq_wchar)cp;
                }
                i += extra + 1;
                continue;
            }
        }
        out[k++] = c;
        ++i;
    }
    out[k] = 0;
    return out;
}

/* Resolves "\n", "\t" and "\\" in place; any other backslash stays. */
static void unescape(char *field) {
    char *out = field;
    for (const char *in = field; *in; ++in) {
        if (in[0] == '\\' && (in[1] == 'n' || in[1] == 't' || in[1] == '\\')) {
            *out++ = in[1] == 'n' ? '\n' : in[1] == 't' ? '\t' : '\\';
            ++in;
        } else {
            *out++ = *in;
        }
    }
    *out = 0;
}

static void add_line(char *line) {
    char *fields[3];
    char *cut;
    size_t n = strlen(line);
    while (n > 0 && (line[n - 1] == '\n' || line[n - 1] == '\r')) line[--n] = 0;
    if (n == 0 || line[0] == '#') return;
    fields[0] = line;
    for (int f = 1; f < 3; ++f) {
        cut = strchr(fields[f - 1], '\t');
        if (!cut) return;
        *cut = 0;
        fields[f] = cut + 1;
    }
    /* Only the first two tabs separate: a further one belongs to the translation. */
    Entry *grown = realloc(g_entries, (g_count + 1) * sizeof(Entry));
    if (!grown) return;
    g_entries = grown;
    for (int f = 0; f < 3; ++f) unescape(fields[f]);
    Entry *e = &g_entries[g_count];
    e->context = from_utf8((const unsigned char *)fields[0], strlen(fields[0]));
    e->text = from_utf8((const unsigned char *)fields[1], strlen(fields[1]));
    e->translation = from_utf8((const unsigned char *)fields[2], strlen(fields[2]));
    if (!e->context || !e->text || !e->translation) {
        free(e->context);
        free(e->text);
        free(e->translation);
        return;
    }
    ++g_count;
}

static void load_table(void) {
    const char *path = getenv("NQ_EXAMPLE_TRANSLATIONS");
    FILE *file;
    char *line = NULL;
    size_t room = 0;
    g_loaded = 1;
    if (!path || !*path || !(file = fopen(path, "rb"))) return;
    while (getline(&line, &room, file) >= 0) add_line(line);
    free(line);
    fclose(file);
}

__attribute__((destructor)) static void unload_table(void) {
    for (size_t i = 0; i < g_count; ++i) {
        free(g_entries[i].context);
        free(g_entries[i].text);
        free(g_entries[i].translation);
    }
    free(g_entries);
    g_entries = NULL;
    g_count = 0;
}

static const Entry *lookup(const nq_wchar *text, const nq_wchar *context) {
    static const nq_wchar any[] = {'*', 0};
    for (size_t i = 0; i < g_count; ++i) {
        const Entry *e = &g_entries[i];
        if ((wequal(e->context, any) || wequal(e->context, context)) && wequal(e->text, text)) return e;
    }
    return NULL;
}

NQ_API nq_wchar *nq_Translator_translate(const nq_wchar *text, const nq_wchar *context, int16_t formatIndex) {
    const Entry *e;
    size_t n, k = 0;
    nq_wchar *out;
    if (!g_loaded) load_table();
    if (!text || !context || !(e = lookup(text, context))) return NULL;
    n = wlen(e->translation);
    out = malloc((n + 4) * sizeof(nq_wchar));
    if (!out) return NULL;
    if (n > 0) {
        if (formatIndex & 2) out[k++] = '\n';
        memcpy(out + k, e->translation, n * sizeof(nq_wchar));
        k += n;
        if (formatIndex & 1) out[k++] = ' ';
        if (formatIndex & 4) out[k++] = '\n';
    }
    out[k] = 0;
    return out;
}

NQ_API void nq_Translator_release(nq_wchar *text) { free(text); }
