// What the message family's sources share: the translator plug-in and the buffer sizes.
#pragma once

#include <cstddef>

#include "nq_translator.h"

namespace nq::msg {

constexpr std::size_t kTranslateSize = 256;  // nq_Msg and nq_Msg_translate
constexpr std::size_t kWorkSize = 512;       // escapes, decoration, padding, lookups

// The two entry points of a loaded translator.
struct Translator {
    nq_TranslatorTranslateFn translate;
    nq_TranslatorReleaseFn release;
};

// The process's translator: the plug-in named by NQ_TRANSLATOR, loaded by the first call and
// kept for the life of the process. Null when there is none; that answer is final too.
const Translator *translator();

}  // namespace nq::msg
