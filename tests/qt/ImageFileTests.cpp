#include "platform/linux/qt/ImageFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "platform/linux/qt/agreement/AgreementDocument.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::qt::AgreementKind;
using platform::qt::loadAgreement;
using platform::qt::readImageFile;

TEST(ImageFiles, SayWhatTheyAreWhateverTheirName) {
    const fakes::TemporaryFolder folder;
    QImage(4, 3, QImage::Format_RGB32).save(QString::fromStdString(folder / "image.dat"), "PNG");
    const auto file = readImageFile(folder / "image.dat");
    EXPECT_EQ(file.format, "png");
    EXPECT_EQ(file.size, QSize(4, 3));
    EXPECT_FALSE(file.image.isNull());
}

TEST(ImageFiles, TellTheirOwnSizeWhereLessIsKept) {
    const fakes::TemporaryFolder folder;
    QImage large(6000, 3000, QImage::Format_Mono);
    large.fill(1);
    large.save(QString::fromStdString(folder / "large.png"), "PNG");
    const auto file = readImageFile(folder / "large.png");
    EXPECT_EQ(file.size, QSize(6000, 3000));
    EXPECT_EQ(file.image.size(), QSize(2560, 1280));
}

TEST(ImageFiles, SayWhyThereIsNoImage) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "text.png") << "not an image";
    ASSERT_EQ(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    for (const char* name : {"text.png", "pipe.png", "missing.png", "."}) {
        const auto file = readImageFile(folder / name);
        EXPECT_TRUE(file.image.isNull()) << name;
        EXPECT_FALSE(file.whyNot.isEmpty()) << name;
        EXPECT_TRUE(file.format.isEmpty()) << name;
    }
}

TEST(LoadedAgreements, SayWhatTheyAreAndWhetherTheyAreWhole) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "a.txt") << "text";
    std::ofstream(folder / "a.html") << "<p>text";
    std::ofstream(folder / "a.rtf") << "{\\rtf1 text}";
    std::ofstream(folder / "long.txt") << std::string(3'000'000, 'x');
    EXPECT_EQ(loadAgreement(folder / "a.txt")->kind, AgreementKind::plainText);
    EXPECT_EQ(loadAgreement(folder / "a.html")->kind, AgreementKind::html);
    EXPECT_EQ(loadAgreement(folder / "a.rtf")->kind, AgreementKind::richText);
    EXPECT_TRUE(loadAgreement(folder / "a.txt")->complete);
    EXPECT_FALSE(loadAgreement(folder / "long.txt")->complete);
}

}  // namespace
