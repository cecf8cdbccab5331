#include "parameters/PresetText.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace mv::test {

namespace {

using Tokens = std::vector<std::string>;
using namespace std::string_literals;

Tokens AllTokens(std::string_view text) {
    PresetTokens tokens(text);
    Tokens result;
    std::string_view token;
    while (tokens.Next(token)) {
        result.emplace_back(token);
    }
    return result;
}

std::string Replaced(std::string_view text, std::string_view name, std::string_view lines) {
    std::string result;
    return ReplacePreset(text, name, lines, result) ? result : "not found";
}

std::string Removed(std::string_view text, std::string_view name) {
    std::string result;
    return RemovePreset(text, name, result) ? result : "not found";
}

constexpr std::string_view kThree =
    "FileOwner RadialBlur\n"
    "\nname one\nIntensity 1.000000\nMode 1\n"
    "\nname two\nIntensity 2.000000\nMode 2\n"
    "\nname three\nIntensity 3.000000\nMode 1\n";

}  // namespace

TEST(PresetTokens, AreRunsOfCharactersPartedByWhiteSpaceOfTheCLocale) {
    EXPECT_EQ(AllTokens("a\tb\nc\vd\fe\rf g"), (Tokens{"a", "b", "c", "d", "e", "f", "g"}));
    EXPECT_EQ(AllTokens("  one\r\n\r\ntwo  "), (Tokens{"one", "two"}));
    EXPECT_EQ(AllTokens(""), Tokens{});
    EXPECT_EQ(AllTokens(" \n\t "), Tokens{});
    // Neither of these is white space there.
    EXPECT_EQ(AllTokens("a\xA0"
                        "b\x85"),
              Tokens{"a\xA0"
                     "b\x85"});
}

TEST(PresetTokens, HoldAnyOtherByte) {
    EXPECT_EQ(AllTokens("a\0b \xFF\xFE \x1A"s), (Tokens{"a\0b"s, "\xFF\xFE", "\x1A"}));
}

TEST(PresetTokens, AreOfAnyLength) {
    const std::string longToken(8000000, 'x');
    EXPECT_EQ(AllTokens("a " + longToken + " b"), (Tokens{"a", longToken, "b"}));
}

TEST(PresetTokens, PassOverAByteOrderMarkAtTheBeginningOnly) {
    EXPECT_EQ(AllTokens("\xEF\xBB\xBF"
                        "FileOwner x"),
              (Tokens{"FileOwner", "x"}));
    EXPECT_EQ(AllTokens(" \xEF\xBB\xBF"
                        "FileOwner"),
              Tokens{"\xEF\xBB\xBF"
                     "FileOwner"});
    EXPECT_EQ(AllTokens("\xEF\xBB"), Tokens{"\xEF\xBB"});
}

TEST(PresetTokens, StandRightBehindTheLastCharacterOfTheLastToken) {
    PresetTokens tokens("  ab\n cd");
    std::string_view token;
    EXPECT_EQ(tokens.Position(), 0u);
    tokens.Next(token);
    EXPECT_EQ(tokens.Position(), 4u);
    tokens.Next(token);
    EXPECT_EQ(tokens.Position(), 8u);
    EXPECT_FALSE(tokens.Next(token));
    EXPECT_EQ(token, "cd");
}

TEST(FindPreset, StandsBehindTheNameAndTellsWhereTheHeadBegins) {
    PresetTokens tokens(kThree);
    std::size_t head = 0;
    ASSERT_TRUE(FindPreset(tokens, "two", &head));
    // Behind the last value of the block before: the owner line has 21 characters, the first
    // block 10 + 19 + 6.
    EXPECT_EQ(head, 56u);
    EXPECT_EQ(kThree.substr(head, 10), "\n\nname two");
    EXPECT_EQ(tokens.Position(), 66u);
}

TEST(FindPreset, TakesAWholeNameOnly) {
    for (const char* name : {"tw", "twoo", "TWO", "", "two two", "Intensity", "RadialBlur"}) {
        PresetTokens tokens(kThree);
        EXPECT_FALSE(FindPreset(tokens, name)) << name;
    }
}

TEST(FindPreset, APresetWithTheReservedNameIsOneLikeAnyOther) {
    PresetTokens first("FileOwner R\nname name\nMode 1\nname b\n");
    EXPECT_TRUE(FindPreset(first, "name"));
    EXPECT_EQ(first.Position(), 21u);
    PresetTokens second("FileOwner R\nname name\nMode 1\nname b\n");
    EXPECT_TRUE(FindPreset(second, "b"));
    // The word behind the word is a name, so what follows is not.
    PresetTokens third("name name b");
    EXPECT_FALSE(FindPreset(third, "b"));
}

