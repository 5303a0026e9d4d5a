#include "platform/linux/qt/agreement/AgreementDocument.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QTextBlock>
#include <filesystem>

#include "platform/linux/qt/agreement/AgreementFile.h"
#include "tests/qt/AgreementText.h"

namespace {

using agreement_tests::plain;
using agreement_tests::shownText;
using agreement_tests::writeFile;
using platform::qt::loadAgreement;

constexpr const char* kRich = "{\\rtf1\\ansi Rich {\\b text}}";
constexpr const char* kHtml = "<!DOCTYPE html><html><body><p>Web <b>text</b></p></body></html>";

TEST(Agreement, IsReadByItsExtension) {
    EXPECT_EQ(shownText("a.rtf", kRich), "Rich text");
    EXPECT_EQ(shownText("a.html", "Web <b>text</b>"), "Web text");
    EXPECT_EQ(shownText("a.HTM", "Web <b>text</b>"), "Web text");
    EXPECT_EQ(shownText("a.txt", "Plain <b>text"), "Plain <b>text");
    EXPECT_EQ(shownText("a.md", "# Title"), "# Title");
}

TEST(Agreement, IsReadByHowItOpensWhereTheExtensionSaysNothing) {
    EXPECT_EQ(shownText("agreement", kRich), "Rich text");
    EXPECT_EQ(shownText("agreement", std::string("\xEF\xBB\xBF\n ") + kHtml), "Web text");
    EXPECT_EQ(shownText("agreement.doc", kRich), "Rich text");
    EXPECT_EQ(shownText("agreement", "Plain"), "Plain");
}

TEST(Agreement, IsPlainTextWhereRichTextIsOnlyClaimed) {
    EXPECT_EQ(shownText("a.rtf", "No rich text"), "No rich text");
}

TEST(Agreement, OfAFolderIsItsTextWithItsAttachments) {
    const fakes::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "a.rtfd");
    writeFile(folder / "a.rtfd/TXT.rtf",
              "{\\rtf1\\ansi\\ansicpg1252 a{{\\NeXTGraphic pic ture.png \\width400 \\height200\n}\\'ac}b "
              "{{\\NeXTGraphic missing.pdf \\width1}\\'ac}}");
    writeFile(folder / "a.rtfd/pic ture.png", agreement_tests::smallPng().toStdString());
    const auto agreement = loadAgreement(folder / "a.rtfd/");
    ASSERT_NE(agreement, nullptr);
    EXPECT_EQ(plain(*agreement->document), "a\uFFFCb [missing.pdf]");
}

TEST(Agreement, TakesNoAttachmentFromOutsideOfItsFolder) {
    const fakes::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "a.rtfd");
    writeFile(folder / "a.rtfd/TXT.rtf", "{\\rtf1 {{\\NeXTGraphic ../p.png \\width1}\\'ac}}");
    writeFile(folder / "p.png", agreement_tests::smallPng().toStdString());
    const auto agreement = loadAgreement(folder / "a.rtfd");
    ASSERT_NE(agreement, nullptr);
    EXPECT_EQ(plain(*agreement->document), "[../p.png]");
}

TEST(Agreement, IsNoneWhereNothingCanBeRead) {
    const fakes::TemporaryFolder folder;
    std::filesystem::create_directory(folder / "empty.rtfd");
    EXPECT_EQ(loadAgreement(folder / "missing.rtf"), nullptr);
    EXPECT_EQ(loadAgreement(folder / "empty.rtfd"), nullptr);
    EXPECT_EQ(loadAgreement(folder.path()), nullptr);
    EXPECT_EQ(loadAgreement(""), nullptr);
    EXPECT_EQ(loadAgreement("/dev/zero"), nullptr);
}

TEST(Agreement, IsNoneWhereReadingIsRefused) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser is refused nothing";
    }
    const fakes::TemporaryFolder folder;
    writeFile(folder / "a.txt", "x");
    ::chmod((folder / "a.txt").c_str(), 0);
    EXPECT_EQ(loadAgreement(folder / "a.txt"), nullptr);
}

TEST(Agreement, NeverWaitsForAPipe) {
    const fakes::TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "a.txt").c_str(), 0600), 0);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(loadAgreement(folder / "a.txt"), nullptr);
    EXPECT_LT(clock.elapsed(), 5000);
}

TEST(Agreement, OfAnEmptyFileIsEmpty) {
    EXPECT_EQ(shownText("a.rtf", ""), "");
    EXPECT_EQ(shownText("a.html", ""), "");
    EXPECT_EQ(shownText("a.txt", ""), "");
}

TEST(Agreement, OfAHundredMegabytesOpensAndSaysThatItGoesOn) {
    const fakes::TemporaryFolder folder;
    const std::string path = folder / "a.txt";
    writeFile(path, "Beginning\n");
    std::filesystem::resize_file(path, 100'000'000);  // NULs, which are no text
    QElapsedTimer clock;
    clock.start();
    const auto agreement = loadAgreement(path);
    ASSERT_NE(agreement, nullptr);
    EXPECT_LT(clock.elapsed(), 20'000);
    EXPECT_TRUE(plain(*agreement->document).starts_with("Beginning\n"));
    EXPECT_NE(plain(*agreement->document).find("longer than can be shown"), std::string::npos);
    EXPECT_NE(plain(*agreement->document).find(path), std::string::npos);
}

TEST(Agreement, IsReadUpToTheLimitAndNotBeyond) {
    const fakes::TemporaryFolder folder;
    writeFile(folder / "a", "12345");
    EXPECT_TRUE(platform::qt::readAgreementFile(folder / "a", 5)->complete);
    EXPECT_FALSE(platform::qt::readAgreementFile(folder / "a", 4)->complete);
    EXPECT_EQ(platform::qt::readAgreementFile(folder / "a", 4)->bytes, QByteArray("1234"));
}

TEST(Agreement, HasItsOwnEveryLetterOfTheSample) {
    const std::filesystem::path sample =
        std::filesystem::path(__FILE__).parent_path() / "../../resources/Sample/Agreement.rtf";
    const auto agreement = loadAgreement(sample.string());
    ASSERT_NE(agreement, nullptr);
    const std::string text = plain(*agreement->document);
    for (const char* part : {"Larkspur Reverb\n", "“Orrin”, “we”", "•\tto install", "(d)\tremove", "€ 149", "Élève",
                             "čeština and ελληνικά", "help@orrin-audio.example", "10.\tLaw"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(text.find('\\'), std::string::npos);
}

}  // namespace
