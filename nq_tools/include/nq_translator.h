/* nq_tls20an: the Message Translator plug-in.
 *
 * A translator is a shared object that the message family loads with dlopen, once a process,
 * from the path in the environment variable NQ_TRANSLATOR, when the first text is to be
 * translated and the language is not English (or "LANGUAGE_DEBUG" is on). It exports two C
 * functions under the names below. A plug-in that cannot be loaded, or that lacks either
 * function, counts as no translator: the library says so once in a message box and shows
 * English for the rest of the process. The library never unloads it.
 *
 * translate: text is the English text and context its context word, both UTF-16 and never
 * null (possibly empty). formatIndex is the format code's flags: 0 for the code 0, otherwise
 * the code minus 1, in 16 bits, so 1 asks for a trailing blank, 2 for a leading line break, 4
 * for a trailing line break, and the bits combine. The translator applies that decoration
 * itself; the library shows the text as it comes back (only its first 255 characters). It
 * returns a new, zero-terminated UTF-16 text, which the library hands back through release at
 * once. Null or an empty text means "no translation": the library then shows the English
 * text with its escapes resolved and decorated.
 *
 * release: frees a text that translate returned; never called with null.
 *
 * The library calls the plug-in from one thread at a time. docs/translator.md has the whole
 * contract and the example plug-in of examples/. */
#ifndef NQ_TRANSLATOR_H
#define NQ_TRANSLATOR_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* The names the library looks up in the plug-in. */
#define NQ_TRANSLATOR_TRANSLATE_NAME "nq_Translator_translate"
#define NQ_TRANSLATOR_RELEASE_NAME "nq_Translator_release"

typedef nq_wchar *(*nq_TranslatorTranslateFn)(const nq_wchar *text, const nq_wchar *context,
                                              int16_t formatIndex);
typedef void (*nq_TranslatorReleaseFn)(nq_wchar *text);

/* A plug-in defines NQ_TRANSLATOR_PLUGIN before including this header, so that its two
 * definitions are checked against these declarations and exported. The library itself has
 * neither function. */
#ifdef NQ_TRANSLATOR_PLUGIN
NQ_API nq_wchar *nq_Translator_translate(const nq_wchar *text, const nq_wchar *context,
                                         int16_t formatIndex);
NQ_API void nq_Translator_release(nq_wchar *text);
#endif

NQ_EXTERN_C_END

#endif
