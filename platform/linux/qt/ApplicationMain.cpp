#include "platform/ports/ApplicationMain.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/qt/Appearance.h"
#include "platform/linux/qt/FirstPaint.h"
#include "platform/linux/qt/MainWindow.h"
#include "platform/linux/qt/QtAlerts.h"
#include "platform/linux/qt/QtApplication.h"
#include "platform/linux/qt/QtMainThread.h"
#include "platform/linux/qt/QtPasswordPrompt.h"
#include "platform/linux/qt/SignalWatch.h"
#include "platform/linux/rights/LinuxAuthorization.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/posix/ProcessStart.h"

namespace platform {

namespace {

qt::QtApplication* running = nullptr;
int exitStatus = EXIT_SUCCESS;

// Ends the process with its other threads still at work: nothing that they use is destroyed under them.
[[noreturn]] void endProcess() {
    // All streams at once would wait for a thread that reads one.
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(exitStatus);
}

// A display that goes away ends the process by exit(), from deep inside the library that serves it.
void finishOnExit() {
    exitStatus = EXIT_FAILURE;
    running->finish();
}

// Qt aborts where it finds no display or none of its platform plug-ins; a user is told instead.
void tellOfNoWindow(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type != QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
        return;
    }
    std::fprintf(stderr,
                 "The installer cannot open its window. It needs a graphical session and Qt's platform plug-in for "
                 "it.\n%s\n",
                 qPrintable(message.trimmed()));
    std::_Exit(EXIT_FAILURE);
}

QApplication* makeEventLoop(int& argc, char** argv) {
    const auto before = qInstallMessageHandler(tellOfNoWindow);
    auto* const loop = new QApplication(argc, argv);
    qInstallMessageHandler(before);
    return loop;
}

}  // namespace

// What is made here is never destroyed: threads of the installation may use it to the process's very end.
int applicationMain(int argc, char** argv, MakeDelegate makeDelegate) {
    posix::prepareProcess();
    auto* const loop = makeEventLoop(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    qt::applyAppearance(*loop, qt::preferredAppearance());

    auto* const application = new qt::QtApplication(endProcess);
    Host services = linux_host::services();
    services.mainThread = new qt::QtMainThread;
    services.application = application;
    services.alerts = new qt::QtAlerts;
    auto* const passwordPrompt = new qt::QtPasswordPrompt(*application);
    services.authorization = new rights::LinuxAuthorization(*services.mainThread, passwordPrompt);
    setHost(services);
    running = application;
    std::atexit(finishOnExit);
    QObject::connect(loop, &QApplication::aboutToQuit, application, [application] { application->finish(); });
    new qt::SignalWatch([application] { application->terminate(); });

    auto* const window = new qt::MainWindow;
    passwordPrompt->attachTo(*window);
    auto* const delegate = makeDelegate(window->outlets()).release();
    window->onClosed([application, delegate] {
        if (delegate->applicationShouldTerminateAfterLastWindowClosed()) {
            application->terminate();
        }
    });
    delegate->awakeFromNib();
    if (application->isTerminating()) {
        application->finish();
    }

    qt::afterFirstPaint(*window, [window, delegate] {
        // The buttons act from here on: nothing can be pressed before the agreement is up.
        window->connectActions(*delegate);
        delegate->applicationDidFinishLaunching();
    });
    window->present();
    QApplication::exec();
    application->finish();
    endProcess();
}

}  // namespace platform
