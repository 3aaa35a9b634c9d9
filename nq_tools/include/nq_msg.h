/* nq_tls20an: messages. The texts an application shows, turned into the user's language and
 * decorated; keyword lists that pair English keywords with their translations; lists of
 * messages translated in one call.
 *
 * The language is settled by the first nq_Msg_translate of the process, from the keys
 * "LANGUAGE" and "LANGUAGE_DEBUG" of the group "GENERAL" in nq.ini (nq_Env_getIni). English
 * (the key missing, or starting with "ENG" in any case) with debug off ("LANGUAGE_DEBUG"
 * missing or "0") means no translator at all: texts are decorated and passed through. Otherwise
 * the translator plug-in named by the environment variable NQ_TRANSLATOR is loaded (see
 * nq_translator.h); if there is none, one message box titled "Message Translator Error" says
 * so, and the process stays in English from then on. A later change of the keys has no effect.
 *
 * Format codes decorate a text: 2 "%s ", 3 "\n%s", 4 "\n%s ", 5 "%s\n", 6 "%s \n",
 * 7 "\n%s\n", 8 "\n%s \n"; any other code leaves it as it is. nq_Msg_setFormat makes a code
 * from the flags 1 (trailing blank), 2 (leading line break) and 4 (trailing line break).
 *
 * Static results, each good until the next call of the same function: nq_Msg and
 * nq_Msg_translate (one buffer of 256 characters), nq_Msg_pad, nq_Msg_format, nq_Msg_find
 * and nq_MsgKeyWordList_find (512 each). A longer text is cut there.
 *
 * Every function traces its way out as "Leaving X." with the condition bit 1024 at level 3;
 * nq_Msg_getKeyWordList also reports its locale and its count at level 2. */
#ifndef NQ_MSG_H
#define NQ_MSG_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* Room of the key and context fields; 16 characters are used. */
#define NQ_MSG_NAME_SIZE 18

/* One message of a message list. */
struct MsgNode {
    nq_wchar key[NQ_MSG_NAME_SIZE];     /* the caller's short name for the message */
    nq_wchar *text;                     /* owned; the English text, replaced by the translation */
    nq_wchar context[NQ_MSG_NAME_SIZE]; /* the context word given to the translator */
    int32_t format;                     /* a format code */
    int32_t padWidth;                   /* width to pad to, when above 0 */
};

/* One pair of a keyword list. */
struct MsgKeyWordListNode {
    nq_wchar *keyWord;      /* owned; the English keyword */
    nq_wchar *translation;  /* owned; the translated keyword */
};

/* A message list is a linked list of MsgNode, a keyword list one of MsgKeyWordListNode. */
typedef LnkList MsgList;
typedef LnkList MsgKeyWordList;

/* One record of the array that nq_Msg_mltReadArray reads: four words. */
typedef struct MsgRecord {
    const nq_wchar *key;
    const nq_wchar *text;
    const nq_wchar *context;
    int32_t format;
} MsgRecord;

/* Translation and decoration. */

/* nq_Msg_translate of the narrow (UTF-8) text and context. Static. */
NQ_API nq_wchar *nq_Msg(const char *text, const char *context, int format);
/* nq_Msg_translate with the context "DBCols". Static. */
NQ_API nq_wchar *nq_MsgDBCols(const nq_wchar *text, int format);
/* The text in the user's language. Without a translator, or when it gives back nothing, the
 * English text decorated by nq_Msg_format; otherwise the translator's text as it came, since
 * the translator decorates it itself (it is handed the format index: 0 for the code 0, else the
 * code minus 1, in 16 bits). A null text or context counts as empty. Static, 256 characters. */
NQ_API nq_wchar *nq_Msg_translate(const nq_wchar *text, const nq_wchar *context, int format);
/* nq_Msg_translate, then padded with blanks to width (nq_Str_pad) when width is above 0; a
 * longer text stays whole. Static, 512 characters. */
NQ_API nq_wchar *nq_Msg_pad(const nq_wchar *text, const nq_wchar *context, int format, int width);
/* The text with its escapes resolved (nq_Msg_scanEsc) and decorated by the format code.
 * Static, 512 characters; a null text counts as empty. */
