// What the configuration families (Ini, Env, Alias, Sys, Global) share inside the library.
#pragma once

#include <cstddef>
#include <string>

#include "nq_types.h"

namespace nq {

// Alias expansion into a buffer of capacity units (cut there, always terminated); the exported
// nq_Alias_expandStr is this with no bound. Yields the length written.
std::size_t alias_expand(nq_wchar *out, std::size_t capacity, const nq_wchar *text);

// The configuration folder of the application object: NQ_CFG_DIR, else the current folder,
// in the library's form, with a trailing backslash and in lower case.
std::u16string config_folder();

// The name of nq.ini in the configuration folder (nq_Sys_getCfgName).
std::u16string config_ini_name();

// The shared objects, released by nq_Global_destroyData and made again on their next use.
void ini_cache_release();
void application_release();

// Every folder and file name result of the Sys family fits this many units with its
// terminator; a longer one is cut.
constexpr std::size_t kSysNameSize = 512;

}  // namespace nq
