// Private to the library: the platform part of OsErrorToString
// (source/<platform>/OsError.cpp). The portable part (source/StatusCode.cpp)
// removes the trailing white space and falls back to "error %u".
#pragma once

#include <cstdint>
#include <string>

namespace Zantor::Detail {

// The system's own text for an OS error number (Windows: the system message
// table; Linux: strerror of the equivalent errno), or false when it has none.
bool GetSystemErrorText(std::uint32_t osError, std::string& text);

} // namespace Zantor::Detail
