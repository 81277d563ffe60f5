#include "platform/base/LetterCase.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(LetterCaseTest, FoldsEachCharacterByItself) {
  expectEach(caseFolded,
             {{"AZ[az`@ 09", "az[az`@ 09"},
              {"ÄRZTE.app ЯНДЕКС", "ärzte.app яндекс"},
              {"ΣΊΣΥΦΟΣ σίσυφος", "σίσυφοσ σίσυφοσ"},  // a final sigma is a sigma
              {"\u212A\u1E9Eß\u0130", "kßß\u0130"},    // the Kelvin sign; a dotted I stays
              {"\U00010400\u023A", "\U00010428\u2C65"},
              // What is no UTF-8, the last a surrogate, stays.
              {"\xC3Z\xFF\xC3\x84\xE2\x84\xED\xA0\x80", "\xC3z\xFF\xC3\xA4\xE2\x84\xED\xA0\x80"}});
}

}  // namespace platform::test
