#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quilletctl {

/// Texts as they may reach a terminal, by the locale of LC_CTYPE. Only `printable` takes text from
/// outside; the others want what it has made of it, so that every character has its columns.

/// `text` with each byte as `\xNN` of what is no character of one or two columns in this locale:
/// control characters, invalid UTF-8, and what stands on another character or changes the direction
/// of writing, for it could make one text look like another.
std::string printable(std::string_view text);

/// The same, line by line; line feeds stay.
std::string printableLines(std::string_view text);

/// The same, with a blank as `\x20`: for a column that others follow.
std::string printableWord(std::string_view text);

std::size_t columnsOf(std::string_view text);

/// `text` in at most `width` columns; what is cut ends in a sign of one column.
std::string cut(std::string_view text, std::size_t width);

/// `text` in exactly `width` columns: cut, or filled with blanks at its end or its beginning.
std::string padded(std::string_view text, std::size_t width);
std::string rightAligned(std::string_view text, std::size_t width);

/// `text` in lines of at most `width` columns, parted at blanks, and inside words that are longer.
/// At least one line; a character of two columns stands alone in a width of one.
std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// Whether the terminal takes more than ASCII.
bool hasBlockCharacters();

}  // namespace quilletctl
