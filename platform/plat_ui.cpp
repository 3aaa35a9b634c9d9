#include <unistd.h>

#include <cstdio>

#include "nq_platform.h"
#include "plat_ui.h"

namespace {

int default_message_box(const char *title, const char *text, unsigned int) {
    std::fprintf(stderr, "%s: %s\n", title ? title : "", text ? text : "");
    std::fflush(stderr);
    return 1;
}

void default_fatal_exit(const char *text) {
    std::fprintf(stderr, "%s\n", text ? text : "");
    std::fflush(stderr);
}

nq_MessageBoxHandler g_message_box = default_message_box;
nq_FatalExitHandler g_fatal_exit = default_fatal_exit;

}  // namespace

extern "C" NQ_API nq_MessageBoxHandler nq_Platform_setMessageBoxHandler(nq_MessageBoxHandler handler) {
    nq_MessageBoxHandler previous = g_message_box;
    g_message_box = handler ? handler : default_message_box;
    return previous;
}

extern "C" NQ_API nq_FatalExitHandler nq_Platform_setFatalExitHandler(nq_FatalExitHandler handler) {
    nq_FatalExitHandler previous = g_fatal_exit;
    g_fatal_exit = handler ? handler : default_fatal_exit;
    return previous;
}

namespace nqplat {

int message_box(const char *title, const char *text, unsigned int style) {
    return g_message_box(title, text, style);
}

void fatal_exit(const char *text) {
    g_fatal_exit(text);
    std::fflush(nullptr);
    _exit(1);
}

}  // namespace nqplat
