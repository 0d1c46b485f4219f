// ZANTOR_BASE_API marks what libZantorBase exports. The library is built with
// hidden visibility, so everything without the mark stays internal. Define
// ZANTOR_BASE_STATIC when linking the static library.
#pragma once

#if defined(ZANTOR_BASE_STATIC)
#  define ZANTOR_BASE_API
#elif defined(_WIN32)
#  if defined(ZANTOR_BASE_BUILDING)
#    define ZANTOR_BASE_API __declspec(dllexport)
#  else
#    define ZANTOR_BASE_API __declspec(dllimport)
#  endif
#else
#  define ZANTOR_BASE_API __attribute__((visibility("default")))
#endif

// printf-style format checking for the library's formatting functions.
#if defined(__GNUC__)
#  define ZANTOR_PRINTF_FORMAT(formatIndex, firstArg) \
     __attribute__((format(printf, formatIndex, firstArg)))
#else
#  define ZANTOR_PRINTF_FORMAT(formatIndex, firstArg)
#endif
