// The path rules of File shared by every platform.
#include <ZantorMiddleware/ZantorBase/File.h>

#include "FilePathRules.h"

namespace Zantor {

namespace Detail {

namespace {

bool IsSeparator(char c)
{
    return c == '\\' || c == '/';
}

} // namespace

PathParts SplitPathParts(const std::string& path)
{
    PathParts parts;
    std::size_t start = 0;
    if (path.size() >= 2 && path[1] == ':') {
        parts.drive = path.substr(0, 2);
        start = 2;
    }
    std::size_t nameStart = start;
    for (std::size_t i = path.size(); i > start; --i) {
        if (IsSeparator(path[i - 1])) {
            nameStart = i;
            break;
        }
    }
    parts.directory = path.substr(start, nameStart - start);
    const std::size_t dot = path.rfind('.');
    if (dot != std::string::npos && dot >= nameStart) {
        parts.baseName = path.substr(nameStart, dot - nameStart);
        parts.extension = path.substr(dot);
    } else {
        parts.baseName = path.substr(nameStart);
    }
    return parts;
}

std::string MakePathFromParts(const PathParts& parts)
{
    std::string path;
    if (!parts.drive.empty()) {
        path += parts.drive[0];
        path += ':';
    }
    if (!parts.directory.empty()) {
        path += parts.directory;
        if (!IsSeparator(parts.directory.back()))
            path += '\\';
    }
    path += parts.baseName;
    if (!parts.extension.empty()) {
        if (parts.extension[0] != '.')
            path += '.';
        path += parts.extension;
    }
    return path;
}

} // namespace Detail

namespace {

std::string Trim(const std::string& text)
{
    static constexpr char blanks[] = " \t\r\n\f\v";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return std::string();
    const std::size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

} // namespace

void File::SplitPath(const std::string& path, std::string& directory, std::string& fileName)
{
    // A zero character ends the path, as it ends it for every system call.
    const std::string trimmed = Trim(path.substr(0, path.find('\0')));
    if (trimmed.empty()) {
        directory.clear();
        fileName.clear();
        return;
    }
    if (trimmed == "." || trimmed == "..") {
        directory = trimmed;
        fileName.clear();
        return;
    }
    const Detail::PathParts parts = Detail::PlatformSplitPath(trimmed);
    const bool dropTerminator = parts.directory.size() > 1 && Detail::IsDirectoryTerminator(parts.directory.back());

    std::string splitDirectory = Detail::PlatformMakePath({parts.drive, parts.directory, {}, {}});
    if (dropTerminator && !splitDirectory.empty() && Detail::IsDirectoryTerminator(splitDirectory.back()))
        splitDirectory.pop_back();
    std::string splitFileName = Detail::PlatformMakePath({{}, {}, parts.baseName, parts.extension});

    if (splitFileName == "." || splitFileName == "..") {
        splitDirectory = trimmed;
        splitFileName.clear();
    }
    directory = std::move(splitDirectory);
    fileName = std::move(splitFileName);
}

bool File::IsFileNameOnly(const std::string& path)
{
    std::string directory;
    std::string fileName;
    SplitPath(path, directory, fileName);
    return directory.empty() && fileName == path;
}

std::string File::MakePath(const std::string& directory, const std::string& name)
{
    if (directory.empty())
        return name;
    std::string path = directory;
    if (!(directory.size() == 2 && directory[1] == ':') && !Detail::IsDirectoryTerminator(directory.back()))
        path += GetDirectorySeparator();
    path += name;
    return path;
}

bool File::IsAbsolutePath(const std::string& path)
{
    if (path.empty())
        return false;
    if (path[0] == '\\' || Detail::IsPlatformAbsolutePath(path))
        return true;
    if (path.size() == 1)
        return false;
    return path[1] == ':';
}

std::string File::ExpandPath(const std::string& path)
{
    return path;
}

} // namespace Zantor
