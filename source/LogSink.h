// Private to the library: the platform part of the default log and alert
// printers (source/<platform>/LogSink.cpp). The printers themselves, with the
// choice of stream and severity, are portable (source/LogMessage.cpp).
#pragma once

#include <cstdio>

namespace Zantor::Detail {

// Severity of a message in the system log.
enum class SystemLogSeverity
{
    Information,
    Warning,
    Error
};

// True when the process has a console to print to.
bool HasConsole();

// Writes "hh:mm:ss message\n" stamped with the local time to stream and
// flushes it.
void PrintConsoleLine(std::FILE* stream, const char* message);

// Writes message to the system log with the program's base name. A message
// that cannot be written is dropped.
void WriteSystemLog(SystemLogSeverity severity, const char* message);

} // namespace Zantor::Detail