NQ_API nq_wchar *nq_Msg_format(const nq_wchar *text, int format);
/* The code for flags 1 to 7 (flags + 1); 1 for anything else. */
NQ_API int nq_Msg_setFormat(int flags);
/* Resolves backslash escapes in place and yields text (null for null):
 *   \"  \'  \\   the character itself
 *   \a \f \n \r \t   7, 12, 10, 13, 9
 *   \b   character 8 is stored but the position does not advance, so the next character
 *        (or the end of the text) overwrites it
 *   \ and up to three digits   a number: each digit rotates the value left by 3 bits in 32
 *        bits and is added, and the low 16 bits are stored. The value starts where the
 *        previous numeric escape of the same text left it, so only the first one reads as an
 *        octal number; 8 and 9 are taken as digits too
 *   \ and any other character   both dropped
 * At most 511 characters of result are kept. */
NQ_API nq_wchar *nq_Msg_scanEsc(nq_wchar *text);
/* Splits text on blanks and underscores into its first two tokens, trimmed, copied to first
 * and second (each needs room for the text; emptied first). 1 when both are non-empty, else
 * 0; 0 for a null argument. */
NQ_API int nq_Msg_breakStr(const nq_wchar *text, nq_wchar *first, nq_wchar *second);

/* Keyword lists. */

/* The keywords of keyWords (English, separated by ",") paired by position with those of its
 * translation (nq_Msg_translate with format 1, separated by ","): a new keyword list, which
 * the caller destroys. When "LANGUAGE" is set and "LANG_LOCALE" too, the process's locale
 * (LC_ALL) is first set to it. A translation that holds no separator while the English has two
 * keywords or more has lost its shape: the result is then an empty list. Null for null, when
 * keyWords holds no keyword, or when no pair could be made. */
NQ_API MsgKeyWordList *nq_Msg_getKeyWordList(const nq_wchar *keyWords, const nq_wchar *context);
/* An empty keyword list, or null without memory. */
NQ_API MsgKeyWordList *nq_MsgKeyWordList_create(void);
/* Appends copies of the pair. 0 in all cases; a null argument appends nothing. */
NQ_API int nq_MsgKeyWordList_append(MsgKeyWordList *list, const nq_wchar *keyWord,
                                    const nq_wchar *translation);
/* The translation of the first pair whose keyword equals keyWord without regard to case; the
 * keyword itself when there is none (the empty text for null). The cursor stays. Static. */
NQ_API nq_wchar *nq_MsgKeyWordList_find(MsgKeyWordList *list, const nq_wchar *keyWord);
/* Destroys every pair and the list. 1, or 0 for null. */
NQ_API int nq_MsgKeyWordList_destroy(MsgKeyWordList *list);
/* A pair of copies (a null argument stays null), or null without memory. */
NQ_API MsgKeyWordListNode *nq_MsgKeyWordListNode_create(const nq_wchar *keyWord,
                                                        const nq_wchar *translation);
/* Frees both texts and the pair. 1, or 0 for null. */
NQ_API int nq_MsgKeyWordListNode_destroy(MsgKeyWordListNode *node);

/* Message lists. */

/* A message: key and context cut to 16 characters (null counts as empty), a copy of text (null
 * stays null). Null without memory. */
NQ_API MsgNode *nq_MsgNode_create(const nq_wchar *key, const nq_wchar *text, const nq_wchar *context,
                                  int format, int padWidth);
/* Frees each message's text and the message, then the list. 1, or 0 for null. */
NQ_API int nq_MsgList_destroy(MsgList *list);
/* Translates every message that has a text and a context: nq_Msg_translate with its format,
 * padded to padWidth when that is above 0, replaces the text. A result that begins with "^"
 * leaves the message as it was. 1. */
NQ_API int nq_Msg_multiple(MsgList *list);
/* A new message list from groups of arguments (key, text, context, format), then
 * nq_Msg_multiple on it. A null key or text ends the arguments; a null context ends its group
 * early: no format is read and the previous one (at first 0) is used. After a format of 0 the
 * next group has no key of its own: it reads text, context, format and keeps the key. So give
 * non-zero formats, and end the arguments with a null pointer. Null without memory. */
NQ_API MsgList *nq_Msg_mlt(const nq_wchar *key, ...);
/* The same from an array of records, up to the first whose key is null or empty (or whose
 * text is null); a record with a null context takes the previous record's format. */
NQ_API MsgList *nq_Msg_mltReadArray(const MsgRecord *records);
/* The text of the first message of the key (compared exactly) that has a text; the key itself
 * when there is none (the empty text for null). Static. */
NQ_API nq_wchar *nq_Msg_find(MsgList *list, const nq_wchar *key);

NQ_EXTERN_C_END

#endif
