// Private to the library: the platform part of ReplaceEnvironmentVariables
// (source/<platform>/Environment.cpp). The portable part (source/
// TextUtilities.cpp) passes the text as a C string, so a zero character
// ends it on every platform, and turns memory exhaustion into false.
#pragma once

#include <string>

namespace Zantor::Detail {

// Expands the %NAME% references of text into expanded. Returns false when
// the platform's expansion fails; may throw std::bad_alloc.
bool ExpandEnvironmentReferences(const char* text, std::string& expanded);

} // namespace Zantor::Detail
