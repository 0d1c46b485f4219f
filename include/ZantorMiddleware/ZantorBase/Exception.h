// The located exceptions: each records the source file, the fully qualified
// function name and the line of its throw, plus one code whose meaning
// depends on the class (a status code, a Win32 error number, an errno value,
// or one of BaseException's internal messages). Further exceptions can be
// chained onto one ("via"); the report is written to a stream, not through
// what(). Throw them with ZANTOR_THROW, which fills in the location.
//
// Ownership: file and function are not owned and must have static storage
// (ZANTOR_THROW passes __FILE__ and a static name). An exception owns its
// chain; copying transfers the chain to the copy, so exactly one object owns
// it while the exception is copied during throwing.
//
// Thread safety: an exception object belongs to one thread at a time.
//
//   ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
//   catch (const Exception& e) { std::cerr << e << '\n'; }
//   // File.cpp:Zantor::File::MakeAbsolutePath:114 - path not found
#pragma once

#include <ZantorMiddleware/ZantorBase/Detail/ThrowLocation.h>
#include <ZantorMiddleware/ZantorBase/Export.h>

#include <cstdint>
#include <iosfwd>
#include <string>

// Throws Type with the location of the statement: ZANTOR_THROW(Type, args...).
// Located exceptions are built as Type(__FILE__, name, __LINE__, args...);
// message exceptions (deriving from boost::exception) as Type(args...) with
// boost's throw_file, throw_function and throw_line set. The name is the
// enclosing function's fully qualified name ("Zantor::File::MakeAbsolutePath"),
// computed at compile time into static storage.
//   ZANTOR_THROW(StatusCodeException, STATUS_CODE_PATH_NOT_FOUND);
//   ZANTOR_THROW(OsException, GetLastOsError());
//   ZANTOR_THROW(LogMessageException, LOG_TYPE_ERROR, "queue is full");
#define ZANTOR_THROW(Type, ...)                                                             \
    do                                                                                      \
    {                                                                                       \
        static constexpr auto zantorThrowFunctionName =                                     \
            ::Zantor::Detail::MakeFunctionName(ZANTOR_DETAIL_PRETTY_FUNCTION);              \
        ::Zantor::Detail::ThrowAt<Type>(__FILE__, zantorThrowFunctionName.text,             \
                                        __LINE__ __VA_OPT__(, ) __VA_ARGS__);               \
    } while (false)

namespace Zantor {

// Root of the located family. Its own ToString() is empty.
class ZANTOR_BASE_API Exception
{
public:
    // The chain starts empty. Never throws.
    Exception(const char* file, const char* function, std::uint32_t line, std::uint32_t code) noexcept;

    // Takes the source's chain: afterwards the source's chain is empty.
    Exception(const Exception& other) noexcept;

    // Deletes this object's chain and takes the source's (the source's chain
    // becomes empty); the location and code are copied.
    Exception& operator=(const Exception& other) noexcept;

    // Deletes the whole chain.
    virtual ~Exception();

    // The text of the code; the empty string for Exception itself.
    virtual std::string ToString() const;

    // Writes the report: "<file name>:<function>:<line> - <ToString()>",
    // without a newline, the file name stripped of its directory and the line
    // in decimal whatever flags, width or locale the stream carries. With a
    // chain, " via:", a newline and the chained exceptions follow: those
    // behind the chain's head tail first, each followed by a newline, then the
    // head's own report, which repeats the exceptions behind the head. For
    // an exception to which e1 and then e2 were added, the lines are:
    //   outer line via:
    //   e1 line
    //   e2 line via:
    //   e1 line
    virtual void ToStream(std::ostream& stream) const;

    // Takes ownership of e (allocated with new); null is ignored. e becomes
    // the head of the chain; when a chain exists, e's link is set to the old
    // head (an own chain e carried is then deleted). e must not already be
    // in this chain.
    void AddException(Exception* e) const;

    const char* GetFile() const noexcept { return m_file; }
    const char* GetFunction() const noexcept { return m_function; }
    std::uint32_t GetLine() const noexcept { return m_line; }
    std::uint32_t GetCode() const noexcept { return m_code; }
    // The head of the chain, null when there is none; still owned by this.
    const Exception* GetNext() const noexcept { return m_next; }

private:
    void DeleteChain() const noexcept;

    const char* m_file;
    const char* m_function;
    std::uint32_t m_line;
    std::uint32_t m_code;
    mutable Exception* m_next;
};

// Writes e.ToStream(stream).
ZANTOR_BASE_API std::ostream& operator<<(std::ostream& stream, const Exception& e);

// The code is a StatusCode. ToString() gives StatusCodeToString(code); a code
// above 255 (not a status code) gives "status code %u" with the full value.
class ZANTOR_BASE_API StatusCodeException : public Exception
{
public:
    using Exception::Exception;
    std::string ToString() const override;
};

// The code is a Win32 error number (GetLastOsError()). ToString() gives
// OsErrorToString(code).
class ZANTOR_BASE_API OsException : public Exception
{
public:
    using Exception::Exception;
    std::string ToString() const override;
};

// The code is a runtime library errno value. ToString() gives the runtime's
// strerror text for it.
class ZANTOR_BASE_API CrtException : public Exception
{
public:
    using Exception::Exception;
    std::string ToString() const override;
};

// The code is one of the library's internal failures below. ToString() gives
// its text; any code of 13 or more gives "unknown error".
class ZANTOR_BASE_API BaseException : public Exception
{
public:
    enum : std::uint32_t
    {
        INVALID_REGISTRY_VALUE_TYPE = 0,      // "invalid registry value type"
        SHARED_MUTEX_ALLOCATION = 1,          // "failed to allocate shared mutex"
        PRIVATE_MUTEX_ALLOCATION = 2,         // "failed to allocate private mutex"
        PRIVATE_MUTEX_INITIALIZATION = 3,     // "failed to initialize private mutex"
        SHARED_EVENT_ALLOCATION = 4,          // "failed to allocate shared event"
        PRIVATE_EVENT_ALLOCATION = 5,         // "failed to allocate private event"
        SHARED_SEMAPHORE_ALLOCATION = 6,      // "failed to allocate shared semaphore"
        PRIVATE_SEMAPHORE_ALLOCATION = 7,     // "failed to allocate private semaphore"
        VERSION_ALLOCATION = 8,               // "failed to allocate version"
        SHARED_MEMORY_ALLOCATION = 9,         // "failed to allocate shared memory"
        METERED_SECTION_ALLOCATION = 10,      // "failed to allocate metered section"
        UUID_ALLOCATION = 11,                 // "failed to allocate Uuid"
        THREAD_ALREADY_STARTED = 12,          // "thread already started"
    };

    using Exception::Exception;
    std::string ToString() const override;
};

} // namespace Zantor
