// The default log and alert printers on Linux: a time-stamped line on the
// console when standard error is a real output, syslog(3) otherwise.
#include "LogSink.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace Zantor::Detail {

namespace {

// The name the system log knows the middleware by.
std::string GetEventLogName()
{
    return "ZANTOR";
}

// The executable's file name without directory and extension.
std::string GetProgramBaseName()
{
    std::string name;
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (length > 0) {
        name.assign(buffer, static_cast<std::size_t>(length));
        static constexpr char deleted[] = " (deleted)";
        constexpr std::size_t deletedLength = sizeof deleted - 1;
        if (name.size() > deletedLength && name.compare(name.size() - deletedLength, deletedLength, deleted) == 0)
            name.resize(name.size() - deletedLength);
        const std::size_t slash = name.rfind('/');
        if (slash != std::string::npos)
            name.erase(0, slash + 1);
    }
    if (name.empty() && program_invocation_short_name != nullptr)
        name = program_invocation_short_name;
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0)
        name.resize(dot);
    return name;
}

// Created on first use and never destroyed: openlog keeps a pointer to the
// identity, and other threads may still log while the process exits.
struct SystemLogState
{
    std::string identity;
    std::string programName;
};

const SystemLogState& GetSystemLogState()
{
    static const SystemLogState* const state = [] {
        auto* created = new SystemLogState{GetEventLogName(), GetProgramBaseName()};
        ::openlog(created->identity.c_str(), LOG_PID, LOG_USER);
        return created;
    }();
    return *state;
}

struct NullDevice
{
    bool valid = false;
    struct stat status {};
};

const NullDevice& GetNullDevice()
{
    static const NullDevice device = [] {
        NullDevice result;
        result.valid = ::stat("/dev/null", &result.status) == 0;
        return result;
    }();
    return device;
}

} // namespace

// True when descriptor is a datagram socket connected to the system log.
// When a process closes its standard error, the socket syslog(3) opens on
// first use takes descriptor 2: that is no console, and writing the console
// line into it would corrupt the log.
bool IsSystemLogSocket(int descriptor)
{
    int type = 0;
    socklen_t typeLength = sizeof type;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &typeLength) != 0 || type != SOCK_DGRAM)
        return false;
    sockaddr_un peer{};
    socklen_t peerLength = sizeof peer;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &peerLength) != 0 || peer.sun_family != AF_UNIX)
        return false;
    return std::strncmp(peer.sun_path, _PATH_LOG, sizeof peer.sun_path) == 0;
}

// True when standard error is an open descriptor that does not lead to
// /dev/null (the same node, or another node of the same character device)
// and is not the system log's own socket.
bool HasConsole()
{
    struct stat status {};
    if (::fstat(STDERR_FILENO, &status) != 0)
        return false;
    if (S_ISSOCK(status.st_mode) && IsSystemLogSocket(STDERR_FILENO))
        return false;
    const NullDevice& null = GetNullDevice();
    if (!null.valid)
        return true;
    if (status.st_dev == null.status.st_dev && status.st_ino == null.status.st_ino)
        return false;
    if (S_ISCHR(status.st_mode) && S_ISCHR(null.status.st_mode) && status.st_rdev == null.status.st_rdev)
        return false;
    return true;
}

void PrintConsoleLine(std::FILE* stream, const char* message)
{
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    if (::localtime_r(&now, &local) == nullptr)
        local = tm{};
    std::fprintf(stream, "%02d:%02d:%02d %s\n", local.tm_hour, local.tm_min, local.tm_sec, message);
    std::fflush(stream);
}

void WriteSystemLog(SystemLogSeverity severity, const char* message)
{
    int priority = LOG_INFO;
    if (severity == SystemLogSeverity::Warning)
        priority = LOG_WARNING;
    else if (severity == SystemLogSeverity::Error)
        priority = LOG_ERR;
    const SystemLogState& state = GetSystemLogState();
    ::syslog(priority, "%s: %s", state.programName.c_str(), message);
}

} // namespace Zantor::Detail
