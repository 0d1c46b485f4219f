// Throw locations for ZANTOR_THROW (Exception.h): the compile-time reduction
// of the compiler's function signature to a fully qualified function name,
// and the function that builds and throws an exception with its location.
// Nothing here is meant to be called directly; use ZANTOR_THROW.
//
// The name is computed at compile time into static storage, one array per
// throw site, so an exception can keep a plain `const char*` to it:
//   "virtual std::string Zantor::Foo::Bar(int) const"   gives "Zantor::Foo::Bar"
//   "Zantor::Box<T>::Box() [with T = int]"             gives "Zantor::Box<T>::Box"
//   "bool Zantor::Foo::operator<(const Zantor::Foo&)"  gives "Zantor::Foo::operator<"
//   "Zantor::Foo::operator const char*() const"        gives "Zantor::Foo::operator const char*"
// The return type, storage-class and calling-convention words (static,
// virtual, __cdecl, __stdcall, __thiscall, __attribute__((...))), the
// parameters, cv/ref qualifiers and the template-argument list that GCC and
// clang append ("[with T = int]", "[T = int]") are dropped; namespaces,
// class-template arguments as the compiler prints them, "{anonymous}" and
// "(anonymous namespace)" are kept. Inside a lambda the name is that of the
// enclosing function.
#pragma once

#include <boost/exception/exception.hpp>
#include <boost/exception/info.hpp>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

#if defined(__GNUC__) || defined(__clang__)
#  define ZANTOR_DETAIL_PRETTY_FUNCTION __PRETTY_FUNCTION__
#elif defined(_MSC_VER)
#  define ZANTOR_DETAIL_PRETTY_FUNCTION __FUNCSIG__
#else
#  define ZANTOR_DETAIL_PRETTY_FUNCTION __func__
#endif

namespace Zantor::Detail {

// [begin, end) of the function name inside a signature.
struct FunctionNameRange
{
    std::size_t begin;
    std::size_t end;
};

constexpr bool IsIdentifierCharacter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$';
}

// True when the whole word `word` starts at `position`.
constexpr bool IsWordAt(std::string_view text, std::size_t position, std::string_view word) noexcept
{
    if (text.substr(position, word.size()) != word)
        return false;
    if (position > 0 && IsIdentifierCharacter(text[position - 1]))
        return false;
    const std::size_t after = position + word.size();
    return after >= text.size() || !IsIdentifierCharacter(text[after]);
}

// True when the word ending right before `position` is `word`.
constexpr bool IsWordBefore(std::string_view text, std::size_t position, std::string_view word) noexcept
{
    return position >= word.size() && IsWordAt(text, position - word.size(), word);
}

// Index just past the bracket group that opens at `open` ('(', '<', '[' or
// '{'); the end of the text when the group is not closed. Angle brackets
// nest only inside angle brackets, so "(1 < 2)" is one group.
constexpr std::size_t SkipBracketGroup(std::string_view text, std::size_t open) noexcept
{
    const char opening = text[open];
    const char closing = opening == '(' ? ')' : opening == '<' ? '>' : opening == '[' ? ']' : '}';
    std::size_t position = open + 1;
    while (position < text.size())
    {
        const char c = text[position];
        if (c == closing)
            return position + 1;
        if (c == '(' || c == '[' || c == '{' || (c == '<' && opening == '<'))
            position = SkipBracketGroup(text, position);
        else
            ++position;
    }
    return position;
}

constexpr std::size_t TrimTrailingBlanks(std::string_view text, std::size_t begin, std::size_t end) noexcept
{
    while (end > begin && text[end - 1] == ' ')
        --end;
    return end;
}

