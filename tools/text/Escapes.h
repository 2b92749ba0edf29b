#pragma once

#include <string>
#include <string_view>

#include "quorbel/QuorbelLibrary.h"

namespace tarvex_cli {

// The list separator that the plug-in's exports split joined strings at.
inline constexpr std::string_view kListSeparator{QUORBEL_LIST_SEPARATOR};

// Turns C-style escapes into bytes: \\ \" \' \a \b \e \f \n \r \t \v,
// \xHH (exactly two hex digits), \NNN (one to three octal digits), and \|
// for the list separator. A NUL byte cannot travel in a host string, so \0
// is refused. Throws std::invalid_argument.
std::string decodeEscapes(std::string_view text);

// Quotes bytes in the kernel's input form: \" and \\ escaped, \n \t \r by
// name, every other control byte and every byte that is not part of valid
// UTF-8 as a three-digit octal escape, so that the output is unambiguous.
std::string quoteString(std::string_view bytes);

// The same escapes without quotes around the text, and with quote marks left
// as they are: text from a file made safe to print on a terminal.
std::string printableText(std::string_view bytes);

}  // namespace tarvex_cli
