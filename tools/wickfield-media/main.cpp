// wickfield-media: reads an agreement or an image as the installer's window does, and says how that went.
//
//     wickfield-media agreement FILE
//     wickfield-media image FILE
//
// One line of JSON on standard output, status 0, also for a file that cannot be read; 2 for another command line, 3
// where Qt does not work. Needs no display, fetches nothing from a network. Whoever starts it watches the time.
#include <QGuiApplication>
#include <QJsonDocument>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "tools/wickfield-media/Limits.h"
#include "tools/wickfield-media/Reading.h"

namespace {

constexpr int usageStatus = 2;
constexpr int noQtStatus = 3;

// While Qt starts, what is fatal to it is the machine's fault, not the file's.
void endWithoutQt(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "wickfield-media: %s\n", qPrintable(message));
        std::_Exit(noQtStatus);
    }
}

void staySilent(QtMsgType, const QMessageLogContext&, const QString&) {}

[[noreturn]] void endAfter(const QByteArray& line) {
    const bool said = std::fprintf(stdout, "%s\n", line.constData()) >= 0 && std::fflush(stdout) == 0;
    std::_Exit(said ? EXIT_SUCCESS : EXIT_FAILURE);  // nothing is left to be tidied up
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view what = argc == 3 ? argv[1] : "";
    if (what != "agreement" && what != "image") {
        std::fprintf(stderr, "usage: wickfield-media agreement|image FILE\n");
        return usageStatus;
    }
    const std::string path = argv[2];
    wickfield_media::limitProcess();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(endWithoutQt);
    int words = 1;  // Qt would take options out of the others
    const QGuiApplication application(words, argv);
    qInstallMessageHandler(staySilent);
    try {
        const QJsonObject found =
            what == "agreement" ? wickfield_media::readAgreement(path) : wickfield_media::readImage(path);
        endAfter(QJsonDocument(found).toJson(QJsonDocument::Compact));
    } catch (const std::bad_alloc&) {
        endAfter(R"({"ok":false,"reason":"it needs more than 2 GiB of memory"})");
    }
}