// The name after the word "operator" at `position`, which ends where the
// parameter list opens.
constexpr FunctionNameRange FindOperatorName(std::string_view text, std::size_t begin, std::size_t position) noexcept
{
    position += 8; // "operator"
    if (position < text.size() && text[position] == ' ')
    {
        // Conversion function, new or delete: the type may hold templates.
        while (position < text.size() && text[position] != '(')
        {
            if (text[position] == '<')
                position = SkipBracketGroup(text, position);
            else
                ++position;
        }
    }
    else
    {
        if (text.substr(position, 2) == "()" || text.substr(position, 2) == "[]")
            position += 2;
        while (position < text.size() && text[position] != '(')
            ++position;
    }
    return {begin, TrimTrailingBlanks(text, begin, position)};
}

// Finds the fully qualified function name inside a GCC/clang/MSVC function
// signature. A text without a parameter list is returned whole.
constexpr FunctionNameRange FindFunctionName(std::string_view text) noexcept
{
    std::size_t begin = 0;
    std::size_t position = 0;
    while (position < text.size())
    {
        const char c = text[position];
        if (c == ' ' || c == '*' || c == '&')
        {
            // Ends the return type or a specifier such as static or __cdecl.
            begin = ++position;
        }
        else if (c == '<' || c == '[' || c == '{')
        {
            // Template arguments, or GCC's "{anonymous}" namespace.
            position = SkipBracketGroup(text, position);
        }
        else if (c == '(')
        {
            const std::string_view inside = text.substr(position + 1);
            std::size_t next = position + 1;
            while (next < text.size() && text[next] == ' ')
                ++next;
            if (inside.starts_with("anonymous") || inside.starts_with("unnamed") || inside.starts_with("lambda"))
            {
                // clang's "(anonymous namespace)" belongs to the name.
                position = SkipBracketGroup(text, position);
            }
            else if (IsWordBefore(text, position, "__attribute__") || IsWordBefore(text, position, "__declspec") ||
                     IsWordBefore(text, position, "decltype"))
            {
                begin = position = SkipBracketGroup(text, position);
            }
            else if (next < text.size() && (text[next] == '*' || text[next] == '&' || text[next] == '^'))
            {
                // "void (*Zantor::F())(int)": a function returning a function pointer.
                begin = position = next;
            }
            else
            {
                const std::size_t end = TrimTrailingBlanks(text, begin, position);
                return begin < end ? FunctionNameRange{begin, end} : FunctionNameRange{0, text.size()};
            }
        }
        else if (c == 'o' && IsWordAt(text, position, "operator"))
        {
            return FindOperatorName(text, begin, position);
        }
        else
        {
            ++position;
        }
    }
    return {0, text.size()};
}

// A function name in static storage, sized like the signature it came from.
template <std::size_t Size>
struct FunctionName
{
    char text[Size];
};

template <std::size_t Size>
constexpr FunctionName<Size> MakeFunctionName(const char (&signature)[Size]) noexcept
{
    FunctionName<Size> result{};
    const std::string_view text(signature, Size - 1);
    const FunctionNameRange range = FindFunctionName(text);
    for (std::size_t index = range.begin; index < range.end; ++index)
        result.text[index - range.begin] = signature[index];
    return result;
}

// Builds and throws Type at a location:
// - message exceptions (Type derives from boost::exception): Type(args...)
//   with boost's throw location (file, function, line) set;
// - located exceptions: Type(file, function, line, args...);
// - anything else: Type(args...), the location is not recorded.
template <typename Type, typename... Args>
[[noreturn]] void ThrowAt(const char* file, const char* function, int line, Args&&... args)
{
    if constexpr (std::is_base_of_v<boost::exception, Type>)
    {
        Type exception(std::forward<Args>(args)...);
        exception << boost::throw_function(function) << boost::throw_file(file) << boost::throw_line(line);
        throw exception;
    }
    else if constexpr (std::is_constructible_v<Type, const char*, const char*, std::uint32_t, Args...>)
    {
        throw Type(file, function, static_cast<std::uint32_t>(line), std::forward<Args>(args)...);
    }
    else
    {
        throw Type(std::forward<Args>(args)...);
    }
}

} // namespace Zantor::Detail
