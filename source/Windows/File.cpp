// File path operations on Windows: the C runtime's path splitter, builder
// and full-path function, GetTempPathA, _stat.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include "FilePathRules.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/types.h>
#include <windows.h>

namespace Zantor {

namespace Detail {

// The runtime's splitter, for every path its fixed component buffers can
// hold; longer paths go through the equivalent splitter without limits.
PathParts PlatformSplitPath(const std::string& path)
{
    if (path.size() >= _MAX_DIR || path.find('\0') != std::string::npos)
        return SplitPathParts(path);
    char drive[_MAX_DRIVE] = {};
    char directory[_MAX_DIR] = {};
    char baseName[_MAX_FNAME] = {};
    char extension[_MAX_EXT] = {};
    _splitpath(path.c_str(), drive, directory, baseName, extension);
    return PathParts{drive, directory, baseName, extension};
}

std::string PlatformMakePath(const PathParts& parts)
{
    // Drive letter and colon, a separator the builder may add, the NUL.
    const std::size_t length =
        2 + parts.directory.size() + 1 + parts.baseName.size() + 1 + parts.extension.size() + 1;
    if (length > _MAX_PATH)
        return MakePathFromParts(parts);
    char path[_MAX_PATH] = {};
    _makepath(path, parts.drive.c_str(), parts.directory.c_str(), parts.baseName.c_str(), parts.extension.c_str());
    return path;
}

bool IsDirectoryTerminator(char c)
{
    return c == '\\';
}

bool IsPlatformAbsolutePath(const std::string&)
{
    return false;
}

} // namespace Detail

char File::GetDirectorySeparator()
{
    return '\\';
}

const std::string& File::GetEndOfLine()
{
    // Never destroyed, so the reference stays valid while the process exits.
    static const std::string& endOfLine = *new std::string("\r\n");
    return endOfLine;
}

std::string File::MakeAbsolutePath(const std::string& path)
{
    char buffer[260];
    if (path.find('\0') != std::string::npos || _fullpath(buffer, path.c_str(), sizeof buffer) == nullptr)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
    return buffer;
}

std::string File::GetTemporaryPath()
{
    const std::string fallback = "C:\\WINDOWS\\Temp";
    constexpr DWORD size = 512;
    char buffer[size + 1] = {};
    const DWORD answer = GetTempPathA(size, buffer);
    if (answer == 0)
        return fallback;
    if (answer <= size)
        return buffer;
    const DWORD largerSize = answer * 2;
    std::vector<char> larger(static_cast<std::size_t>(largerSize) + 1, '\0');
    const DWORD second = GetTempPathA(largerSize, larger.data());
    if (second != 0 && second < largerSize)
        return larger.data();
    return fallback;
}

bool File::IsFound(const std::string& path)
{
    struct _stat status {};
    if (path.find('\0') != std::string::npos || _stat(path.c_str(), &status) != 0)
        return false;
    return (status.st_mode & _S_IFREG) != 0;
}

bool File::IsDirectory(const std::string& path)
{
    struct _stat status {};
    if (path.find('\0') != std::string::npos || _stat(path.c_str(), &status) != 0)
        return false;
    return (status.st_mode & _S_IFDIR) != 0;
}

} // namespace Zantor
