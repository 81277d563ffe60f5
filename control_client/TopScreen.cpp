#define NCURSES_NOMACROS 1
#define NCURSES_WIDECHAR 1
#include "control_client/TopScreen.h"

#include <curses.h>
#include <unistd.h>

#include <utility>

#include "control_client/Terminal.h"

namespace quilletctl {

namespace {

constexpr int kTerminalsOwn = -1;

chtype attributesOf(Style style, bool inColour) {
  const auto colour = [inColour](int pair, chtype otherwise) {
    return inColour ? static_cast<chtype>(COLOR_PAIR(pair)) : otherwise;
  };
  switch (style) {
    case Style::kPlain:
      return A_NORMAL;
    case Style::kHeading:
      return A_BOLD;
    case Style::kFaint:
      return A_DIM;
    case Style::kGood:
      return colour(COLOR_GREEN, A_NORMAL);
    case Style::kWarning:
      return colour(COLOR_YELLOW, A_BOLD);
    case Style::kBad:
      return colour(COLOR_RED, A_BOLD);
    case Style::kBar:
      return colour(COLOR_CYAN, A_NORMAL);
  }
  return A_NORMAL;
}

bool startColours() {
  if (::start_color() == ERR || ::use_default_colors() == ERR) {
    return false;
  }
  for (const int colour : {COLOR_GREEN, COLOR_YELLOW, COLOR_RED, COLOR_CYAN}) {
    ::init_extended_pair(colour, colour, kTerminalsOwn);
  }
  return true;
}

}  // namespace

struct TopScreen::Library {
  explicit Library(SCREEN* opened, bool wantsColour)
      : screen(opened), inColour(wantsColour && ::has_colors() && startColours()) {
    ::cbreak();
    ::noecho();
    ::nodelay(stdscr, true);
    ::curs_set(0);
  }
  ~Library() {
    ::endwin();
    ::delscreen(screen);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  SCREEN* screen;
  bool inColour;
};

tl::expected<TopScreen, Failure> TopScreen::open(bool inColour) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDOUT_FILENO) == 0) {
    return tl::unexpected(Failure{kFailed, "top takes a terminal"});
  }
  SCREEN* const screen = ::newterm(nullptr, stdout, stdin);
  if (screen == nullptr) {
    return tl::unexpected(Failure{kFailed, "top takes a terminal that $TERM names"});
  }
  return TopScreen(std::make_shared<Library>(screen, inColour));
}

void TopScreen::draw(const std::vector<StyledLine>& lines) {
  ::werase(stdscr);
  int row = 0;
  for (const auto& line : lines) {
    ::wmove(stdscr, row++, 0);
    for (const auto& span : line.spans()) {
      ::wattrset(stdscr, static_cast<int>(attributesOf(span.style, library_->inColour)));
      ::waddstr(stdscr, span.text.c_str());
    }
  }
  ::wattrset(stdscr, A_NORMAL);
  ::wrefresh(stdscr);
}

std::optional<int> TopScreen::key() {
  const int key = ::wgetch(stdscr);
  return key == ERR ? std::nullopt : std::optional(key);
}

ScreenSize TopScreen::size() const {
  return {static_cast<std::size_t>(getmaxx(stdscr)), static_cast<std::size_t>(getmaxy(stdscr))};
}

void TopScreen::followSize() {
  if (const auto size = terminalSize(STDOUT_FILENO)) {
    ::resizeterm(static_cast<int>(size->height), static_cast<int>(size->width));
    ::clearok(stdscr, true);
  }
}

}  // namespace quilletctl
