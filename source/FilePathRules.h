// Private to the library: the pieces of the File path operations that differ
// between platforms. source/File.cpp holds the rules; source/<platform>/File.cpp
// supplies these functions.
#pragma once

#include <string>

namespace Zantor::Detail {

// A path broken up as the C runtime's _splitpath does: drive ("X:" or empty),
// directory part (up to and including the last '\\' or '/', or empty), base
// name, and extension (from the last '.' of the name, or empty).
struct PathParts
{
    std::string drive;
    std::string directory;
    std::string baseName;
    std::string extension;
};

// The runtime-independent splitter and builder, equivalent to _splitpath and
// _makepath without their length limits (portable, in source/File.cpp).
PathParts SplitPathParts(const std::string& path);
std::string MakePathFromParts(const PathParts& parts);

// The platform's splitter and builder (Windows: the C runtime's).
PathParts PlatformSplitPath(const std::string& path);
std::string PlatformMakePath(const PathParts& parts);

// True when c ends a directory: SplitPath removes it from the end of a
// directory part longer than one character, and MakePath adds no separator
// after it.
bool IsDirectoryTerminator(char c);

// True when the platform treats path as absolute beyond the common rules.
bool IsPlatformAbsolutePath(const std::string& path);

} // namespace Zantor::Detail
