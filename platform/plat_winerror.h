// The system error codes that the stand-ins report and their callers test, with the values
// the original platform gives them (callers compare against those numbers).
#pragma once

#include <cstdint>

namespace nqplat {

constexpr uint32_t kErrorNone = 0;
constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorPathNotFound = 3;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorNoMoreFiles = 18;
constexpr uint32_t kErrorSharingViolation = 32;
constexpr uint32_t kErrorLockViolation = 33;
constexpr uint32_t kErrorFileExists = 80;
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorDiskFull = 112;
constexpr uint32_t kErrorNegativeSeek = 131;
constexpr uint32_t kErrorDirNotEmpty = 145;
constexpr uint32_t kErrorNotLocked = 158;
constexpr uint32_t kErrorIo = 1117;

}  // namespace nqplat
