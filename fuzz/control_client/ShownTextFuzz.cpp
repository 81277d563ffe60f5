// Whatever the proxy sends, and in whatever width it is shown: each line is text that the C library
// calls printable too, and within its width.

#include <clocale>
#include <cwchar>
#include <sstream>
#include <string>
#include <vector>

#include "control_client/ExplainText.h"
#include "control_client/StatusText.h"
#include "control_client/TopLayout.h"
#include "control_client/WatchLine.h"
#include "fuzz/Target.h"
#include "platform/store/JSONDocument.h"

namespace quillet::fuzz {

void checkLines(const std::string& text, std::size_t width) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::vector<wchar_t> wide(line.size() + 1);
    const auto size = std::mbstowcs(wide.data(), line.c_str(), wide.size());
    require(size != static_cast<std::size_t>(-1));
    const int columns = ::wcswidth(wide.data(), size);
    require(columns >= 0 && static_cast<std::size_t>(columns) <= width);
  }
}

void run(platform::DataView input) {
  static const char* const locale = std::setlocale(LC_CTYPE, "C.UTF-8");
  require(locale != nullptr);
  if (input.empty()) {
    return;
  }
  const std::size_t width = 20U + input.front() % 120U;
  const auto document = platform::parseJSON(platform::textOf(input.subspan(1)));
  if (!document) {
    return;
  }
  checkLines(quilletctl::statusText(document->value, width), width);
  checkLines(quilletctl::explainText(document->value, width), width);
  const auto query = quilletctl::QueryEvent::from(document->value);
  checkLines(quilletctl::watchLine(query, width).plain(), width);
  quilletctl::TopModel model;
  model.add(query);
  for (const auto& line : quilletctl::topLayout(model, "proxy", {width, 24})) {
    checkLines(line.plain(), width);
  }
}

}  // namespace quillet::fuzz
