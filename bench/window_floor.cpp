// The least that a Qt program does to show a window: what the installer's start is measured against.
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QWidget window;
    window.setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(new QLabel(QString::fromLatin1("Hello")));
    layout->addWidget(new QPushButton(QString::fromLatin1("Quit")));
    window.resize(660, 440);
    window.move(182, 164);
    window.show();
    return QApplication::exec();
}
