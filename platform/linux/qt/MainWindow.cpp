#include "platform/linux/qt/MainWindow.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>

#include "platform/linux/qt/AccessibleRoles.h"
#include "platform/linux/qt/AnswerKeys.h"
#include "platform/linux/qt/OpenLink.h"
#include "ui_AgreementSheet.h"
#include "ui_MainWindow.h"

namespace platform::qt {

struct MainWindow::Controls {
    explicit Controls(MainWindow& owner)
        : window([&owner]() -> QWidget& { return owner; }),
          textPluginName(*owner.m_ui->textPluginName),
          textPluginAuthor(*owner.m_ui->textPluginAuthor),
          textPluginVersion(*owner.m_ui->textPluginVersion),
          spinner(*owner.m_ui->spinner),
          btnInstall(*owner.m_ui->btnInstall),
          tallowmereLinkText(*owner.m_ui->tallowmereLinkText),
          bgImageView(*owner.m_ui->bgImageView),
          btnGantry(*owner.m_ui->btnGantry),
          windowEULA([&owner]() -> QWidget& { return owner.agreementSheet(); }),
          eulaText([&owner]() -> QTextBrowser& {
              owner.agreementSheet();
              return *owner.m_agreementUi->eulaText;
          }) {}

    QtWindow window;
    PlainTextField textPluginName;
    PlainTextField textPluginAuthor;
    PlainTextField textPluginVersion;
    QtProgressIndicator spinner;
    QtButton btnInstall;
    LinkTextField tallowmereLinkText;
    QtImageView bgImageView;
    QtButton btnGantry;
    QtWindow windowEULA;
    QtTextView eulaText;
};

MainWindow::MainWindow() : m_ui(std::make_unique<Ui::MainWindow>()) {
    installAccessibleRoles();
    m_ui->setupUi(this);
    QFont small = m_ui->tallowmereLinkText->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    m_ui->tallowmereLinkText->setFont(small);

    m_controls = std::make_unique<Controls>(*this);
    auto& controls = *m_controls;
    m_outlets = {&controls.window,
                 &controls.textPluginName,
                 &controls.textPluginAuthor,
                 &controls.textPluginVersion,
                 &controls.spinner,
                 &controls.btnInstall,
                 &controls.tallowmereLinkText,
                 &controls.bgImageView,
                 &controls.btnGantry,
                 &controls.windowEULA,
                 &controls.eulaText};

    connect(m_ui->btnInstall, &QPushButton::clicked, this, [this] {
        if (m_delegate != nullptr) {
            m_delegate->install();
        }
    });
    connect(m_ui->btnGantry, &QPushButton::clicked, this, [this] {
        if (m_delegate != nullptr) {
            m_delegate->sendToGantry();
        }
    });
}

MainWindow::~MainWindow() = default;

void MainWindow::connectActions(ApplicationDelegate& delegate) { m_delegate = &delegate; }

QWidget& MainWindow::agreementSheet() {
    if (m_agreementSheet == nullptr) {
        m_agreementSheet = std::make_unique<QWidget>();
        m_agreementUi = std::make_unique<Ui::AgreementSheet>();
        m_agreementUi->setupUi(m_agreementSheet.get());
        connect(m_agreementUi->btnAgree, &QPushButton::clicked, this, [this] {
            if (m_delegate != nullptr) {
                m_delegate->eulaAgree();
            }
        });
        connect(m_agreementUi->btnDisagree, &QPushButton::clicked, this, [this] {
            if (m_delegate != nullptr) {
                m_delegate->eulaDisagree();
            }
        });
        connect(m_agreementUi->eulaText, &QTextBrowser::anchorClicked, this, [this](const QUrl& address) {
            if (address.isRelative() && address.hasFragment()) {
                m_agreementUi->eulaText->scrollToAnchor(address.fragment());
            } else {
                openLink(address.toString(QUrl::FullyEncoded));
            }
        });
        m_agreementUi->eulaText->setFocus();
    }
    return *m_agreementSheet;
}

void MainWindow::present() {
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        resize(size().boundedTo(area.size()));
        move(area.center() - rect().center());
    }
    show();
    activateWindow();
    m_ui->btnInstall->setFocus(Qt::OtherFocusReason);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (!answerByKey(*event, m_ui->btnInstall, nullptr)) {
        QWidget::keyPressEvent(event);
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (m_closed) {
        m_closed();
    }
}

}  // namespace platform::qt
