#include "tools/report/markup.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tools/report/base64.h"
#include "tools/report/sha256.h"

namespace ocpan {
namespace {

TEST(Escaped, LeavesNoCharacterThatMarkupKnows) {
  EXPECT_EQ(escaped("a<b>&\"c'"), "a&lt;b&gt;&amp;&quot;c&#39;");
}

TEST(Escaped, KeepsUtf8) {
  EXPECT_EQ(escaped("Gr\u00fc\u00dfe \u20ac \U0001F600"), "Gr\u00fc\u00dfe \u20ac \U0001F600");
}

TEST(Escaped, ReplacesWhatXmlDoesNotAllow) {
  const std::string bad = "\xEF\xBF\xBD";
  EXPECT_EQ(escaped(std::string("a\0b\x1F", 4)), "a" + bad + "b" + bad);
  EXPECT_EQ(escaped("\xE9t\xE9"), bad + "t" + bad);  // Latin-1
  EXPECT_EQ(escaped("\xC0\xBC"), bad + bad);         // "<" in two bytes
  EXPECT_EQ(escaped("\xED\xA0\x80"), bad + bad + bad);
  EXPECT_EQ(escaped("\xEF\xBF\xBE"), bad + bad + bad);
  EXPECT_EQ(escaped("\xE2\x82"), bad + bad);  // cut short
}

TEST(Number, DropsTrailingZeros) {
  EXPECT_EQ(number(1.5), "1.5");
  EXPECT_EQ(number(200), "200");
  EXPECT_EQ(number(-0.001), "0");
  EXPECT_EQ(number(0.125, 3), "0.125");
  EXPECT_EQ(number(std::nan("")), "none");
}

TEST(Measure, KeepsSignificantDigits) {
  EXPECT_EQ(measure(0.23046), "0.230");
  EXPECT_EQ(measure(12.345), "12.3");
  EXPECT_EQ(measure(1234.5), "1234");
  EXPECT_EQ(measure(0), "0");
}

TEST(MeasureWithin, TellsTwoDigitsOfTheDeviation) {
  EXPECT_EQ(measure_within(0.00193, 0.01234), "0.002 \u00b1 0.012");
  EXPECT_EQ(measure_within(123.456, 4.56), "123.5 \u00b1 4.6");
}

TEST(Base64, GivesTheKnownLetters) {
  // The examples of RFC 4648.
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64("\xFF\xFE\xFD"), "//79");
}

TEST(Sha256, GivesTheKnownDigits) {
  EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(sha256(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
}  // namespace ocpan
