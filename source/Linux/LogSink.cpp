// The default log and alert printers on Linux: a time-stamped line on the
// console when standard error is a real output, the system log otherwise.
#include "LogSink.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace Zantor::Detail {

namespace {

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

// The library's own connection to the system log: a datagram socket to
// /dev/log carrying lines "<PRI>Mmm dd hh:mm:ss ZANTOR[pid]: program: message"
// as syslog(3) writes them. It is not openlog/syslog because those are
// process-wide: the library would replace the application's own syslog
// identity. Its descriptor is kept above 2, so it never becomes the standard
// error of a process that closed it. Created on first use and never
// destroyed, as other threads may still log while the process exits.
class SystemLog
{
public:
    // Sends one line; reconnects once when the log daemon was restarted.
    // A line that cannot be sent is dropped.
    void Send(int priority, const char* message)
    {
        const std::string line = Format(priority, message);
        const std::lock_guard<std::mutex> lock(mutex_);
        for (int attempt = 0; attempt < 2; ++attempt)
        {
            if (socket_ < 0 && !Connect())
                return;
            // Never wait for a log daemon that stops reading: the line is dropped.
            if (::send(socket_, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
                return;
            if (errno == EMSGSIZE || errno == ENOBUFS || errno == EAGAIN)
                return; // too long or no room: the connection itself is fine
            ::close(socket_);
            socket_ = -1;
        }
    }

private:
    bool Connect()
    {
        int descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (descriptor >= 0 && descriptor <= STDERR_FILENO)
        {
            const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            ::close(descriptor);
            descriptor = moved;
        }
        if (descriptor < 0)
            return false;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, _PATH_LOG, sizeof address.sun_path - 1);
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        {
            ::close(descriptor);
            return false;
        }
        socket_ = descriptor;
        return true;
    }

    std::string Format(int priority, const char* message) const
    {
        static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        const std::time_t now = std::time(nullptr);
        struct tm local {};
        if (::localtime_r(&now, &local) == nullptr)
            local = tm{};
        char header[64];
        std::snprintf(header, sizeof header, "<%d>%s %2d %02d:%02d:%02d %s[%d]: ", LOG_USER | priority,
                      kMonths[static_cast<unsigned>(local.tm_mon) % 12], local.tm_mday, local.tm_hour,
                      local.tm_min, local.tm_sec, kIdentity, static_cast<int>(::getpid()));
        std::string line(header);
        line += programName_;
        line += ": ";
        line += message;
        return line;
    }

    // The name the system log knows the middleware by.
    static constexpr const char* kIdentity = "ZANTOR";

    const std::string programName_ = GetProgramBaseName();
    std::mutex mutex_;
    int socket_ = -1;
};

SystemLog& GetSystemLog()
{
    static SystemLog* const log = new SystemLog;
    return *log;
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
    try
    {
        GetSystemLog().Send(priority, message);
    }
    catch (const std::exception&)
    {
        // Out of memory or no thread resources: the message is lost, as any
        // message the system log cannot take.
    }
}

} // namespace Zantor::Detail
