// Fuzzes the path rules of File on arbitrary text (paths come from INI files
// and command lines): splitting keeps a prefix as the directory and a suffix
// as the file name, and an absolute path, when one is made, is normalized.
#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

std::string Trim(const std::string& text)
{
    static constexpr char blanks[] = " \t\r\n\f\v";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void Check(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using Zantor::File;

    const std::string path(reinterpret_cast<const char*>(data), size);
    // A zero character ends the path.
    const std::string trimmed = Trim(path.substr(0, path.find('\0')));

    std::string directory;
    std::string fileName;
    File::SplitPath(path, directory, fileName);
    Check(trimmed.compare(0, directory.size(), directory) == 0);
    Check(fileName.size() <= trimmed.size());
    Check(trimmed.compare(trimmed.size() - fileName.size(), fileName.size(), fileName) == 0);
    Check(directory.size() + fileName.size() <= trimmed.size());
    // Between the two parts at most the one separator that ended the
    // directory and was removed from it.
    const std::size_t gap = trimmed.size() - directory.size() - fileName.size();
    Check(gap <= 1);
    if (gap == 1)
        Check(trimmed[directory.size()] == '\\' || trimmed[directory.size()] == '/');
    // A path without separators, drive or dot splits into the file name alone.
    if (trimmed.find_first_of("\\/:.") == std::string::npos)
        Check(directory.empty() && fileName == trimmed);
    Check(fileName.find_first_of("\\/") == std::string::npos);
    Check(File::IsFileNameOnly(path) == (directory.empty() && fileName == path));

    const std::string joined = File::MakePath(directory, fileName);
    Check(joined.size() >= directory.size() + fileName.size());
    (void)File::IsAbsolutePath(path);

    try {
        const std::string absolute = File::MakeAbsolutePath(path);
        Check(!absolute.empty() && absolute[0] == '/');
        Check(absolute.find("//") == std::string::npos);
        Check(absolute.find("/./") == std::string::npos);
        Check(absolute.find("/../") == std::string::npos);
        Check(File::IsAbsolutePath(absolute));
    } catch (const Zantor::StatusCodeException& e) {
        Check(e.GetCode() == Zantor::STATUS_CODE_PATH_NOT_FOUND);
    }
    return 0;
}
