// File path operations on Linux: '/' as the separator, lexical absolute
// paths, TMPDIR, stat(2).
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include "FilePathRules.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace Zantor {

namespace Detail {

PathParts PlatformSplitPath(const std::string& path)
{
    return SplitPathParts(path);
}

std::string PlatformMakePath(const PathParts& parts)
{
    return MakePathFromParts(parts);
}

bool IsDirectoryTerminator(char c)
{
    return c == '/' || c == '\\';
}

bool IsPlatformAbsolutePath(const std::string& path)
{
    return !path.empty() && path[0] == '/';
}

} // namespace Detail

namespace {

// The current directory, or false when it cannot be read (removed, not
// reachable from the root, no permission).
bool ReadCurrentDirectory(std::string& directory)
{
    std::vector<char> buffer(PATH_MAX);
    for (;;) {
        if (::getcwd(buffer.data(), buffer.size()) != nullptr) {
            directory = buffer.data();
            return !directory.empty() && directory[0] == '/';
        }
        if (errno != ERANGE || buffer.size() >= (std::size_t{1} << 20))
            return false;
        buffer.resize(buffer.size() * 2);
    }
}

} // namespace

char File::GetDirectorySeparator()
{
    return '/';
}

const std::string& File::GetEndOfLine()
{
    // Never destroyed, so the reference stays valid while the process exits.
    static const std::string& endOfLine = *new std::string("\n");
    return endOfLine;
}

std::string File::MakeAbsolutePath(const std::string& path)
{
    if (path.find('\0') != std::string::npos)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);

    std::string full;
    if (path.empty() || path[0] != '/') {
        if (!ReadCurrentDirectory(full))
            ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
        full += '/';
    }
    full += path;

    std::vector<std::string> components;
    std::size_t position = 0;
    while (position <= full.size()) {
        std::size_t end = full.find('/', position);
        if (end == std::string::npos)
            end = full.size();
        const std::string component = full.substr(position, end - position);
        if (component == "..") {
            if (!components.empty())
                components.pop_back();
        } else if (!component.empty() && component != ".") {
            components.push_back(component);
        }
        position = end + 1;
    }

    std::string result;
    for (const std::string& component : components) {
        result += '/';
        result += component;
    }
    if (result.empty())
        result = "/";
    else if (!path.empty() && path.back() == '/')
        result += '/';
    if (result.size() >= PATH_MAX)
        ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
    return result;
}

std::string File::GetTemporaryPath()
{
    const char* directory = std::getenv("TMPDIR");
    if (directory != nullptr && directory[0] != '\0')
        return directory;
    return "/tmp";
}

bool File::IsFound(const std::string& path)
{
    struct stat status {};
    if (path.find('\0') != std::string::npos || ::stat(path.c_str(), &status) != 0)
        return false;
    return S_ISREG(status.st_mode);
}

bool File::IsDirectory(const std::string& path)
{
    struct stat status {};
    if (path.find('\0') != std::string::npos || ::stat(path.c_str(), &status) != 0)
        return false;
    return S_ISDIR(status.st_mode);
}

} // namespace Zantor
