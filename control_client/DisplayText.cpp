#include "control_client/DisplayText.h"

#include <algorithm>
#include <cwchar>
#include <optional>

#include "platform/base/Utf8.h"

namespace quilletctl {

namespace {

/// One character of printable text, or what `text` begins with and cannot be shown.
struct Character {
  std::string_view bytes;
  /// 1 or 2; absent when it cannot be shown.
  std::optional<std::size_t> columns;
};

wchar_t codePoint(std::string_view sequence) {
  const auto first = static_cast<unsigned char>(sequence.front());
  if (sequence.size() == 1) {
    return first;
  }
  auto code = static_cast<wchar_t>(first & (0x7FU >> sequence.size()));
  for (const char c : sequence.substr(1)) {
    code = static_cast<wchar_t>(code << 6 | (static_cast<unsigned char>(c) & 0x3F));
  }
  return code;
}

Character firstOf(std::string_view text) {
  const auto length = platform::utf8SequenceLength(text);
  if (length == 0) {
    return {text.substr(0, 1), std::nullopt};
  }
  const auto bytes = text.substr(0, length);
  const int columns = ::wcwidth(codePoint(bytes));
  return {bytes, columns > 0 ? std::optional(static_cast<std::size_t>(columns)) : std::nullopt};
}

void appendEscape(std::string& out, std::string_view bytes) {
  constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out.append({'\\', 'x', kHex[byte >> 4], kHex[byte & 0xF]});
  }
}

/// Every character in `plain` stands as it is, every one in `escaped` does not.
std::string shown(std::string_view text, std::string_view plain, std::string_view escaped) {
  std::string out;
  while (!text.empty()) {
    const auto [bytes, columns] = firstOf(text);
    const bool isShown = columns ? escaped.find(bytes) == std::string_view::npos
                                 : plain.find(bytes) != std::string_view::npos;
    if (isShown) {
      out.append(bytes);
    } else {
      appendEscape(out, bytes);
    }
    text.remove_prefix(bytes.size());
  }
  return out;
}

/// The bytes of `text` that have room in `width` columns.
std::size_t fitting(std::string_view text, std::size_t width) {
  std::size_t size = 0;
  while (size < text.size()) {
    const auto [bytes, columns] = firstOf(text.substr(size));
    if (columns.value_or(1) > width) {
      break;
    }
    width -= columns.value_or(1);
    size += bytes.size();
  }
  return size;
}

std::string_view cutSign() { return ::wcwidth(L'…') == 1 ? "…" : "~"; }

/// The bytes of `text` for a line of its own: up to a blank where there is one.
std::size_t lineLength(std::string_view text, std::size_t width) {
  const auto fits = fitting(text, width);
  if (fits == text.size() || text[fits] == ' ') {
    return fits;
  }
  const auto blank = text.substr(0, fits).rfind(' ');
  if (blank != std::string_view::npos && blank > 0) {
    return blank;
  }
  return std::max(fits, firstOf(text).bytes.size());
}

}  // namespace

std::string printable(std::string_view text) { return shown(text, "", ""); }

std::string printableLines(std::string_view text) { return shown(text, "\n", ""); }

std::string printableWord(std::string_view text) { return shown(text, "", " "); }

std::size_t columnsOf(std::string_view text) {
  std::size_t sum = 0;
  while (!text.empty()) {
    const auto [bytes, columns] = firstOf(text);
    sum += columns.value_or(1);
    text.remove_prefix(bytes.size());
  }
  return sum;
}

std::string cut(std::string_view text, std::size_t width) {
  const auto fits = fitting(text, width);
  if (fits == text.size()) {
    return std::string(text);
  }
  if (width == 0) {
    return "";
  }
  return std::string(text.substr(0, fitting(text, width - 1))).append(cutSign());
}

std::string padded(std::string_view text, std::size_t width) {
  auto result = cut(text, width);
  return result.append(width - columnsOf(result), ' ');
}

std::string rightAligned(std::string_view text, std::size_t width) {
  const auto result = cut(text, width);
  return std::string(width - columnsOf(result), ' ') + result;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  do {
    const auto length = lineLength(text, width);
    lines.emplace_back(text.substr(0, length));
    text.remove_prefix(length);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  } while (!text.empty());
  return lines;
}

bool hasBlockCharacters() { return ::wcwidth(L'█') == 1; }

}  // namespace quilletctl