TEST(FindPreset, FindsANameThatEndsTheFileAndNotOneThatIsMissing) {
    PresetTokens whole("FileOwner R\n\nname a");
    EXPECT_TRUE(FindPreset(whole, "a"));
    PresetTokens cut("FileOwner R\n\nname ");
    EXPECT_FALSE(FindPreset(cut, "a"));
    EXPECT_FALSE(FindPreset(cut, ""));
}

TEST(ReplacePreset, PutsTheLinesWhereTheBlockStoodWithoutTheEmptyLineBehindThem) {
    EXPECT_EQ(Replaced(kThree, "two", "Intensity 9.000000\n"),
              "FileOwner RadialBlur\n"
              "\nname one\nIntensity 1.000000\nMode 1\n"
              "\nname two\nIntensity 9.000000\n"
              "name three\nIntensity 3.000000\nMode 1\n");
    EXPECT_EQ(Replaced(kThree, "one", "Intensity 9.000000\n"),
              "FileOwner RadialBlur\n"
              "\nname one\nIntensity 9.000000\n"
              "name two\nIntensity 2.000000\nMode 2\n"
              "\nname three\nIntensity 3.000000\nMode 1\n");
}

TEST(ReplacePreset, TheLastBlockEndsWithItsLines) {
    EXPECT_EQ(Replaced(kThree, "three", "Intensity 9.000000\n"),
              "FileOwner RadialBlur\n"
              "\nname one\nIntensity 1.000000\nMode 1\n"
              "\nname two\nIntensity 2.000000\nMode 2\n"
              "\nname three\nIntensity 9.000000\n");
}

TEST(ReplacePreset, WhatStandsBehindTheNameOnItsLineGoes) {
    EXPECT_EQ(Replaced("FileOwner R\nname a   \t\n\n\nMode 1\n", "a", "Mode 2\n"),
              "FileOwner R\nname a\nMode 2\n");
    EXPECT_EQ(Replaced("name a Mode 1 name b Mode 2", "a", "Mode 3\n"),
              "name a\nMode 3\nname b Mode 2");
}

TEST(ReplacePreset, ANameThatEndsTheFileGetsItsLines) {
    EXPECT_EQ(Replaced("FileOwner R\n\nname a", "a", "Mode 2\n"),
              "FileOwner R\n\nname a\nMode 2\n");
}

TEST(ReplacePreset, CopiesEveryByteAroundTheBlock) {
    const std::string before = "\xEF\xBB\xBF \0\xFF\r\n FileOwner R\r\n"s;
    const std::string after = " b\r\n\xFF\0\x1A no newline"s;
    EXPECT_EQ(Replaced(before + "name a\r\nMode 1\r\nname" + after, "a", "Mode 2\n"),
              before + "name a\nMode 2\nname" + after);
}

TEST(ReplacePreset, OnlyTheFirstOfTwoPresetsWithOneNameIsReplaced) {
    EXPECT_EQ(Replaced("FileOwner R\n\nname a\nMode 1\n\nname a\nMode 2\n", "a", "Mode 3\n"),
              "FileOwner R\n\nname a\nMode 3\nname a\nMode 2\n");
}

TEST(ReplacePreset, WithNoLinesTheNextBlockFollowsTheHead) {
    EXPECT_EQ(Replaced("FileOwner R\n\nname a\nMode 1\n\nname b\n", "a", ""),
              "FileOwner R\n\nname a\nname b\n");
}

TEST(ReplacePreset, LeavesATextWithoutThePresetAlone) {
    EXPECT_EQ(Replaced(kThree, "four", "Mode 1\n"), "not found");
    EXPECT_EQ(Replaced("", "a", "Mode 1\n"), "not found");
}

TEST(RemovePreset, TakesTheBlockOutAndKeepsOneEmptyLine) {
    EXPECT_EQ(Removed(kThree, "two"),
              "FileOwner RadialBlur\n"
              "\nname one\nIntensity 1.000000\nMode 1\n"
              "\nname three\nIntensity 3.000000\nMode 1\n");
    EXPECT_EQ(Removed(kThree, "one"),
              "FileOwner RadialBlur\n"
              "\nname two\nIntensity 2.000000\nMode 2\n"
              "\nname three\nIntensity 3.000000\nMode 1\n");
}

