// Hex dumps: a readable hexadecimal dump of a buffer, and its inverse that
// reads such a dump back into bytes.
//
// A line of the dump (16 bytes per line) reads
//   0x00000010:    30313233 34353637 38396162 63646566    0123456789abcdef
// that is "0x", the offset of the line's first byte as 8 lower-case hex
// digits, ":   ", the hex column (a blank before every group of four bytes,
// two lower-case hex digits per byte) left-aligned in a field of
// 2 * bytesPerLine + bytesPerLine / 4 characters (padded with blanks, or cut
// when longer), four blanks, and the text column (printable ASCII
// characters 0x20 to 0x7e as they are, every other byte as '.'). Lines end
// in "\r\n".
//
// Ownership: the caller owns every buffer; the functions keep nothing.
// Thread safety: all functions may be called from any thread.
//
//   std::string dump = BufferToHexDumpString(message, length, 16, 0);
//   MessageBuilder bytes;
//   StatusCode status = HexDumpStringToBuffer(dump, bytes);   // bytes == message
#pragma once

#include <ZantorMiddleware/ZantorBase/Export.h>
#include <ZantorMiddleware/ZantorBase/StatusCode.h>

#include <iosfwd>
#include <string>

namespace Zantor {

class MessageBuilder;

// A line keeps at most 255 characters before its ending (it is formatted
// into 256 characters, the terminating zero included); what lies beyond is
// dropped. A line of n bytes needs 18 + 3.25 * n characters, so 72 is the
// widest multiple of 4 whose lines are written whole. Up to 104 bytes per
// line only the text column is cut and the dump still reads back; wider
// lines lose hex digits too.
inline constexpr unsigned HEX_DUMP_MAX_BYTES_PER_LINE = 72;

// Returns the dump of size bytes at data with bytesPerLine bytes per line:
// ceil(size / bytesPerLine) lines, each ending in "\r\n". When maxLines is
// not 0 and more lines would follow the maxLines-th line, that line ends in
// " ..." and File::GetEndOfLine() instead, and the dump stops there.
// Returns the empty string when bytesPerLine or size is 0, or data is null.
// Every line is cut at 255 characters (see HEX_DUMP_MAX_BYTES_PER_LINE).
// When bytesPerLine is not a multiple of 4 a full line's hex column is one
// character wider than its field and loses its last hex digit; only dumps
// with a multiple of 4 bytes per line, at most 104, read back completely.
// Throws std::length_error (or std::bad_alloc) when the dump does not fit
// in memory, as building any string does.
ZANTOR_BASE_API std::string BufferToHexDumpString(const void* data, unsigned size, unsigned bytesPerLine, unsigned maxLines);

// Writes BufferToHexDumpString(data, size, 16, 0) to os.
ZANTOR_BASE_API void HexDump(const void* data, unsigned size, std::ostream& os);

// Reads a dump back and appends its bytes to builder. Each line (ended by
// "\r\n" or "\n") must start with "0x", 8 hex digits (the offset, which is
// not checked against the bytes read so far) and ":    " (colon, four
// blanks); then come pairs of hex digits (either case), each one byte, a
// single blank before a pair being skipped, until two blanks end the hex
// column; the rest of the line is skipped. The empty text succeeds and
// appends nothing.
// Returns STATUS_CODE_SUCCESS when every line was read;
// STATUS_CODE_INVALID_FORMAT when a line does not start with "0x" and 8 hex
// digits and ":    ", or a hex pair holds another character;
// STATUS_CODE_INVALID_PARAMETER when the text ends inside a line (also a
// last line without its end of line) or is longer than 4 GiB - 1;
// the builder's status when appending fails.
// Parsing stops at the first bad line: the bytes appended before it stay in
// the builder.
ZANTOR_BASE_API StatusCode HexDumpStringToBuffer(const std::string& dump, MessageBuilder& builder);

} // namespace Zantor
