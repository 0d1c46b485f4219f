// The located exceptions: chain ownership, the stream report and the texts
// of the subclasses' codes.
#include <ZantorMiddleware/ZantorBase/Exception.h>

#include <ZantorMiddleware/ZantorBase/File.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>

namespace Zantor {

namespace {

const char* TextOrEmpty(const char* text) noexcept
{
    return text != nullptr ? text : "";
}

// Writes x's chain tail first, each followed by a newline, then x's report.
void WriteTailFirst(std::ostream& stream, const Exception& x)
{
    if (x.GetNext() != nullptr)
    {
        WriteTailFirst(stream, *x.GetNext());
        stream << std::endl;
    }
    x.ToStream(stream);
}

constexpr const char* kBaseExceptionTexts[] = {
    "invalid registry value type",
    "failed to allocate shared mutex",
    "failed to allocate private mutex",
    "failed to initialize private mutex",
    "failed to allocate shared event",
    "failed to allocate private event",
    "failed to allocate shared semaphore",
    "failed to allocate private semaphore",
    "failed to allocate version",
    "failed to allocate shared memory",
    "failed to allocate metered section",
    "failed to allocate Uuid",
    "thread already started",
};
static_assert(std::size(kBaseExceptionTexts) == BaseException::THREAD_ALREADY_STARTED + 1);

} // namespace

Exception::Exception(const char* file, const char* function, std::uint32_t line, std::uint32_t code) noexcept
    : m_file(file), m_function(function), m_line(line), m_code(code), m_next(nullptr)
{
}

Exception::Exception(const Exception& other) noexcept
    : m_file(other.m_file), m_function(other.m_function), m_line(other.m_line), m_code(other.m_code),
      m_next(other.m_next)
{
    other.m_next = nullptr;
}

Exception& Exception::operator=(const Exception& other) noexcept
{
    if (this != &other)
    {
        DeleteChain();
        m_file = other.m_file;
        m_function = other.m_function;
        m_line = other.m_line;
        m_code = other.m_code;
        m_next = other.m_next;
        other.m_next = nullptr;
    }
    return *this;
}

Exception::~Exception()
{
    DeleteChain();
}

void Exception::DeleteChain() const noexcept
{
    // Unlinks one exception at a time, so a long chain does not recurse.
    while (m_next != nullptr)
    {
        Exception* head = m_next;
        m_next = head->m_next;
        head->m_next = nullptr;
        delete head;
    }
}

std::string Exception::ToString() const
{
    return std::string();
}

void Exception::ToStream(std::ostream& stream) const
{
    std::string directory;
    std::string fileName;
    File::SplitPath(TextOrEmpty(m_file), directory, fileName);
    // Composed first and written unformatted, so the line is in decimal and
    // nothing is padded whatever flags, width or locale the stream carries.
    // A width set for this insertion is used up, as by any inserter.
    stream.width(0);
    std::string line = fileName;
    line += ':';
    line += TextOrEmpty(m_function);
    line += ':';
    line += std::to_string(m_line);
    line += " - ";
    line += ToString();
    stream.write(line.data(), static_cast<std::streamsize>(line.size()));
    if (m_next == nullptr)
        return;

    static constexpr char via[] = " via:";
    stream.write(via, sizeof via - 1);
    stream << std::endl;
    const Exception& head = *m_next;
    if (head.m_next != nullptr)
    {
        WriteTailFirst(stream, *head.m_next);
        stream << std::endl;
    }
    head.ToStream(stream);
}

void Exception::AddException(Exception* e) const
{
    if (e == nullptr)
        return;
    if (m_next != nullptr)
    {
        e->DeleteChain();
        e->m_next = m_next;
    }
    m_next = e;
}

std::ostream& operator<<(std::ostream& stream, const Exception& e)
{
    e.ToStream(stream);
    return stream;
}

std::string StatusCodeException::ToString() const
{
    const std::uint32_t code = GetCode();
    if (code <= 0xFF)
        return StatusCodeToString(static_cast<unsigned char>(code));
    char text[32];
    std::snprintf(text, sizeof text, "status code %u", static_cast<unsigned>(code));
    return text;
}

std::string OsException::ToString() const
{
    return OsErrorToString(GetCode());
}

std::string CrtException::ToString() const
{
    // The runtimes of both platforms keep strerror's text per thread (or
    // constant), so this is safe while other threads call it.
    const char* text = std::strerror(static_cast<int>(GetCode()));
    return text != nullptr ? std::string(text) : std::string();
}

std::string BaseException::ToString() const
{
    const std::uint32_t code = GetCode();
    if (code < std::size(kBaseExceptionTexts))
        return kBaseExceptionTexts[code];
    return "unknown error";
}

} // namespace Zantor
