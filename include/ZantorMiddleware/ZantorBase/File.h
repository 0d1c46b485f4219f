// File: static path operations (split a path into directory and file name,
// join a directory and a name, make a path absolute) and small queries about
// paths and the file system. All take and return std::string by value;
// nothing is owned.
//
// Thread safety: every operation may be called from any thread. The results
// of MakeAbsolutePath depend on the process's current directory, and
// GetTemporaryPath on the environment, so they change when those do.
//
//   std::string directory, fileName;
//   File::SplitPath(" C:\\dir\\sub\\name.ext ", directory, fileName);
//   // directory == "C:\\dir\\sub", fileName == "name.ext"
//
// Platforms. The rules below hold on both; where Linux differs it says so.
// - Both the backslash and the slash separate directories in SplitPath on
//   both platforms, and a leading "X:" is a drive, so backslash paths split
//   the same on Linux as on Windows.
// - Windows: the separator is '\\', the end of line "\r\n"; MakePath inserts
//   '\\'; a leading '/' does not make a path absolute.
// - Linux: the separator is '/', the end of line "\n"; MakePath inserts '/'
//   and inserts nothing when the directory already ends in '/' or '\\'; a
//   leading '/' makes a path absolute; SplitPath also removes a trailing '/'
//   from a directory longer than one character, so "/usr/lib/x.so" gives
//   "/usr/lib" (on Windows "C:/a/b.txt" keeps "C:/a/").
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>

#include <string>

namespace Zantor {

class ZANTOR_BASE_API File
{
public:
    // The directory separator: '\\' on Windows, '/' on Linux.
    static char GetDirectorySeparator();

    // The platform's end of line ("\r\n" on Windows, "\n" on Linux), made on
    // first use; the reference lives for the whole process.
    static const std::string& GetEndOfLine();

    // True for a path that starts with '\\' (such as "\\share") or whose
    // second character is ':' (such as "d:" or "d:x"); false for the empty
    // path and for any path of one character other than "\\". On Linux a path
    // that starts with '/' is absolute as well; on Windows it is not.
    static bool IsAbsolutePath(const std::string& path);

    // True when SplitPath gives back the whole path as the file name (an
    // empty directory and a file name equal to path): "name.ext" is, " x",
    // "." and "C:x" are not. The empty path gives itself back, so it is.
    static bool IsFileNameOnly(const std::string& path);

    // Joins a directory and a name: name when directory is empty; directory
    // followed directly by name for a bare drive ("C:" + "x" = "C:x");
    // otherwise directory, the separator unless directory already ends in
    // one, and name ("C:\\d\\" + "x" = "C:\\d\\x").
    static std::string MakePath(const std::string& directory, const std::string& name);

    // Returns the absolute form of path, relative paths taken from the current
    // directory (the empty path gives the current directory); the path need
    // not exist. Both platforms work lexically, without touching the disk.
    // Windows: _fullpath into 260 characters.
    // Linux: a relative path is appended to getcwd(), then empty and "."
    // components are dropped and ".." removes the component before it
    // ("/.." is "/"); symbolic links are not resolved. Only '/' separates
    // components here ('\\' is an ordinary file-name character on Linux). A
    // trailing '/' is kept, as _fullpath keeps a trailing '\\'.
    // Throws StatusCodeException(STATUS_CODE_PATH_NOT_FOUND) when the path
    // contains a NUL character, the current directory cannot be read (it was
    // removed, say), or the result does not fit the system's path length
    // (259 characters on Windows, PATH_MAX - 1 on Linux).
    static std::string MakeAbsolutePath(const std::string& path);

    // Returns path unchanged.
    static std::string ExpandPath(const std::string& path);

    // The temporary directory. Windows: GetTempPathA (with its trailing
    // backslash), "C:\\WINDOWS\\Temp" when the system gives none. Linux: the
    // TMPDIR environment variable when it is set and not empty, else "/tmp";
    // the text is returned as it is.
    static std::string GetTemporaryPath();

    // Splits path (white space removed at both ends) into its directory and
    // its file name (base name and extension). An empty or blank path clears
    // both; "." and ".." (and a path ending in one, like "C:\\dir\\..") are
    // all directory with an empty file name. The directory loses a trailing
    // backslash unless it is a root ("C:\\a\\b.txt" -> "C:\\a"; "C:\\b.txt"
    // -> "C:\\"). A zero character ends the path, as it does for every
    // system call: "dir/a\0/b" splits as "dir/a" does. Never fails; fills both
    // outputs.
    static void SplitPath(const std::string& path, std::string& directory, std::string& fileName);

    // True when path names an existing regular file (symbolic links are
    // followed); a directory is not "found". False when the path cannot be
    // queried.
    static bool IsFound(const std::string& path);

    // True when path names an existing directory; false when it cannot be
    // queried.
    static bool IsDirectory(const std::string& path);
};

} // namespace Zantor
