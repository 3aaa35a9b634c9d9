// Numbers in file images, byte by byte: the data file's are little-endian, the memo file's
// big-endian. Records are never written as they lie in memory.
#pragma once

#include <cstdint>

namespace byte4 {

inline void put_le16(unsigned char *at, uint32_t value) {
    at[0] = static_cast<unsigned char>(value & 0xFF);
    at[1] = static_cast<unsigned char>((value >> 8) & 0xFF);
}

inline void put_le32(unsigned char *at, uint32_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<unsigned char>((value >> (8 * i)) & 0xFF);
}

inline uint32_t get_le16(const unsigned char *at) {
    return static_cast<uint32_t>(at[0]) | (static_cast<uint32_t>(at[1]) << 8);
}

inline uint32_t get_le32(const unsigned char *at) {
    return static_cast<uint32_t>(at[0]) | (static_cast<uint32_t>(at[1]) << 8) |
           (static_cast<uint32_t>(at[2]) << 16) | (static_cast<uint32_t>(at[3]) << 24);
}

inline void put_be16(unsigned char *at, uint32_t value) {
    at[0] = static_cast<unsigned char>((value >> 8) & 0xFF);
    at[1] = static_cast<unsigned char>(value & 0xFF);
}

inline void put_be32(unsigned char *at, uint32_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<unsigned char>((value >> (24 - 8 * i)) & 0xFF);
}

inline uint32_t get_be16(const unsigned char *at) {
    return (static_cast<uint32_t>(at[0]) << 8) | static_cast<uint32_t>(at[1]);
}

inline uint32_t get_be32(const unsigned char *at) {
    return (static_cast<uint32_t>(at[0]) << 24) | (static_cast<uint32_t>(at[1]) << 16) |
           (static_cast<uint32_t>(at[2]) << 8) | static_cast<uint32_t>(at[3]);
}

}  // namespace byte4
