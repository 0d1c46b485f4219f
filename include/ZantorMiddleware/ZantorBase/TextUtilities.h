// Text utilities: bounded printf-style formatting that always terminates,
// expansion of %NAME% environment references, and the quoted list form that
// messages use to name several strings.
//
// Ownership: the caller owns every buffer and string; nothing is kept.
// Thread safety: all functions may be called from any thread.
// ReplaceEnvironmentVariables reads the process environment, which must not
// be changed by another thread (setenv, putenv) while it runs.
//
//   char text[32];
//   Snprintf(text, sizeof text, "%s: %u", name, count);     // always terminated
//   std::string path;
//   if (ReplaceEnvironmentVariables("%HOME%/zantor.ini", path)) ...
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <cstdarg>
#include <string>

namespace Zantor {

// Formats into buffer, writing at most size - 1 characters and always a
// terminating zero at buffer[size - 1] or earlier. Returns the number of
// characters stored (without the zero): the formatted length when it fits,
// size - 1 when the text was truncated. With size 0 it returns 0 and touches
// nothing (buffer may then be null). A format the runtime rejects (an
// encoding error) leaves whatever it produced, terminated, and returns its
// length.
ZANTOR_BASE_API unsigned Snprintf(char* buffer, unsigned size, const char* format, ...) ZANTOR_PRINTF_FORMAT(3, 4);
ZANTOR_BASE_API unsigned Vsnprintf(char* buffer, unsigned size, const char* format, va_list args) ZANTOR_PRINTF_FORMAT(3, 0);

// Replaces each %NAME% in in by the value of the environment variable NAME
// and stores the result in out; returns true. Text without references is
// copied unchanged. A reference to an unknown variable is left as written,
// % signs included; a % without a closing % is left as it is, and so is
// "%%" (an empty name). in is read as a C string: a zero character ends
// it, and nothing behind it reaches out.
// On Windows the expansion is done by ExpandEnvironmentStringsA (names are
// case-insensitive there). On Linux the library expands with the same
// rules: names are matched exactly and case-sensitively (getenv); a name
// holding '=' is never a variable and stays as written; values are not
// expanded again; after an unknown name its closing % may open the next
// reference, so with A unset and B=x, "%A%B%" gives "%Ax".
// Returns false when the expansion fails (on Windows the system call fails
// or the result does not fit twice the reported length; anywhere, memory
// runs out); out is then unchanged.
ZANTOR_BASE_API bool ReplaceEnvironmentVariables(const std::string& in, std::string& out);

// Returns the count strings of list, each in double quotation marks, joined
// by ", "; when lastSeparator is not null, the last item is joined by
// lastSeparator and one blank instead. With " or", {"a", "b", "c"} gives
// "a", "b" or "c" (each quoted). A count of 0 (or a null list) gives the
// empty string; a null item is written as an empty quoted string.
ZANTOR_BASE_API std::string StringListToString(const char* const* list, unsigned count, const char* lastSeparator);

} // namespace Zantor