TEST(RemovePreset, TheLastBlockLeavesTheLineBeforeItAsTheLast) {
    EXPECT_EQ(Removed(kThree, "three"),
              "FileOwner RadialBlur\n"
              "\nname one\nIntensity 1.000000\nMode 1\n"
              "\nname two\nIntensity 2.000000\nMode 2\n");
}

TEST(RemovePreset, TheOnlyBlockLeavesTheOwnerLine) {
    EXPECT_EQ(Removed("FileOwner RadialBlur\n\nname a\nMode 1\n", "a"), "FileOwner RadialBlur\n");
    EXPECT_EQ(Removed("FileOwner RadialBlur\n\nname a", "a"), "FileOwner RadialBlur\n");
}

TEST(RemovePreset, BlankLinesInFrontOfTheBlockGoWithIt) {
    EXPECT_EQ(Removed("FileOwner R  \t\n\n\n\n  name a\nMode 1\n  name b\nMode 2\n", "a"),
              "FileOwner R\n\nname b\nMode 2\n");
}

TEST(RemovePreset, ABlockThatBeginsTheFileLeavesNoLineEndInFrontOfIt) {
    EXPECT_EQ(Removed("name a\nMode 1\n\nname b\nMode 2\n", "a"), "\nname b\nMode 2\n");
    EXPECT_EQ(Removed("\n\nname a\nMode 1\n", "a"), "");
}

TEST(RemovePreset, AByteOrderMarkStays) {
    EXPECT_EQ(Removed("\xEF\xBB\xBFname a\nMode 1\n\nname b\n", "a"), "\xEF\xBB\xBF\n\nname b\n");
}

TEST(RemovePreset, AByte0xFFEndsTheCopyBehindTheBlockOnPurpose) {
    // Meant as it is, and not so in ReplacePreset: the byte counts as the end of the file.
    EXPECT_EQ(Removed("FileOwner R\n\nname a\nMode 1\n\nname b\nX \xFF 1\nMode 2\n", "a"),
              "FileOwner R\n\nname b\nX ");
    EXPECT_EQ(Replaced("FileOwner R\n\nname a\nMode 1\n\nname b\nX \xFF 1\nMode 2\n", "a", "M 3\n"),
              "FileOwner R\n\nname a\nM 3\nname b\nX \xFF 1\nMode 2\n");
}

TEST(RemovePreset, AByte0xFFEndsTheCopyBeforeTheBlockOnPurpose) {
    // Meant as it is. The block goes all the same, and the next one follows.
    EXPECT_EQ(Removed("FileOwner R\n\nname a\nX \xFF 1\n\nname b\nMode 1\n\nname c\nMode 2\n", "b"),
              "FileOwner R\n\nname a\nX \n\nname c\nMode 2\n");
    // In the block itself it is not copied, so it ends nothing.
    EXPECT_EQ(Removed("FileOwner R\n\nname a\nX \xFF 1\n\nname b\nMode 1\n", "a"),
              "FileOwner R\n\nname b\nMode 1\n");
}

TEST(RemovePreset, LeavesATextWithoutThePresetAlone) {
    EXPECT_EQ(Removed(kThree, "four"), "not found");
    EXPECT_EQ(Removed("", "a"), "not found");
}

TEST(LineEnds, BecomeLineFeedsAndComeBack) {
    std::string text = "a\r\nb\r\n\r\nc\rd\n\re\r\r\n";
    ToLineFeeds(text);
    EXPECT_EQ(text, "a\nb\n\nc\rd\n\re\r\n");
    EXPECT_EQ(ToCarriageReturns("a\nb\n\nc\rd"), "a\r\nb\r\n\r\nc\rd");
    EXPECT_EQ(ToCarriageReturns(""), "");
    std::string none;
    ToLineFeeds(none);
    EXPECT_EQ(none, "");
}

TEST(LineEnds, OfAFileWithCarriageReturnsSurviveTheWayThereAndBack) {
    const std::string file = "FileOwner R\r\n\r\nname a\r\nMode 1\r\n";
    std::string text = file;
    ToLineFeeds(text);
    EXPECT_EQ(ToCarriageReturns(text), file);
}

TEST(LineEnds, AnEndMarkIsDroppedOnlyWhereItEndsTheFile) {
    std::string text = "a\r\n\x1A";
    ToLineFeeds(text);
    EXPECT_EQ(text, "a\n");
    text = "a\x1A\r\nb\x1A\x1A";
    DropEndMark(text);
    EXPECT_EQ(text, "a\x1A\r\nb\x1A");
}

}  // namespace mv::test
