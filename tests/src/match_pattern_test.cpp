#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "src/file_patterns.h"
#include "tests/support/captured_output.h"

namespace ocpan {
namespace {

using testing::printed_by;

struct match {
  int result;
  bool matched;
  std::string printed;
  bool operator==(const match&) const = default;
};

std::ostream& operator<<(std::ostream& out, const match& m) {
  return out << "{" << m.result << ", " << m.matched << ", \"" << m.printed << "\"}";
}

match match_of(const std::string& pattern, const std::string& name) {
  match m{0, true, ""};  // so that the operation has to clear the flag
  m.printed = printed_by([&] { m.result = match_pattern(pattern, name, m.matched); });
  return m;
}

const match fits{0, true, ""};
const match differs{0, false, ""};
const match unexpected{-1, false, "Unexpected non match case\n"};

match malformed(const std::string& printed) { return {5, false, printed}; }

// ---- match_pattern: elements

TEST(MatchPattern, MatchesLiteralsWithTheirCase) {
  EXPECT_EQ(match_of("cam", "cam"), fits);
  EXPECT_EQ(match_of("cam", "caM"), differs);
}

TEST(MatchPattern, MatchesOneDigit) {
  EXPECT_EQ(match_of("a\\d", "a0"), fits);
  EXPECT_EQ(match_of("a\\d", "a9"), fits);
  EXPECT_EQ(match_of("a\\d", "a/"), differs);  // the character ahead of "0"
  EXPECT_EQ(match_of("a\\d", "a:"), differs);  // the one behind "9"
  EXPECT_EQ(match_of("a\\d", "ad"), differs);
}

TEST(MatchPattern, MatchesAnEscapedFullStopOnly) {
  EXPECT_EQ(match_of("a\\.b", "a.b"), fits);
  EXPECT_EQ(match_of("a\\.b", "axb"), differs);
}

TEST(MatchPattern, MatchesAnyOneCharacter) {
  EXPECT_EQ(match_of("a.b", "axb"), fits);
  EXPECT_EQ(match_of("a.b", "a.b"), fits);
  EXPECT_EQ(match_of("a.b", "axxb"), differs);
}

TEST(MatchPattern, RewritesTheFirstDigitClass) {
  EXPECT_EQ(match_of("a[0-9]b", "a5b"), fits);
  EXPECT_EQ(match_of("a[0-9]+b", "a517b"), fits);
  EXPECT_EQ(match_of("a[0-9]b", "axb"), differs);
}

TEST(MatchPattern, ClearsTheDigitBetweenElements) {
  EXPECT_EQ(match_of("\\da", "1a"), fits);
  EXPECT_EQ(match_of("\\da", "12"), differs);
  EXPECT_EQ(match_of(".a", "xa"), fits);
  EXPECT_EQ(match_of(".a", "xb"), differs);
}

TEST(MatchPattern, RepeatsWithAStar) {
  EXPECT_EQ(match_of("a*b", "ab"), fits);
  EXPECT_EQ(match_of("a*b", "aaab"), fits);
  EXPECT_EQ(match_of("\\d*\\.png", "0123.png"), fits);
}

TEST(MatchPattern, RepeatsWithAPlus) {
  EXPECT_EQ(match_of("a+b", "ab"), fits);
  EXPECT_EQ(match_of("a+b", "aaab"), fits);
  EXPECT_EQ(match_of("a+b", "b"), differs);
  EXPECT_EQ(match_of("cam\\d+\\.jpg", "cam0042.jpg"), fits);
}

TEST(MatchPattern, TakesACharacterForAStarThatFitsNothing) {
  EXPECT_EQ(match_of("a*b", "b"), unexpected);
  EXPECT_EQ(match_of("a*b", "xb"), fits);
  EXPECT_EQ(match_of("xa*b", "xyb"), fits);
}

TEST(MatchPattern, DoesNotRepeatAStarThatFitNothing) { EXPECT_EQ(match_of("a*b", "xab"), differs); }

TEST(MatchPattern, TakesAStarFollowedByAPlusAsAtLeastOne) {
  EXPECT_EQ(match_of("a*+b", "aab"), fits);
  EXPECT_EQ(match_of("a*+b", "xb"), differs);
}

TEST(MatchPattern, AsksAtLeastOneOfItsOwnElementOnly) {
  // "b*" fits nothing and takes the "x", whatever stood behind the "a".
  EXPECT_EQ(match_of("a+b*c", "axc"), fits);
}

TEST(MatchPattern, AcceptsTheStartSignAtTheStart) {
  EXPECT_EQ(match_of("^ab", "ab"), fits);
  EXPECT_EQ(match_of("^ab", "xab"), differs);
}

TEST(MatchPattern, TakesASecondStartSignAsALiteral) {
  EXPECT_EQ(match_of("^^a", "^a"), fits);
  EXPECT_EQ(match_of("^^a", "a"), differs);
}

TEST(MatchPattern, AcceptsTheEndSignAtTheEnd) {
  EXPECT_EQ(match_of("ab$", "ab"), fits);
  EXPECT_EQ(match_of("^cam1_\\d+\\.jpg$", "cam1_07.jpg"), fits);
}

TEST(MatchPattern, IgnoresWhatStandsBehindAnEndSignAtTheEnd) {
  EXPECT_EQ(match_of("a$b", "a"), fits);
}

TEST(MatchPattern, PassesTheTwoDotsByInSilence) {
  EXPECT_EQ(match_of("cam\\d+", "."), differs);
  EXPECT_EQ(match_of("^cam\\d+", ".."), differs);
}

TEST(MatchPattern, MatchesBytesBeyondAscii) {
  EXPECT_EQ(match_of("b\xc3\xa4.png", "b\xc3\xa4_png"), fits);
  EXPECT_EQ(match_of("b..\\.png", "b\xc3\xa4.png"), fits);
}

// ---- match_pattern: ends

TEST(MatchPattern, FailsOnANameThatRunsOn) {
  EXPECT_EQ(match_of("a", "ab"), unexpected);
  EXPECT_EQ(match_of("\\.png", ".png.bak"), unexpected);
}

TEST(MatchPattern, FailsOnANameThatEndsEarly) {
  EXPECT_EQ(match_of("ab", "a"), unexpected);
  EXPECT_EQ(match_of("ab*", "a"), unexpected);
}

TEST(MatchPattern, FailsOnARepeatAtThePatternsEnd) { EXPECT_EQ(match_of("a+", "aa"), unexpected); }

TEST(MatchPattern, FailsOnAnEmptyPattern) { EXPECT_EQ(match_of("", "a"), unexpected); }

TEST(MatchPattern, MatchesNothingWithNothing) {
  EXPECT_EQ(match_of("", ""), fits);
  EXPECT_EQ(match_of("$", ""), fits);
  EXPECT_EQ(match_of("^", ""), unexpected);
}

TEST(MatchPattern, ReportsAnEndSignAheadOfTheEnd) {
  EXPECT_EQ(match_of("a[0-9]\\.png$", "a1.png.bak"),
            (match{0, false,
                   "Pattern '$' found before end of search.\n"
                   "  Pattern: a\\d\\.png$\n"
                   "  Search: a1.png.bak\n"
                   ". 0\n"}));
}

TEST(MatchPattern, AsksForTheEndAheadOfARepeat) {
  EXPECT_EQ(match_of("\\d+$", "1"), fits);
  EXPECT_EQ(match_of("\\d+$", "12"), (match{0, false,
                                            "Pattern '$' found before end of search.\n"
                                            "  Pattern: \\d+$\n"
                                            "  Search: 12\n"
                                            "2 0\n"}));
}

TEST(MatchPattern, ReportsAnEndSignDirectlyBehindTheStartSign) {
  EXPECT_EQ(match_of("^$", "ab"), (match{0, false,
                                         "Pattern '$' found before end of search.\n"
                                         "  Pattern: ^$\n"
                                         "  Search: ab\n"
                                         "a 0\n"}));
}

TEST(MatchPattern, ReportsAStartSignBehindTheStart) {
  EXPECT_EQ(match_of("a^b", "ab"), (match{0, false,
                                          "Pattern '^' not found at beginning of search.\n"
                                          "  Pattern: a^b\n"
                                          "  Search: ab\n"}));
}

TEST(MatchPattern, AsksForTheStartAheadOfARepeat) {
  EXPECT_EQ(match_of("a+^b", "aab").printed,
            "Pattern '^' not found at beginning of search.\n"
            "  Pattern: a+^b\n"
            "  Search: aab\n");
}

// ---- match_pattern: faults

TEST(MatchPattern, RefusesAPatternThatEndsBehindTheStartSign) {
  EXPECT_EQ(match_of("^", "a"), malformed("Pattern prematurely ended after '^': ^\n"));
}

TEST(MatchPattern, RefusesAPatternThatEndsBehindABackslash) {
  EXPECT_EQ(match_of("a\\", "ab"), malformed("Pattern prematurely ended after '\\': a\\\n"));
}

TEST(MatchPattern, RefusesAnUnknownSpecialCharacter) {
  EXPECT_EQ(match_of("a\\w", "ab"),
            malformed("Unrecognised special character: \\w in pattern: a\\w\n"));
  EXPECT_EQ(match_of("\\D", "ab"),
            malformed("Unrecognised special character: \\D in pattern: \\D\n"));
}

TEST(MatchPattern, RefusesGroups) {
  EXPECT_EQ(match_of("(a)", "a"), malformed("Pattern '(' not supported.\n  Pattern: (a)\n"));
  EXPECT_EQ(match_of("a)", "ab"), malformed("Pattern ')' not supported.\n  Pattern: a)\n"));
}

TEST(MatchPattern, RefusesClasses) {
  EXPECT_EQ(match_of("[ab]", "a"),
            malformed("Pattern '[' not supported (except one '[0-9]' occurrence).\n"
                      "  Pattern: [ab]\n"));
  EXPECT_EQ(match_of("a]", "ab"), malformed("Pattern ']' not supported.\n  Pattern: a]\n"));
}

TEST(MatchPattern, RefusesASecondDigitClassOnceANameGetsThere) {
  EXPECT_EQ(match_of("[0-9][0-9]", "12"),
            malformed("Pattern '[' not supported (except one '[0-9]' occurrence).\n"
                      "  Pattern: \\d[0-9]\n"));
  EXPECT_EQ(match_of("[0-9][0-9]", "x2"), differs);
}

TEST(MatchPattern, RefusesAClassAheadOfARepeat) {
  EXPECT_EQ(match_of("a+(b", "aab"), malformed("Pattern '(' not supported.\n  Pattern: a+(b\n"));
}

TEST(MatchPattern, RefusesARepeatedWildcard) {
  for (const char* sign : {"*", "+", "*+"}) {
    const std::string pattern = std::string("a.") + sign + "b";
    EXPECT_EQ(
        match_of(pattern, "axb"),
        malformed("'.' wildcard not supported with '+' or '*' in pattern: " + pattern + "\n"));
  }
}

TEST(MatchPattern, RefusesARepeatWithoutAnElement) {
  EXPECT_EQ(match_of("*a", "ba"), (match{-1, false, "Internal logic error with *\n"}));
  EXPECT_EQ(match_of("^+a", "ba"), (match{-1, false, "Internal logic error with +\n"}));
  EXPECT_EQ(match_of("a+*", "ab"), (match{-1, false, "Internal logic error with *\n"}));
  EXPECT_EQ(match_of("a**b", "xb"), (match{-1, false, "Internal logic error with *\n"}));
}

TEST(MatchPattern, FindsNoFaultBeyondTheFirstMismatch) {
  EXPECT_EQ(match_of("a(\\q", "x"), differs);
}

}  // namespace
}  // namespace ocpan
