// What is left of a password in the memory of the process that it was typed into.
#include <fcntl.h>
#include <unistd.h>

#include <QClipboard>
#include <array>
#include <cstdint>
#include <fstream>
#include <sstream>

#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordSheet.h"
#include "platform/linux/qt/QtPasswordPrompt.h"
#include "tests/qt/WindowFixture.h"

using platform::rights::PasswordAnswer;
using platform::rights::PasswordRequest;

namespace {

// A password that is nowhere in memory as it is: only its letters, each turned into another. It is the same for no two
// markers, so that one test does not find another's.
class Marker {
public:
    static constexpr std::size_t length = 20;

    explicit Marker(unsigned seed) {
        for (std::size_t i = 0; i < length; ++i) {
            seed = seed * 1103515245 + 12345;
            m_turned[i] = static_cast<unsigned char>(('a' + (seed >> 16) % 26) ^ turn);
        }
    }

    char letter(std::size_t index) const { return static_cast<char>(m_turned[index] ^ turn); }

    // Whether the bytes hold it whole, `step` bytes from letter to letter.
    bool isAt(const unsigned char* bytes, std::size_t step) const {
        for (std::size_t i = 0; i < length; ++i) {
            if ((bytes[i * step] ^ turn) != m_turned[i] || (step == 2 && bytes[i * step + 1] != 0)) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr unsigned char turn = 0x5A;
    std::array<unsigned char, length> m_turned{};
};

struct Region {
    std::uint64_t begin;
    std::uint64_t end;
};

std::vector<Region> writableMemory() {
    std::vector<Region> regions;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        Region region{};
        char dash = 0;
        std::string access;
        fields >> std::hex >> region.begin >> dash >> region.end >> access;
        if (access.starts_with("rw")) {
            regions.push_back(region);
        }
    }
    return regions;
}

// How often the marker stands anywhere in writable memory, in UTF-8 and in UTF-16.
int timesInMemory(const Marker& marker) {
    constexpr std::size_t whole = Marker::length * 2;
    static std::array<unsigned char, 1 << 16> piece;
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    int found = 0;
    for (const auto& [begin, end] : writableMemory()) {
        std::uint64_t at = begin;
        while (at + whole <= end) {
            const auto wanted = std::min<std::uint64_t>(piece.size(), end - at);
            const auto got = ::pread(memory, piece.data(), wanted, static_cast<off_t>(at));
            if (got < static_cast<ssize_t>(whole)) {
                break;
            }
            const bool isOwnPiece =
                at <= reinterpret_cast<std::uint64_t>(piece.data() + piece.size()) &&
                at + static_cast<std::uint64_t>(got) >= reinterpret_cast<std::uint64_t>(piece.data());
            const auto places = static_cast<std::size_t>(got) - whole + 1;
            for (std::size_t i = 0; !isOwnPiece && i < places; ++i) {
                found += marker.isAt(&piece[i], 1) || marker.isAt(&piece[i], 2) ? 1 : 0;
            }
            at += places;
        }
    }
    piece.fill(0);
    ::close(memory);
    return found;
}

class APassword : public windowtests::WindowTest {
protected:
    APassword() { prompt.attachTo(window); }

    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a sanitizer keeps terabytes of memory of its own, which cannot be searched";
#endif
    }

    void ask(const std::function<void(std::optional<PasswordAnswer>)>& answered) {
        PasswordRequest request;
        request.administrators = {{.user = "ann", .realName = ""}};
        prompt.ask(request, answered);
        QTest::qWait(10);
    }
    void type(const Marker& marker) {
        for (std::size_t i = 0; i < Marker::length; ++i) {
            QTest::keyClick(QApplication::activeWindow()->windowHandle(), marker.letter(i));
        }
    }
    void close() {
        prompt.close();
        QTest::qWait(50);  // what is deleted later goes
    }

    platform::qt::QtPasswordPrompt prompt{application};
};

}  // namespace

TEST_F(APassword, IsFoundWhereItIsHeld) {
    const Marker marker(1);
    QString wide;
    std::string narrow;
    for (std::size_t i = 0; i < Marker::length; ++i) {
        wide += QLatin1Char(marker.letter(i));
        narrow += marker.letter(i);
    }
    EXPECT_GE(timesInMemory(marker), 2);
}

TEST_F(APassword, IsInOnePlaceWhileItIsTyped) {
    const Marker marker(2);
    ask({});
    type(marker);
    EXPECT_EQ(timesInMemory(marker), 1);
    close();
}

TEST_F(APassword, IsNowhereOnceItIsAnswered) {
    const Marker marker(3);
    std::size_t length = 0;
    ask([&](std::optional<PasswordAnswer> given) { length = given ? given->password.size() : 0; });
    type(marker);
    press(Qt::Key_Return);
    EXPECT_EQ(length, Marker::length);
    EXPECT_EQ(timesInMemory(marker), 0);
    close();
    EXPECT_EQ(timesInMemory(marker), 0);
}

TEST_F(APassword, IsNowhereOnceItIsCancelled) {
    const Marker marker(4);
    ask({});
    type(marker);
    press(Qt::Key_Escape);
    EXPECT_EQ(timesInMemory(marker), 0);
}

TEST_F(APassword, IsNowhereOnceItIsTypedOver) {
    const Marker marker(5);
    ask({});
    type(marker);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_X);
    EXPECT_EQ(timesInMemory(marker), 0);
    close();
}

TEST_F(APassword, IsNowhereOnceTheApplicationEnds) {
    const Marker marker(6);
    ask({});
    type(marker);
    application.finish();
    EXPECT_EQ(timesInMemory(marker), 0);
}

TEST_F(APassword, IsNowhereOnceAnInputMethodHasCommittedItLetterByLetter) {
    const Marker marker(7);
    ask({});
    for (std::size_t i = 0; i < Marker::length; ++i) {
        QInputMethodEvent event;
        event.setCommitString(QString(QLatin1Char(marker.letter(i))));
        QApplication::sendEvent(QApplication::focusWidget(), &event);
    }
    EXPECT_EQ(timesInMemory(marker), 1);
    press(Qt::Key_Return);
    EXPECT_EQ(timesInMemory(marker), 0);
    close();
}
