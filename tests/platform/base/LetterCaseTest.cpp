#include <gtest/gtest.h>

#include "platform/base/LetterCase.h"

namespace quillet {
namespace {

TEST(LetterCase, FoldsEachCharacterByItself) {
  const struct {
    const char* what;
    const char* text;
    const char* folded;
  } rows[] = {
      {"ASCII", "AZ[az`@ 09", "az[az`@ 09"},
      {"two bytes", "ÄRZTE.app", "ärzte.app"},
      {"Cyrillic", "ЯНДЕКС", "яндекс"},
      {"a final sigma is a sigma", "ΣΊΣΥΦΟΣ σίσυφος", "σίσυφοσ σίσυφοσ"},
      {"the Kelvin sign is a letter", "\u212A", "k"},
      {"the capital sharp s becomes one character", "\u1E9Eß", "ßß"},
      {"the dotted capital I has no single lower case", "\u0130", "\u0130"},
      {"four bytes", "\U00010400", "\U00010428"},
      {"longer than it was", "\u023A", "\u2C65"},
      {"bytes that are no UTF-8",
       "\xC3"
       "A\xFF\xC3\x84\xE2\x84",
       "\xC3"
       "a\xFF\xC3\xA4\xE2\x84"},
      {"a surrogate's bytes", "\xED\xA0\x80", "\xED\xA0\x80"},
  };
  for (const auto& [what, text, folded] : rows) {
    EXPECT_EQ(platform::caseFolded(text), folded) << what;
  }
}

}  // namespace
}  // namespace quillet
