#include "platform/base/URLHost.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(URLHostTest, IsThePartBetweenSchemeAndPathIfThereIsOne) {
  expectEach(urlHost, {{"https://www.Example.com/a/b?c=d#e", "www.Example.com"},
                       {"http://example.com?q", "example.com"},
                       {"http://example.com#f", "example.com"},
                       {"http://a@b@example.com:80/", "example.com"},
                       {"http://[2001:db8::1]:80/", "2001:db8::1"},
                       {"svn+ssh://example.com/http", "example.com"},
                       {"//http.example/x", "http.example"}});
  for (const char* text :
       {"", "http.example.com", "http:/example.com", "http//example.com", "://example.com",
        "1http://example.com", "a b://example.com", "http:///path", "http://user@:80/",
        "http://a\x01/", "http://caf\xC3\xA9.com/", "http://[::1", "http://[::1]x/",
        "http://a]/"}) {
    EXPECT_EQ(urlHost(text), std::nullopt) << text;
  }
}

}  // namespace platform::test
