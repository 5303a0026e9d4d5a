#include "platform/linux/qt/PasswordSheet.h"

#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "platform/linux/qt/AlertIcon.h"
#include "platform/linux/qt/AnswerKeys.h"
#include "platform/linux/qt/Appearance.h"
#include "platform/linux/qt/CapsLock.h"
#include "platform/linux/qt/ElidedLabel.h"
#include "platform/linux/qt/PasswordField.h"
#include "platform/linux/qt/PasswordWording.h"
#include "platform/linux/qt/ProminentButton.h"
#include "platform/linux/qt/Spinner.h"
#include "platform/linux/qt/TextScroller.h"

namespace platform::qt {

namespace {

constexpr int textWidth = 380;
constexpr int margin = 20;
constexpr int gap = 12;
constexpr int smallGap = 6;
constexpr int fieldPadding = 8;
constexpr int longestQuestionBeside = 24;  // characters; a longer one stands above the field

enum Row { nameRow, questionRow, fieldRow };

// Where a word may be broken is nothing to be read out.
QString readOut(QString text) { return text.remove(QChar(0x200B)); }

void setText(QLabel& label, const QString& text) {
    const QString read = readOut(text);
    label.setText(text);
    label.setAccessibleName(read == text ? QString() : read);
}

QLabel* makeText(const char* name, const QString& text = {}) {
    auto* label = new QLabel;
    label->setObjectName(QString::fromLatin1(name));
    label->setTextFormat(Qt::PlainText);
    setText(*label, text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeading | Qt::AlignTop);
    return label;
}

void showText(QLabel& label, const QString& text) {
    setText(label, text);
    label.setVisible(!text.isEmpty());
}

void makeWarning(QLabel& label) {
    QPalette palette = label.palette();
    const QColor color = warningColor(palette);
    palette.setColor(QPalette::Active, QPalette::WindowText, color);
    palette.setColor(QPalette::Inactive, QPalette::WindowText, color);
    label.setPalette(palette);
}

}  // namespace

PasswordSheet::PasswordSheet(const QString& asker, Answered answered) : m_answered(std::move(answered)) {
    setWindowTitle(headline(asker));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(margin, margin, margin, margin);
    outer->setSpacing(gap);
    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(new AlertIcon(AlertIcon::Mark::lock), 0, Qt::AlignTop);
    top->addWidget(new TextScroller(makeTexts(asker), textWidth), 1);
    outer->addLayout(top, 1);
    outer->addLayout(makeButtonRow());

    setTabOrder(m_names, m_field);
    setTabOrder(m_field, m_cancel);
    setTabOrder(m_cancel, m_allow);
    m_field->installEventFilter(this);
    connect(m_field, &QLineEdit::textChanged, this, &PasswordSheet::applyState);
    connect(m_names, &QComboBox::editTextChanged, this, &PasswordSheet::applyState);
    connect(m_allow, &QPushButton::clicked, this, &PasswordSheet::answer);
    connect(m_cancel, &QPushButton::clicked, this, &PasswordSheet::cancel);
}

QWidget* PasswordSheet::makeTexts(const QString& asker) {
    auto* texts = new QWidget;
    auto* layout = new QVBoxLayout(texts);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(smallGap);
    auto* title = makeText("headline", headline(asker));
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.1);
    title->setFont(bold);
    layout->addWidget(title);
    m_explanation =
        makeText("explanation",
                 tr("Enter the password of an administrator to install files in folders that you may not change."));
    layout->addWidget(m_explanation);
    layout->addSpacing(smallGap);
    layout->addLayout(makeFields());
    m_capsLock = makeText("capsLock", tr("Caps Lock is on."));
    m_problem = makeText("problem");
    m_details = makeText("details");
    for (auto* line : {m_capsLock, m_problem, m_details}) {
        line->hide();
        layout->addWidget(line);
    }
    makeWarning(*m_problem);
    layout->addStretch(1);
    return texts;
}

