#include <ZantorMiddleware/ZantorBase/Exception.h>
#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using Zantor::File;

#if defined(_WIN32)
constexpr bool kWindows = true;
#else
constexpr bool kWindows = false;
#endif

struct SplitRow { int line; std::string path; std::string directory; std::string fileName; };

const std::string kLongDirectory = "C:\\" + std::string(300, 'a');

const SplitRow kSplitRows[] = {
    // Backslash paths: the same on every platform.
    {__LINE__, " \tC:\\dir\\sub\\name.ext\r\n", "C:\\dir\\sub", "name.ext"},
    {__LINE__, "name", "", "name"},
    {__LINE__, " .. ", "..", ""},
    {__LINE__, " C:\\dir\\.. ", "C:\\dir\\..", ""},
    {__LINE__, "C:\\dir\\.", "C:\\dir\\.", ""},
    {__LINE__, " \t\r\n", "", ""},
    {__LINE__, ".", ".", ""},
    {__LINE__, "...", "", "..."},
    {__LINE__, "C:\\b.txt", "C:\\", "b.txt"},
    {__LINE__, "C:x", "C:", "x"},
    {__LINE__, "C:", "C:", ""},
    {__LINE__, "C:\\dir\\", "C:\\dir", ""},
    {__LINE__, "C:\\dir\\\\f", "C:\\dir\\", "f"},
    {__LINE__, "\\x", "\\", "x"},
    {__LINE__, "\\\\server\\share\\f.x", "\\\\server\\share", "f.x"},
    {__LINE__, "dir.d\\a.b.c", "dir.d", "a.b.c"},
    {__LINE__, "dir\\.hidden", "dir", ".hidden"},
    {__LINE__, "name.", "", "name."},
    {__LINE__, "/x.so", "/", "x.so"},
    {__LINE__, kLongDirectory + "\\" + std::string(300, 'n') + ".e", kLongDirectory, std::string(300, 'n') + ".e"},
    // A zero character ends the path.
    {__LINE__, std::string("dir\\f.x\0\\g", 10), "dir", "f.x"},
    {__LINE__, std::string("\0dir\\f.x", 8), "", ""},
    // A trailing slash stays on Windows and goes on Linux.
    {__LINE__, "a\\b/c.d", kWindows ? "a\\b/" : "a\\b", "c.d"},
    {__LINE__, " ./run.sh ", kWindows ? "./" : ".", "run.sh"},
    {__LINE__, "/usr/..", "/usr/..", ""},
};

// Outputs start stale and are overwritten. IsFileNameOnly holds exactly when
// the path comes back whole as the file name.
TEST(FileSplitPath, TableAndIsFileNameOnly)
{
    for (const SplitRow& row : kSplitRows) {
        std::string directory = "stale";
        std::string fileName = "stale";
        File::SplitPath(row.path, directory, fileName);
        EXPECT_EQ(directory, row.directory) << "row at line " << row.line;
        EXPECT_EQ(fileName, row.fileName) << "row at line " << row.line;
        EXPECT_EQ(File::IsFileNameOnly(row.path), row.directory.empty() && row.fileName == row.path)
            << "row at line " << row.line;
    }
}

TEST(FileRules, AbsolutePathSeparatorEndOfLine)
{
    for (const char* path : {"\\share", "\\", "\\\\server\\share", "d:", "d:x", "C:\\x"})
        EXPECT_TRUE(File::IsAbsolutePath(path)) << path;
    for (const char* path : {"", "d", ".", "..", "ab", "dir\\x", "x/y", " /usr"})
        EXPECT_FALSE(File::IsAbsolutePath(path)) << path;
    for (const char* path : {"/usr", "/", "//server/share"}) // absolute on Linux only
        EXPECT_EQ(File::IsAbsolutePath(path), !kWindows) << path;
    EXPECT_EQ(File::GetDirectorySeparator(), kWindows ? '\\' : '/');
    EXPECT_EQ(File::GetEndOfLine(), kWindows ? "\r\n" : "\n");
    EXPECT_EQ(File::ExpandPath("%TEMP%\\x"), "%TEMP%\\x");
}

