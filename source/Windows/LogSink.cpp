// The default log and alert printers on Windows: a time-stamped line on the
// console when the process has one, the Windows event log otherwise.
#include "FilePathRules.h"
#include "LogSink.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace Zantor::Detail {

namespace {

// Reads a string value under HKEY_LOCAL_MACHINE. False when the key or the
// value is missing, unreadable, not a string or empty.
bool ReadMachineString(const char* keyName, const char* valueName, std::string& value)
{
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, keyName, 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    bool found = false;
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExA(key, valueName, nullptr, &type, nullptr, &size) == ERROR_SUCCESS
        && (type == REG_SZ || type == REG_EXPAND_SZ) && size > 0) {
        std::vector<char> buffer(static_cast<std::size_t>(size) + 1, '\0');
        DWORD read = size;
        if (RegQueryValueExA(key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &read)
                == ERROR_SUCCESS
            && read <= size) {
            buffer[read] = '\0';
            value = buffer.data();
            found = !value.empty();
        }
    }
    RegCloseKey(key);
    return found;
}

// The name the event log knows the middleware by: the "EventLogName" value
// of the shared configuration key, else of the middleware's own key, else
// "ZANTOR".
std::string GetEventLogName()
{
    std::string name = "ZANTOR";
    std::string value;
    if (ReadMachineString("SOFTWARE\\Pellmont\\Common", "EventLogName", value)
        || ReadMachineString("SOFTWARE\\ZANTOR", "EventLogName", value))
        name = value;
    return name;
}

// The executable's file name without directory and extension. The module
// path may hold up to 260 characters, more than the runtime splitter's
// directory buffer takes, so the library's own splitter (same results, no
// length limits) breaks it up.
std::string GetProgramBaseName()
{
    // One spare character keeps a truncated name terminated.
    char path[MAX_PATH + 1] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    return SplitPathParts(path).baseName;
}

// Created once per process; the handle stays registered until the process
// ends. A null source means messages without a console are dropped.
struct EventLogState
{
    HANDLE source = nullptr;
    std::string programName;
};

const EventLogState& GetEventLogState()
{
    // Never destroyed: a message logged by a destructor at exit still finds it.
    static const EventLogState& state = *[] {
        EventLogState created;
        const std::string eventLogName = GetEventLogName();
        created.programName = GetProgramBaseName();
        const std::string keyName = "SYSTEM\\CurrentControlSet\\Services\\Eventlog\\" + eventLogName;
        HKEY key = nullptr;
        DWORD disposition = 0;
        if (RegCreateKeyExA(HKEY_LOCAL_MACHINE, keyName.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                            KEY_ALL_ACCESS, nullptr, &key, &disposition) == ERROR_SUCCESS) {
            RegCloseKey(key);
            created.source = RegisterEventSourceA(nullptr, eventLogName.c_str());
        }
        return new EventLogState(std::move(created));
    }();
    return state;
}

} // namespace

bool HasConsole()
{
    return GetConsoleWindow() != nullptr;
}

void PrintConsoleLine(std::FILE* stream, const char* message)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::fprintf(stream, "%02d:%02d:%02d %s\n", static_cast<int>(now.wHour), static_cast<int>(now.wMinute),
                 static_cast<int>(now.wSecond), message);
    std::fflush(stream);
}

// One event with two insertion strings, the program's base name and the
// message; category 0, event id 0, no user, no binary data.
void WriteSystemLog(SystemLogSeverity severity, const char* message)
{
    const EventLogState& state = GetEventLogState();
    if (state.source == nullptr)
        return;
    WORD eventType = EVENTLOG_INFORMATION_TYPE;
    if (severity == SystemLogSeverity::Warning)
        eventType = EVENTLOG_WARNING_TYPE;
    else if (severity == SystemLogSeverity::Error)
        eventType = EVENTLOG_ERROR_TYPE;
    LPCSTR strings[2] = {state.programName.c_str(), message};
    ReportEventA(state.source, eventType, 0, 0, nullptr, 2, 0, strings, nullptr);
}

} // namespace Zantor::Detail