QGridLayout* PasswordSheet::makeFields() {
    m_fields = new QGridLayout;
    m_fields->setHorizontalSpacing(8);
    m_fields->setVerticalSpacing(8);
    m_fields->setColumnStretch(1, 1);
    m_nameLabel = makeText("nameLabel", tr("&Name:"));
    m_onlyName = new ElidedLabel;
    m_onlyName->setObjectName(QString::fromLatin1("onlyName"));
    m_names = new QComboBox;
    m_names->setObjectName(QString::fromLatin1("names"));
    m_names->setInsertPolicy(QComboBox::NoInsert);
    m_names->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_names->setMinimumContentsLength(12);
    m_names->setMaxVisibleItems(10);
    m_question = makeText("question");
    m_field = new PasswordField;
    m_field->setObjectName(QString::fromLatin1("password"));
    m_question->setBuddy(m_field);
    for (QWidget* input : {static_cast<QWidget*>(m_names), static_cast<QWidget*>(m_field)}) {
        input->setMinimumHeight(input->fontMetrics().height() + 2 * fieldPadding);
    }
    for (auto* label : {m_nameLabel, m_question}) {
        label->setAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    }
    m_fields->addWidget(m_nameLabel, nameRow, 0);
    m_fields->addWidget(m_onlyName, nameRow, 1);
    m_fields->addWidget(m_names, nameRow, 1);
    m_fields->addWidget(m_question, questionRow, 0);
    m_fields->addWidget(m_field, questionRow, 1);
    return m_fields;
}

QLayout* PasswordSheet::makeButtonRow() {
    auto* row = new QHBoxLayout;
    row->setSpacing(smallGap);
    m_spinner = new Spinner;
    m_checking = new ElidedLabel;
    m_checking->setObjectName(QString::fromLatin1("checking"));
    m_cancel = new QPushButton(tr("Cancel"));
    m_cancel->setObjectName(QString::fromLatin1("cancel"));
    m_cancel->setAutoDefault(true);
    m_allow = new ProminentButton;
    m_allow->setObjectName(QString::fromLatin1("allow"));
    row->addWidget(m_spinner);
    row->addWidget(m_checking, 1);
    row->addStretch();
    row->addWidget(m_cancel);
    row->addWidget(m_allow);
    return row;
}

void PasswordSheet::ask(const rights::PasswordRequest& request) {
    m_isLockedOut = request.problem == rights::PasswordRequest::Problem::lockedOut;
    setNames(request);
    setQuestion(request);
    setProblem(request);
    setChecking(false);
    const bool needsOtherName = request.problem == rights::PasswordRequest::Problem::notAdministrator;
    buttons().focused->setFocus(Qt::OtherFocusReason);
    if (needsOtherName && m_names->isVisibleTo(this)) {
        m_names->setFocus(Qt::TabFocusReason);  // selects what is there
    }
    m_isAsked = true;
}

void PasswordSheet::setNames(const rights::PasswordRequest& request) {
    const bool isFixed = request.administrators.size() < 2 && !request.mayNameAnother;
    const std::string chosen = m_isAsked ? user() : std::string();
    const bool isTyped = m_isAsked && m_names->isEditable() && request.mayNameAnother;
    const QString typed = isTyped ? m_names->currentText() : QString();
    m_administrators = request.administrators;

    m_names->clear();
    m_names->setEditable(request.mayNameAnother);
    if (request.mayNameAnother) {
        m_names->setCompleter(nullptr);  // it would finish one account's name with another's
        m_names->lineEdit()->setMaxLength(256);
    }
    int first = -1;
    int kept = -1;
    for (const auto& administrator : m_administrators) {
        first = administrator.user == request.user ? m_names->count() : first;
        kept = administrator.user == chosen ? m_names->count() : kept;
        m_names->addItem(shownName(administrator));
    }
    m_names->setCurrentIndex(std::max(kept >= 0 ? kept : first, 0));
    if (isTyped && kept < 0) {
        m_names->setEditText(typed);
    } else if (request.mayNameAnother && !request.user.empty() && first < 0 && kept < 0) {
        m_names->setEditText(shownName({.user = request.user, .realName = {}}));
    }
    m_onlyName->setPlainText(m_administrators.empty() ? QString() : shownName(m_administrators.front()));
    m_nameLabel->setVisible(!m_isLockedOut);
    m_onlyName->setVisible(!m_isLockedOut && isFixed);
    m_names->setVisible(!m_isLockedOut && !isFixed);
    m_nameLabel->setBuddy(isFixed ? static_cast<QWidget*>(m_onlyName) : m_names);
}