TEST(FileMakePath, Table)
{
    const std::string sep(1, File::GetDirectorySeparator());
    const struct { int line; std::string directory; std::string name; std::string expected; } rows[] = {
        {__LINE__, "C:", "x", "C:x"},
        {__LINE__, "C:\\d\\", "x", "C:\\d\\x"},
        {__LINE__, "", "x", "x"},
        {__LINE__, "C:\\d", "x", "C:\\d" + sep + "x"},
        {__LINE__, "d", "", "d" + sep},
        {__LINE__, ":x", "y", ":x" + sep + "y"},
        {__LINE__, "C:x", "y", "C:x" + sep + "y"},
        {__LINE__, "/usr/", "x", kWindows ? "/usr/\\x" : "/usr/x"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(File::MakePath(row.directory, row.name), row.expected) << "row at line " << row.line;
}

// A fresh directory under the system's temporary directory, removed with
// its contents at the end of the test.
struct ScratchDirectory
{
    ScratchDirectory() { std::filesystem::create_directories(path); }
    ~ScratchDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("zantor-file-test-" + std::to_string(std::random_device()()));
};

TEST(FileQueries, IsFoundAndIsDirectory)
{
    ScratchDirectory scratch;
    const std::string directory = scratch.path.string();
    const std::string file = (scratch.path / "quotes.csv").string();
    std::ofstream(file) << "EUR,1.0842\n";
    const std::string missing = (scratch.path / "missing.csv").string();

    for (const std::string& path : {file, directory, missing, std::string()}) {
        EXPECT_EQ(File::IsFound(path), path == file) << path;
        EXPECT_EQ(File::IsDirectory(path), path == directory) << path;
    }
    // A NUL inside the name must not query the shorter name before it.
    EXPECT_FALSE(File::IsFound(file + std::string(1, '\0') + "x"));
    EXPECT_FALSE(File::IsDirectory(directory + std::string(1, '\0') + "x"));
#if !defined(_WIN32)
    const std::string link = (scratch.path / "link").string(), dangling = (scratch.path / "dangling").string();
    ASSERT_TRUE(::symlink(file.c_str(), link.c_str()) == 0 && ::symlink(missing.c_str(), dangling.c_str()) == 0);
    EXPECT_TRUE(File::IsFound(link));
    EXPECT_FALSE(File::IsFound(dangling) || File::IsDirectory(dangling));
#endif
}

void ExpectPathNotFound(const std::string& path, int line)
{
    try {
        const std::string result = File::MakeAbsolutePath(path);
        ADD_FAILURE() << "row at line " << line << ": no exception, got " << result;
    } catch (const Zantor::StatusCodeException& e) {
        EXPECT_EQ(e.GetCode(), Zantor::STATUS_CODE_PATH_NOT_FOUND) << "row at line " << line;
        EXPECT_STREQ(e.GetFunction(), "Zantor::File::MakeAbsolutePath") << "row at line " << line;
    }
}

#if !defined(_WIN32)

// Relative paths are appended to the current directory.
TEST(FileMakeAbsolutePath, LexicalOnLinux)
{
    const std::string cwd = std::filesystem::current_path().string();
    // The parent of the current directory, lexically.
    const std::string parent = cwd == "/" ? "/" : cwd.substr(0, std::max<std::size_t>(1, cwd.rfind('/')));
    const struct { int line; std::string path; std::string expected; } rows[] = {
        {__LINE__, "a/b", cwd + "/a/b"},
        {__LINE__, "a/./b/../c", cwd + "/a/c"},
        {__LINE__, "x/", cwd + "/x/"},
        {__LINE__, "a\\b", cwd + "/a\\b"},
        {__LINE__, "", cwd},
        {__LINE__, ".", cwd},
        {__LINE__, "/x//y/./z/", "/x/y/z/"},
        {__LINE__, "/x/y/../../..", "/"},
        {__LINE__, "/../a", "/a"},
        {__LINE__, "//", "/"},
        {__LINE__, "/a/...", "/a/..."},
        {__LINE__, " /a", cwd + "/ /a"},
        {__LINE__, "..", parent},
    };
    for (const auto& row : rows)
        EXPECT_EQ(File::MakeAbsolutePath(row.path), row.expected) << "row at line " << row.line;
}

TEST(FileMakeAbsolutePath, FailuresThrowPathNotFound)
{
    ExpectPathNotFound(std::string("a\0b", 3), __LINE__);
    ExpectPathNotFound("/" + std::string(5000, 'a'), __LINE__);
    // Collapsing brings an overlong text back under the limit.
    EXPECT_EQ(File::MakeAbsolutePath("/" + std::string(5000, 'a') + "/../b"), "/b");
}

TEST(FileMakeAbsolutePath, RemovedCurrentDirectoryThrows)
{
    const std::string saved = std::filesystem::current_path().string();
    const std::filesystem::path gone =
        std::filesystem::temp_directory_path() / ("zantor-gone-" + std::to_string(::getpid()));
    std::filesystem::create_directories(gone);
    ASSERT_EQ(::chdir(gone.c_str()), 0);
    std::filesystem::remove(gone);
    ExpectPathNotFound("relative", __LINE__);
    // An absolute path does not need the current directory.
    EXPECT_EQ(File::MakeAbsolutePath("/tmp/./x"), "/tmp/x");
    ASSERT_EQ(::chdir(saved.c_str()), 0);
}

// A current directory longer than PATH_MAX is read all the same, and "..",
// collapsed lexically, brings the result back under the limit.
TEST(FileMakeAbsolutePath, CurrentDirectoryLongerThanPathMax)
{
    const std::string saved = std::filesystem::current_path().string();
    ScratchDirectory scratch;
    ASSERT_EQ(::chdir(scratch.path.c_str()), 0);
    const std::string component(200, 'd');
    std::string up;
    for (int depth = 0; depth < 24; ++depth, up += "../")
        ASSERT_TRUE(::mkdir(component.c_str(), 0700) == 0 && ::chdir(component.c_str()) == 0);
    const std::string result = File::MakeAbsolutePath(up + "x");
    for (int depth = 0; depth < 24; ++depth)
        ASSERT_TRUE(::chdir("..") == 0 && ::rmdir(component.c_str()) == 0);
    ASSERT_EQ(::chdir(saved.c_str()), 0);
    EXPECT_EQ(result, scratch.path.string() + "/x");
}

TEST(FileTemporaryPath, FollowsTmpdir)
{
    const char* value = std::getenv("TMPDIR");
    const std::string saved = value != nullptr ? value : "";
    for (const char* tmpdir : {"/var/tmp/zantor", "", static_cast<const char*>(nullptr)}) { // null: unset
        ASSERT_EQ(tmpdir != nullptr ? ::setenv("TMPDIR", tmpdir, 1) : ::unsetenv("TMPDIR"), 0);
        EXPECT_EQ(File::GetTemporaryPath(), tmpdir != nullptr && *tmpdir != '\0' ? tmpdir : "/tmp");
    }
    if (value != nullptr)
        ::setenv("TMPDIR", saved.c_str(), 1);
}

#else // _WIN32

TEST(FileMakeAbsolutePath, FullPathOnWindows)
{
    EXPECT_EQ(File::MakeAbsolutePath("C:\\a\\..\\b"), "C:\\b");
    EXPECT_EQ(File::MakeAbsolutePath("C:\\a\\.\\b\\"), "C:\\a\\b\\");
    const std::string relative = File::MakeAbsolutePath("does-not-exist.txt");
    EXPECT_TRUE(File::IsAbsolutePath(relative)) << relative;
    EXPECT_EQ(relative.substr(relative.size() - 19), "\\does-not-exist.txt");
    ExpectPathNotFound("C:\\" + std::string(300, 'a'), __LINE__);
    ExpectPathNotFound(std::string("a\0b", 3), __LINE__);
}

// GetTemporaryPath gives what the system gives, which follows TMP; the
// system ends the directory with a backslash whether TMP has one or not.
TEST(FileTemporaryPath, FollowsTmp)
{
    ScratchDirectory scratch;
    const std::string directory = scratch.path.string();
    char saved[1024] = {};
    const DWORD savedLength = GetEnvironmentVariableA("TMP", saved, sizeof saved);
    for (const std::string& tmp : {directory, directory + "\\"}) {
        ASSERT_TRUE(SetEnvironmentVariableA("TMP", tmp.c_str()));
        const std::string path = File::GetTemporaryPath();
        SetEnvironmentVariableA("TMP", savedLength > 0 && savedLength < sizeof saved ? saved : nullptr);
        EXPECT_EQ(path, directory + "\\") << "TMP " << tmp;
    }
}

#endif // _WIN32

} // namespace
