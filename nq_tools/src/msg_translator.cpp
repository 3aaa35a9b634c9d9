// The Message Translator: a plug-in shared object named by NQ_TRANSLATOR, loaded once.
#include <dlfcn.h>

#include <cstdlib>

#include "msg_internal.h"

namespace nq::msg {

namespace {

// One attempt a process: a plug-in that is missing or incomplete is not looked for again.
Translator load() {
    const char *path = std::getenv("NQ_TRANSLATOR");
    if (!path || !*path) return {};
    void *handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!handle) return {};
    Translator found{
        reinterpret_cast<nq_TranslatorTranslateFn>(::dlsym(handle, NQ_TRANSLATOR_TRANSLATE_NAME)),
        reinterpret_cast<nq_TranslatorReleaseFn>(::dlsym(handle, NQ_TRANSLATOR_RELEASE_NAME))};
    if (!found.translate || !found.release) {
        ::dlclose(handle);
        return {};
    }
    // The handle stays open for the life of the process, as the translator does.
    return found;
}

}  // namespace

const Translator *translator() {
    static const Translator loaded = load();
    return loaded.translate ? &loaded : nullptr;
}

}  // namespace nq::msg