void PasswordSheet::setQuestion(const rights::PasswordRequest& request) {
    const QString label = questionLabel(request.question);
    const bool isBeside = label.size() <= longestQuestionBeside;
    setText(*m_question, label);
    m_fields->removeWidget(m_question);
    m_fields->removeWidget(m_field);
    m_fields->addWidget(m_question, questionRow, 0, 1, isBeside ? 1 : 2);
    m_fields->addWidget(m_field, isBeside ? questionRow : fieldRow, isBeside ? 1 : 0, 1, isBeside ? 1 : 2);
    m_question->setVisible(!m_isLockedOut);
    m_field->setVisible(!m_isLockedOut);
    m_explanation->setVisible(!m_isLockedOut);
    m_field->setEchoed(request.isEchoed);
    m_checking->setPlainText(request.question.empty() ? tr("Checking the password\u2026") : tr("Checking\u2026"));
}

void PasswordSheet::setProblem(const rights::PasswordRequest& request) {
    showText(*m_problem, problemText(request.problem));
    showText(*m_details, detailsText(request.details));
    const QString description = problemText(request.problem) + u' ' + readOut(m_details->text());
    m_field->setAccessibleDescription(description.trimmed());
    m_allow->setText(m_isLockedOut ? tr("OK") : tr("Allow"));
    m_cancel->setVisible(!m_isLockedOut);
}

void PasswordSheet::setChecking(bool checking) {
    m_isChecking = checking;
    m_spinner->setVisible(checking);
    m_checking->setVisible(checking);
    checking ? m_spinner->startAnimation() : m_spinner->stopAnimation();
    if (checking) {
        // Not on Cancel, where a second press of Return would cancel.
        setFocus(Qt::OtherFocusReason);
    }
    applyState();
}

void PasswordSheet::applyState() {
    m_field->setEnabled(!m_isChecking);
    m_names->setEnabled(!m_isChecking);
    m_allow->setEnabled(m_isLockedOut || (!m_isChecking && !m_field->text().isEmpty() && !user().empty()));
}

void PasswordSheet::setCapsLock(bool on) { m_capsLock->setVisible(on); }

SheetButtons PasswordSheet::buttons() const {
    QWidget* const first = m_isLockedOut ? static_cast<QWidget*>(m_allow) : m_field;
    return {.onReturn = m_allow, .onEscape = m_isLockedOut ? m_allow : m_cancel, .focused = first};
}

std::string PasswordSheet::user() const {
    if (m_names->isEditable()) {
        return namedUser(m_names->currentText(), m_administrators);
    }
    const auto index = static_cast<std::size_t>(std::max(m_names->currentIndex(), 0));
    return index < m_administrators.size() ? m_administrators[index].user : std::string();
}

void PasswordSheet::answer() {
    if (m_isLockedOut) {
        cancel();
        return;
    }
    rights::PasswordAnswer given{.user = user(), .password = m_field->take()};
    setChecking(true);
    m_answered(std::move(given));
}

void PasswordSheet::cancel() {
    m_field->clear();
    m_answered(std::nullopt);
}

void PasswordSheet::keyPressEvent(QKeyEvent* event) {
    const auto buttons = this->buttons();
    if (answerByKey(*event, buttons.onReturn, buttons.onEscape)) {
        event->accept();
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool PasswordSheet::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::FocusIn:
            setCapsLock(capsLockState().value_or(false));
            break;
        case QEvent::FocusOut:
            setCapsLock(false);
            break;
        case QEvent::KeyPress:
        case QEvent::KeyRelease: {
            auto on = capsLockState();
            on = on ? on : capsLockState(*static_cast<QKeyEvent*>(event));
            setCapsLock(on.value_or(m_capsLock->isVisibleTo(this)));
            break;
        }
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace platform::qt
