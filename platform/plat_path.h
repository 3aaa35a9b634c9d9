// The path bridge: the one way a library name reaches the operating system, and the way back.
#pragma once

#include <string>
#include <string_view>

namespace nqplat {

// Library name (backslashes, optional drive mark, any case) to a Linux path:
// UTF-8, leading "X:" dropped, "\" to "/", and each component that does not exist as
// spelled resolved by a case-insensitive match in its folder. A component that matches
// nothing keeps the case it was given (it is being created).
std::string os_path(const char16_t *name);
// The same for narrow names (the engine's bytes are passed through as they are).
std::string os_path_bytes(const char *name);

// A Linux path handed out by the library: "/home/ann" becomes "C:\home\ann".
// A relative path only has its separators turned.
std::u16string library_path(std::string_view os_path_utf8);
std::string library_path_bytes(std::string_view os_path_utf8);

}  // namespace nqplat
