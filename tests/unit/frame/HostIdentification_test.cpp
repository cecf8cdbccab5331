#include "frame/HostIdentification.h"

#include <gtest/gtest.h>

namespace mv {
namespace {

using hostapi::FourCharacterCode;

HostDescription Parsed(std::string_view text) {
    HostDescription description;
    description.releaseStage = 3;
    ParseFileVersion(text, description);
    return description;
}

TEST(HostNames, EachIsKnownByItsSignature) {
    EXPECT_EQ(SignatureOfInternalName("CorelDrw"), 0x43647277u);
    EXPECT_EQ(SignatureOfInternalName("PhotoPnt"), 0x4d70726eu);
    EXPECT_EQ(SignatureOfInternalName("DeBabelizer Pro"), 0x4241424cu);
    EXPECT_EQ(SignatureOfInternalName("Adobe After Effects"), 0x46585443u);
    EXPECT_EQ(SignatureOfInternalName("Adobe Illustrator"), 0x41525435u);
    EXPECT_EQ(SignatureOfInternalName("PM5"), 0x414c4435u);
    EXPECT_EQ(SignatureOfInternalName("PM6"), 0x414c4436u);
    EXPECT_EQ(SignatureOfInternalName("PhotoDeluxe"), 0x50485554u);
    EXPECT_EQ(SignatureOfInternalName("Photoshp"), 0x3842494du);
    EXPECT_EQ(SignatureOfInternalName("Adobe Premiere"), 0x50724d72u);
}

TEST(HostNames, AreFoundInsideALongerNameWhateverTheCase) {
    EXPECT_EQ(SignatureOfInternalName("The PHOTOSHP program"), FourCharacterCode("8BIM"));
    EXPECT_EQ(SignatureOfInternalName("adobe premiere 5"), FourCharacterCode("PrMr"));
}

// The shorter name stands first in the list. This is meant.
TEST(HostNames, TheFirstOfTheListWins) {
    EXPECT_EQ(SignatureOfInternalName("PM65"), FourCharacterCode("ALD6"));
    EXPECT_EQ(SignatureOfInternalName("Photoshp with PM5"), FourCharacterCode("ALD5"));
}

TEST(HostNames, OthersAreNotKnown) {
    EXPECT_EQ(SignatureOfInternalName(""), 0u);
    EXPECT_EQ(SignatureOfInternalName("Photoshop"), 0u);
    EXPECT_EQ(SignatureOfInternalName("PM"), 0u);
}

TEST(HostRelease, StageComesFromTheFlagsThatTheMaskLetsThrough) {
    EXPECT_EQ(ReleaseStageOfFlags(0x00, 0x3f), 3);
    EXPECT_EQ(ReleaseStageOfFlags(0x01, 0x3f), 0);
    EXPECT_EQ(ReleaseStageOfFlags(0x02, 0x3f), 2);
    EXPECT_EQ(ReleaseStageOfFlags(0x03, 0x3f), 0);
    EXPECT_EQ(ReleaseStageOfFlags(0x01, 0x3e), 3);
    EXPECT_EQ(ReleaseStageOfFlags(0x03, 0x02), 2);
    EXPECT_EQ(ReleaseStageOfFlags(0xff, 0x00), 3);
}

TEST(HostRelease, BuildNumberComesFromTheFileType) {
    EXPECT_EQ(BuildNumberOfFileType(1), 11);
    EXPECT_EQ(BuildNumberOfFileType(0x40000), 10);
    EXPECT_EQ(BuildNumberOfFileType(2), 12);
    EXPECT_EQ(BuildNumberOfFileType(0), 12);
}

TEST(VersionTextKey, HasLanguageAndCodePageAsEightDigits) {
    EXPECT_EQ(VersionTextKey(0x040904b0, "InternalName"),
              "\\StringFileInfo\\040904B0\\InternalName");
    EXPECT_EQ(VersionTextKey(0x04090000, "FileVersion"), "\\StringFileInfo\\04090000\\FileVersion");
    EXPECT_EQ(VersionTextKey(0, "x"), "\\StringFileInfo\\00000000\\x");
}

TEST(FileVersion, MajorAndMinorStandAroundTheFirstPoint) {
    const HostDescription description = Parsed("6.5");
    EXPECT_EQ(description.versionMajor, 6);
    EXPECT_EQ(description.versionMinor, 5);
    EXPECT_EQ(description.releaseStage, 3);
    EXPECT_EQ(Parsed("12.4.1").versionMajor, 12);
    EXPECT_EQ(Parsed("12.4.1").versionMinor, 4);
}

TEST(FileVersion, MinorAboveTenIsMinorAndStage) {
    EXPECT_EQ(Parsed("6.52").versionMinor, 5);
    EXPECT_EQ(Parsed("6.52").releaseStage, 2);
    EXPECT_EQ(Parsed("6.11").versionMinor, 1);
    EXPECT_EQ(Parsed("6.11").releaseStage, 1);
    EXPECT_EQ(Parsed("6.20").versionMinor, 2);
    EXPECT_EQ(Parsed("6.20").releaseStage, 0);
}

TEST(FileVersion, MinorOfTenIsNotSplit) {
    EXPECT_EQ(Parsed("6.10").versionMinor, 10);
    EXPECT_EQ(Parsed("6.10").releaseStage, 3);
}

TEST(FileVersion, TextWithoutNumbersIsVersionZero) {
    for (const char* text : {"", ".", "beta", "x.y"}) {
        EXPECT_EQ(Parsed(text).versionMajor, 0) << text;
        EXPECT_EQ(Parsed(text).versionMinor, 0) << text;
        EXPECT_EQ(Parsed(text).releaseStage, 3) << text;
    }
    EXPECT_EQ(Parsed("7").versionMajor, 7);
    EXPECT_EQ(Parsed("7, 3, 0").versionMajor, 7);
    EXPECT_EQ(Parsed("7, 3, 0").versionMinor, 0);
}

TEST(FileVersion, HugeNumbersStayInTheirBytes) {
    const HostDescription description = Parsed("99999999999999999999.99999999999999999999");
    EXPECT_EQ(description.versionMajor, 255);
    EXPECT_EQ(description.versionMinor, 255);
}

HostDescription Photoshp() {
    HostDescription description;
    description.signature = FourCharacterCode("8BIM");
    description.versionMajor = 6;
    description.versionMinor = 5;
    description.releaseStage = 2;
    description.buildNumber = 11;
    return description;
}

TEST(HostSignature, GivesTheVersionAsThreeDigitsAboveTheBuild) {
    EXPECT_EQ(TestHostSignature(Photoshp(), FourCharacterCode("8BIM")), 0x0652000bu);
}

TEST(HostSignature, EachNumberHasFourBits) {
    HostDescription description = Photoshp();
    description.versionMajor = 0x1f;
    description.versionMinor = 0x2e;
    description.releaseStage = 0x3d;
    description.buildNumber = 0xffff;
    EXPECT_EQ(TestHostSignature(description, FourCharacterCode("8BIM")), 0x0fedffffu);
}

TEST(HostSignature, AnotherHostGivesZero) {
    EXPECT_EQ(TestHostSignature(Photoshp(), FourCharacterCode("PrMr")), 0u);
    EXPECT_EQ(TestHostSignature(HostDescription{}, FourCharacterCode("8BIM")), 0u);
}

TEST(HostSignature, ASingleSignatureMustBeAKnownOne) {
    HostDescription description = Photoshp();
    description.signature = FourCharacterCode("none");
    EXPECT_EQ(TestHostSignature(description, FourCharacterCode("none")), 0u);
    for (const char* known : {"Cdrw", "Mprn", "BABL", "FXTC", "ART3", "ARTZ", "ARTY", "ART5",
                              "ALD5", "ALD6", "AD65", "PHUT", "8BIM", "PrMr"}) {
        const char code[5] = {known[0], known[1], known[2], known[3], 0};
        description.signature = FourCharacterCode(code);
        EXPECT_EQ(TestHostSignature(description, description.signature), 0x0652000bu) << known;
    }
}

TEST(HostSignature, AListMayNameAnySignature) {
    HostDescription description = Photoshp();
    description.signature = FourCharacterCode("none");
    EXPECT_EQ(TestHostSignature(description, {FourCharacterCode("8BIM"), description.signature}),
              0x0652000bu);
    EXPECT_EQ(TestHostSignature(description, {FourCharacterCode("8BIM")}), 0u);
    EXPECT_EQ(TestHostSignature(description, {}), 0u);
}

#ifndef _WIN32
TEST(HostDescription, HostWithoutAVersionResourceIsDescribedAsNothing) {
    HostDescription description = Photoshp();
    EXPECT_EQ(GetHostDescription(FourCharacterCode("8BIM"), description), 0);
    EXPECT_EQ(description.signature, 0u);
    EXPECT_EQ(PackedVersion(description), 0u);
}
#endif

}  // namespace
}  // namespace mv
