// The default log and alert printers on Linux: a time-stamped line on the
// console when standard error is a real output, syslog(3) otherwise.
#include <ZantorMiddleware/ZantorBase/LogMessage.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <string>

#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace Zantor {

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

// True when standard error is an open descriptor that does not lead to
// /dev/null (the same node, or another node of the same character device).
bool HasConsole()
{
    struct stat status {};
    if (::fstat(STDERR_FILENO, &status) != 0)
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

void PrintLine(std::FILE* stream, const char* message)
{
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    if (::localtime_r(&now, &local) == nullptr)
        local = tm{};
    std::fprintf(stream, "%02d:%02d:%02d %s\n", local.tm_hour, local.tm_min, local.tm_sec, message);
    std::fflush(stream);
}

void WriteSystemLog(int priority, const char* message)
{
    const SystemLogState& state = GetSystemLogState();
    ::syslog(priority, "%s: %s", state.programName.c_str(), message);
}

} // namespace

void PrintfLogMessage(unsigned char logType, const char* message)
{
    if (message == nullptr)
        message = "";
    if (HasConsole()) {
        PrintLine(logType == LOG_TYPE_ERROR ? stderr : stdout, message);
        return;
    }
    int priority = LOG_INFO;
    if (logType == LOG_TYPE_WARNING)
        priority = LOG_WARNING;
    else if (logType == LOG_TYPE_ERROR)
        priority = LOG_ERR;
    WriteSystemLog(priority, message);
}

void PrintfAlertMessage(unsigned char, std::uint32_t, const char* message)
{
    if (message == nullptr)
        message = "";
    if (HasConsole()) {
        PrintLine(stderr, message);
        return;
    }
    WriteSystemLog(LOG_ERR, message);
}

} // namespace Zantor
